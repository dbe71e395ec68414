// From cp1252, one code point at a time.
#include "PlatformAbstraction/ICU/Siconv/TranscoderKernels.h"
#include "PlatformAbstraction/ICU/Siconv/TranscoderScalar.h"

namespace Orska::Support::Siconv {

namespace {

// The code points of the bytes 80 to 9F.
constexpr char16_t CP1252_HIGH[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  //
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,  //
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  //
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

struct Cp1252Reader {
    static std::int32_t Read(const unsigned char* in_at, std::uint64_t, char32_t& out_codePoint) {
        const unsigned char byte = *in_at;
        out_codePoint = (byte & 0xE0) == 0x80 ? CP1252_HIGH[byte & 0x1F] : byte;
        return 1;
    }
};

}  // namespace

std::int32_t Cp1252ToUtf8_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return TranscodeScalar<Cp1252Reader, Utf8Writer>(io_source, io_target);
}

std::int32_t Cp1252ToUtf16LE_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return TranscodeScalar<Cp1252Reader, Utf16Writer<ByteOrder::LITTLE>>(io_source, io_target);
}

std::int32_t Cp1252ToUtf16BE_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return TranscodeScalar<Cp1252Reader, Utf16Writer<ByteOrder::BIG>>(io_source, io_target);
}

std::int32_t Cp1252ToLatin1_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return TranscodeScalar<Cp1252Reader, SingleByteWriter>(io_source, io_target);
}

}  // namespace Orska::Support::Siconv
