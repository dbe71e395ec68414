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
    /// The converter of the kind that is best for the pair: a WideStreamBlitter where bytes need no
    /// conversion, a SiconvStreamConverter where the transcoder has a function, else a
    /// WideStreamConverter.
    /// @param in_flag  kept by the converter for its owner
    /// @throws ErrorException "EncodingNotRecog" for a value that is no encoding,
    ///         "ICUCreateUConverterErr" when ICU cannot open one
    static std::unique_ptr<StreamConverter> CreateConverter(EncodingType in_source,
                                                            EncodingType in_target,
                                                            std::uint8_t in_flag = 0);
};

}  // namespace Orska::Support

#endif
