// From UTF-32, one code point at a time.
#include "PlatformAbstraction/ICU/Siconv/TranscoderKernels.h"
#include "PlatformAbstraction/ICU/Siconv/TranscoderScalar.h"

namespace Orska::Support::Siconv {

namespace {

template <ByteOrder ORDER>
struct Utf32Reader {
    static std::int32_t Read(const unsigned char* in_at, std::uint64_t in_available,
                             char32_t& out_codePoint) {
        if (in_available < 4) {
            return TRANSCODER_INCOMPLETE;
        }
        char32_t unit = 0;
        for (int i = 0; i < 4; ++i) {
            const int shift = ORDER == ByteOrder::LITTLE ? 8 * i : 8 * (3 - i);
            unit |= static_cast<char32_t>(in_at[i]) << shift;
        }
        if (unit > 0x10FFFF || (unit & 0xFFFFF800) == 0xD800) {
            return TRANSCODER_INVALID;
        }
        out_codePoint = unit;
        return 4;
    }
};

}  // namespace

std::int32_t Utf32LEToUtf8_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return TranscodeScalar<Utf32Reader<ByteOrder::LITTLE>, Utf8Writer>(io_source, io_target);
}

std::int32_t Utf32BEToUtf8_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return TranscodeScalar<Utf32Reader<ByteOrder::BIG>, Utf8Writer>(io_source, io_target);
}

}  // namespace Orska::Support::Siconv
