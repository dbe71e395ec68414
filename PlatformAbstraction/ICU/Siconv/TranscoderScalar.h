/// The scalar transcoder: one loop for all pairs, put together from a reader of the source encoding
/// and a writer of the target encoding. Included by the sources that are compiled for every
/// processor, never by a kernel.
///
/// A reader has `static std::int32_t Read(const unsigned char* in_at, std::uint64_t in_available,
/// char32_t& out_codePoint)`, which gives the bytes used (at least 1 of at least 1 available) or
/// TRANSCODER_INVALID or TRANSCODER_INCOMPLETE. A writer has `static std::uint32_t
/// Write(char32_t in_codePoint, unsigned char* out_at, std::uint64_t in_room)`, which gives the
/// bytes written, or 0 when they do not fit.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_TRANSCODERSCALAR_H
#define PLATFORMABSTRACTION_ICU_SICONV_TRANSCODERSCALAR_H

#include <cstdint>

#include "PlatformAbstraction/ICU/Siconv/Transcoder.h"

namespace Orska::Support::Siconv {

enum class ByteOrder { LITTLE, BIG };

struct Utf8Writer {
    static std::uint32_t Write(char32_t in_codePoint, unsigned char* out_at,
                               std::uint64_t in_room) {
        const auto bits = [in_codePoint](int in_shift) {
            return static_cast<unsigned char>(0x80 | ((in_codePoint >> in_shift) & 0x3F));
        };
        if (in_codePoint < 0x80) {
            if (in_room < 1) return 0;
            out_at[0] = static_cast<unsigned char>(in_codePoint);
            return 1;
        }
        if (in_codePoint < 0x800) {
            if (in_room < 2) return 0;
            out_at[0] = static_cast<unsigned char>(0xC0 | (in_codePoint >> 6));
            out_at[1] = bits(0);
            return 2;
        }
        if (in_codePoint < 0x10000) {
            if (in_room < 3) return 0;
            out_at[0] = static_cast<unsigned char>(0xE0 | (in_codePoint >> 12));
            out_at[1] = bits(6);
            out_at[2] = bits(0);
            return 3;
        }
        if (in_room < 4) return 0;
        out_at[0] = static_cast<unsigned char>(0xF0 | (in_codePoint >> 18));
        out_at[1] = bits(12);
        out_at[2] = bits(6);
        out_at[3] = bits(0);
        return 4;
    }
};

template <ByteOrder ORDER>
struct Utf16Writer {
    static std::uint32_t Write(char32_t in_codePoint, unsigned char* out_at,
                               std::uint64_t in_room) {
        if (in_codePoint < 0x10000) {
            if (in_room < 2) return 0;
            PutUnit(in_codePoint, out_at);
            return 2;
        }
        if (in_room < 4) return 0;
        PutUnit(0xD800 + ((in_codePoint - 0x10000) >> 10), out_at);
        PutUnit(0xDC00 + (in_codePoint & 0x3FF), out_at + 2);
        return 4;
    }

private:
    static void PutUnit(char32_t in_unit, unsigned char* out_at) {
        const auto low = static_cast<unsigned char>(in_unit);
        const auto high = static_cast<unsigned char>(in_unit >> 8);
        out_at[0] = ORDER == ByteOrder::LITTLE ? low : high;
        out_at[1] = ORDER == ByteOrder::LITTLE ? high : low;
    }
};

template <ByteOrder ORDER>
struct Utf32Writer {
    static std::uint32_t Write(char32_t in_codePoint, unsigned char* out_at,
                               std::uint64_t in_room) {
        if (in_room < 4) return 0;
        for (int i = 0; i < 4; ++i) {
            const int shift = ORDER == ByteOrder::LITTLE ? 8 * i : 8 * (3 - i);
            out_at[i] = static_cast<unsigned char>(in_codePoint >> shift);
        }
        return 4;
    }
};

/// latin1, and cp1252 too: code points above U+00FF become the substitute even where cp1252 has a
/// byte for them, and U+0080 to U+009F keep their value.
struct SingleByteWriter {
    static std::uint32_t Write(char32_t in_codePoint, unsigned char* out_at,
                               std::uint64_t in_room) {
        constexpr unsigned char SUBSTITUTE = 0x1A;
        if (in_room < 1) return 0;
        *out_at = in_codePoint <= 0xFF ? static_cast<unsigned char>(in_codePoint) : SUBSTITUTE;
        return 1;
    }
};

template <class Reader, class Writer>
std::int32_t TranscodeScalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
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
