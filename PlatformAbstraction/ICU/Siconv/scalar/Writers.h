/// Writers of one code point, one for each encoding of the transcoder. Not for files that are
/// compiled for a processor level.
///
/// A writer has `static std::uint32_t Write(char32_t in_codePoint, unsigned char* out_at,
/// std::uint64_t in_room)`, which returns the bytes written, or 0 when they do not fit.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_SCALAR_WRITERS_H
#define PLATFORMABSTRACTION_ICU_SICONV_SCALAR_WRITERS_H

#include <cstdint>
#include <cstring>

namespace Orska::Support::Siconv {

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

template <bool IS_BIG>
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
        auto unit = static_cast<std::uint16_t>(in_unit);
        unit = IS_BIG ? __builtin_bswap16(unit) : unit;
        std::memcpy(out_at, &unit, sizeof(unit));
    }
};

template <bool IS_BIG>
struct Utf32Writer {
    static std::uint32_t Write(char32_t in_codePoint, unsigned char* out_at,
                               std::uint64_t in_room) {
        if (in_room < 4) return 0;
        const char32_t unit = IS_BIG ? __builtin_bswap32(in_codePoint) : in_codePoint;
        std::memcpy(out_at, &unit, sizeof(unit));
        return 4;
    }
};

/// Writes latin1, and cp1252 too: code points above U+00FF become the substitute even if cp1252 has
/// a byte for them, and U+0080 to U+009F keep their value.
struct SingleByteWriter {
    static std::uint32_t Write(char32_t in_codePoint, unsigned char* out_at,
                               std::uint64_t in_room) {
        constexpr unsigned char SUBSTITUTE = 0x1A;
        if (in_room < 1) return 0;
        *out_at = in_codePoint <= 0xFF ? static_cast<unsigned char>(in_codePoint) : SUBSTITUTE;
        return 1;
    }
};

}  // namespace Orska::Support::Siconv

#endif
