/// The stream converter for bytes that need no conversion: the encodings are the same, or the
/// source is US-ASCII and the target contains it. Bytes are copied as they are, malformed ones
/// included, and the end of a target cuts code points.
#ifndef PLATFORMABSTRACTION_ICU_WIDESTREAMBLITTER_H
#define PLATFORMABSTRACTION_ICU_WIDESTREAMBLITTER_H

#include "PlatformAbstraction/ICU/StreamConverter.h"

namespace Orska::Support {

class WideStreamBlitter final : public StreamConverter {
public:
    /// @param in_encoding  the encoding of the source, which counts as the target's too
    WideStreamBlitter(EncodingType in_encoding, std::uint8_t in_flag);

    using StreamConverter::DoConvert;
    void DoConvert(std::uint64_t in_bytesWanted) override;
};

}  // namespace Orska::Support

#endif
