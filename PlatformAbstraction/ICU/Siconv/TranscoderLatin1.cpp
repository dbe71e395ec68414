// From latin1, one code point at a time.
#include <cstring>

#include "PlatformAbstraction/ICU/Siconv/TranscoderKernels.h"
#include "PlatformAbstraction/ICU/Siconv/TranscoderScalar.h"

namespace Orska::Support::Siconv {

namespace {

struct Latin1Reader {
    static std::int32_t Read(const unsigned char* in_at, std::uint64_t, char32_t& out_codePoint) {
        out_codePoint = *in_at;
        return 1;
    }
};

}  // namespace

std::int32_t Latin1ToUtf8_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return TranscodeScalar<Latin1Reader, Utf8Writer>(io_source, io_target);
}

std::int32_t Latin1ToUtf16LE_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return TranscodeScalar<Latin1Reader, Utf16Writer<ByteOrder::LITTLE>>(io_source, io_target);
}

std::int32_t Latin1ToUtf16BE_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return TranscodeScalar<Latin1Reader, Utf16Writer<ByteOrder::BIG>>(io_source, io_target);
}

std::int32_t Latin1ToUtf32LE_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return TranscodeScalar<Latin1Reader, Utf32Writer<ByteOrder::LITTLE>>(io_source, io_target);
}

std::int32_t Latin1ToUtf32BE_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return TranscodeScalar<Latin1Reader, Utf32Writer<ByteOrder::BIG>>(io_source, io_target);
}

// Every latin1 byte is written as it is (see the header for 80 to 9F), so this is the plain form
// and the fast one at once.
std::int32_t Latin1ToCp1252_Scalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    const std::uint64_t wanted = io_source.m_length - io_source.m_position;
    const std::uint64_t room = io_target.m_length - io_target.m_position;
    const std::uint64_t count = wanted < room ? wanted : room;
    if (count > 0) {
        std::memcpy(io_target.m_data + io_target.m_position,
                    io_source.m_data + io_source.m_position, count);
    }
    io_source.m_position += count;
    io_target.m_position += count;
    return count == wanted ? TRANSCODER_DONE : TRANSCODER_FULL;
}

}  // namespace Orska::Support::Siconv
