/// The scalar transcoder: one loop for all pairs, made of a reader of the source encoding
/// (Readers.h) and a writer of the target encoding (Writers.h). It defines the results of every
/// other form of a pair. Not for files that are compiled for a processor level.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_SCALAR_CONVERT_H
#define PLATFORMABSTRACTION_ICU_SICONV_SCALAR_CONVERT_H

#include <cstdint>

#include "PlatformAbstraction/ICU/Siconv/Transcoder.h"

namespace Orska::Support::Siconv {

// Flattened, because a compiler that sees many pairs calls a function for each code point, which
// takes a quarter of the time.
template <class Reader, class Writer>
__attribute__((flatten)) std::int32_t ConvertCodePoints(TranscoderSource& io_source,
                                                        TranscoderTarget& io_target) {
    const auto* const source = reinterpret_cast<const unsigned char*>(io_source.m_data);
    auto* const target = reinterpret_cast<unsigned char*>(io_target.m_data);
    const std::uint64_t sourceLength = io_source.m_length;
    const std::uint64_t targetLength = io_target.m_length;
    std::uint64_t sourcePosition = io_source.m_position;
    std::uint64_t targetPosition = io_target.m_position;
    std::int32_t result = TRANSCODER_DONE;
    while (sourcePosition < sourceLength) {
        char32_t codePoint = 0;
        const std::int32_t used =
            Reader::Read(source + sourcePosition, sourceLength - sourcePosition, codePoint);
        if (used < 0) {
            result = used;
            break;
        }
        const std::uint32_t written =
            Writer::Write(codePoint, target + targetPosition, targetLength - targetPosition);
        if (written == 0) {
            result = TRANSCODER_FULL;
            break;
        }
        sourcePosition += static_cast<std::uint32_t>(used);
        targetPosition += written;
    }
    io_source.m_position = sourcePosition;
    io_target.m_position = targetPosition;
    return result;
}

}  // namespace Orska::Support::Siconv

#endif
