// From UTF-16, one code point at a time.
#include "PlatformAbstraction/ICU/Siconv/TranscoderKernels.h"
#include "PlatformAbstraction/ICU/Siconv/TranscoderScalar.h"

namespace Orska::Support::Siconv {

namespace {

template <ByteOrder ORDER>
struct Utf16Reader {
    static std::int32_t Read(const unsigned char* in_at, std::uint64_t in_available,
                             char32_t& out_codePoint) {
        if (in_available < 2) {
            return TRANSCODER_INCOMPLETE;
        }
        const char32_t unit = GetUnit(in_at);
        if ((unit & 0xF800) != 0xD800) {
            out_codePoint = unit;
            return 2;
        }
        if (unit >= 0xDC00) {
            return TRANSCODER_INVALID;
        }
        if (in_available < 4) {
            return TRANSCODER_INCOMPLETE;
        }
        const char32_t trail = GetUnit(in_at + 2);
        if ((trail & 0xFC00) != 0xDC00) {
            return TRANSCODER_INVALID;
        }
        out_codePoint = 0x10000 + ((unit - 0xD800) << 10) + (trail - 0xDC00);
        return 4;
    }

private:
    static char32_t GetUnit(const unsigned char* in_at) {
        const char32_t first = in_at[0];
        const char32_t second = in_at[1];
        return ORDER == ByteOrder::LITTLE ? (first | second << 8) : (first << 8 | second);
    }
};

}  // namespace

std::int32_t Utf16LEToUtf8_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return TranscodeScalar<Utf16Reader<ByteOrder::LITTLE>, Utf8Writer>(io_source, io_target);
}

std::int32_t Utf16BEToUtf8_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return TranscodeScalar<Utf16Reader<ByteOrder::BIG>, Utf8Writer>(io_source, io_target);
}

std::int32_t Utf16LEToSingleByte_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return TranscodeScalar<Utf16Reader<ByteOrder::LITTLE>, SingleByteWriter>(io_source, io_target);
}

std::int32_t Utf16BEToSingleByte_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return TranscodeScalar<Utf16Reader<ByteOrder::BIG>, SingleByteWriter>(io_source, io_target);
}

}  // namespace Orska::Support::Siconv
