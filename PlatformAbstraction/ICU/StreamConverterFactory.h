/// Makes the stream converter of a pair of encodings.
#ifndef PLATFORMABSTRACTION_ICU_STREAMCONVERTERFACTORY_H
#define PLATFORMABSTRACTION_ICU_STREAMCONVERTERFACTORY_H

#include <cstdint>
#include <memory>

#include "../strings/EncodingType.h"
#include "StreamConverter.h"

namespace Orska::Support {

class StreamConverterFactory {
public:
    /// Returns the best converter for the pair: a WideStreamBlitter if bytes need no conversion, a
    /// SiconvStreamConverter if the transcoder has a function, else a WideStreamConverter.
    /// @param in_flag  kept for the converter's owner
    /// @throws ErrorException "EncodingNotRecog" for a value that is not an encoding,
    ///         "ICUCreateUConverterErr" when ICU cannot open one
    static std::unique_ptr<StreamConverter> CreateConverter(EncodingType in_source,
                                                            EncodingType in_target,
                                                            std::uint8_t in_flag = 0);
};

}  // namespace Orska::Support

#endif
