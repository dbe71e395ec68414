// From UTF-8, one code point at a time.
#include "PlatformAbstraction/ICU/Siconv/TranscoderKernels.h"
#include "PlatformAbstraction/ICU/Siconv/TranscoderScalar.h"

namespace Orska::Support::Siconv {

namespace {

struct Utf8Reader {
    static std::int32_t Read(const unsigned char* in_at, std::uint64_t in_available,
                             char32_t& out_codePoint) {
        const unsigned char lead = in_at[0];
        if (lead < 0x80) {
            out_codePoint = lead;
            return 1;
        }
        if (lead < 0xC2 || lead > 0xF4) {
            return TRANSCODER_INVALID;
        }
        const std::int32_t size = lead < 0xE0 ? 2 : (lead < 0xF0 ? 3 : 4);
        char32_t codePoint = lead & (0x7FU >> size);
        for (std::int32_t i = 1; i < size; ++i) {
            if (static_cast<std::uint64_t>(i) >= in_available) {
                return TRANSCODER_INCOMPLETE;
            }
            const bool isFollower =
                i == 1 ? IsSecondByte(lead, in_at[1]) : (in_at[i] & 0xC0) == 0x80;
            if (!isFollower) {
                return TRANSCODER_INVALID;
            }
            codePoint = (codePoint << 6) | (in_at[i] & 0x3FU);
        }
        out_codePoint = codePoint;
        return size;
    }

private:
    // The second byte decides about overlong forms, surrogates and values above U+10FFFF.
    static bool IsSecondByte(unsigned char in_lead, unsigned char in_second) {
        const unsigned char first = in_lead == 0xE0 ? 0xA0 : (in_lead == 0xF0 ? 0x90 : 0x80);
        const unsigned char last = in_lead == 0xED ? 0x9F : (in_lead == 0xF4 ? 0x8F : 0xBF);
        return in_second >= first && in_second <= last;
    }
};

}  // namespace

std::int32_t Utf8ToUtf16LE_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return TranscodeScalar<Utf8Reader, Utf16Writer<ByteOrder::LITTLE>>(io_source, io_target);
}

std::int32_t Utf8ToUtf16BE_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return TranscodeScalar<Utf8Reader, Utf16Writer<ByteOrder::BIG>>(io_source, io_target);
}

std::int32_t Utf8ToUtf32LE_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return TranscodeScalar<Utf8Reader, Utf32Writer<ByteOrder::LITTLE>>(io_source, io_target);
}

std::int32_t Utf8ToUtf32BE_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return TranscodeScalar<Utf8Reader, Utf32Writer<ByteOrder::BIG>>(io_source, io_target);
}

std::int32_t Utf8ToSingleByte_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return TranscodeScalar<Utf8Reader, SingleByteWriter>(io_source, io_target);
}

}  // namespace Orska::Support::Siconv
