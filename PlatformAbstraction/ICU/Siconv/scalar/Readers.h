/// Readers of one code point, one for each encoding of the transcoder. They decide what is
/// malformed and what is cut off. Not for files that are compiled for a processor level.
///
/// A reader has `static std::int32_t Read(const unsigned char* in_at, std::uint64_t in_available,
/// char32_t& out_codePoint)`, which returns the bytes used (at least 1 of at least 1 available),
/// TRANSCODER_INVALID or TRANSCODER_INCOMPLETE.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_SCALAR_READERS_H
#define PLATFORMABSTRACTION_ICU_SICONV_SCALAR_READERS_H

#include <cstdint>
#include <cstring>

#include "PlatformAbstraction/ICU/Siconv/Transcoder.h"
#include "PlatformAbstraction/ICU/Siconv/scalar/Cp1252.h"

namespace Orska::Support::Siconv {

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
    // The second byte tells overlong forms, surrogates and values above U+10FFFF.
    static bool IsSecondByte(unsigned char in_lead, unsigned char in_second) {
        const unsigned char first = in_lead == 0xE0 ? 0xA0 : (in_lead == 0xF0 ? 0x90 : 0x80);
        const unsigned char last = in_lead == 0xED ? 0x9F : (in_lead == 0xF4 ? 0x8F : 0xBF);
        return in_second >= first && in_second <= last;
    }
};

template <bool IS_BIG>
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
        std::uint16_t unit = 0;
        std::memcpy(&unit, in_at, sizeof(unit));
        return IS_BIG ? __builtin_bswap16(unit) : unit;
    }
};

template <bool IS_BIG>
struct Utf32Reader {
    static std::int32_t Read(const unsigned char* in_at, std::uint64_t in_available,
                             char32_t& out_codePoint) {
        if (in_available < 4) {
            return TRANSCODER_INCOMPLETE;
        }
        char32_t unit = 0;
        std::memcpy(&unit, in_at, sizeof(unit));
        unit = IS_BIG ? __builtin_bswap32(unit) : unit;
        if (unit > 0x10FFFF || (unit & 0xFFFFF800) == 0xD800) {
            return TRANSCODER_INVALID;
        }
        out_codePoint = unit;
        return 4;
    }
};

struct Latin1Reader {
    static std::int32_t Read(const unsigned char* in_at, std::uint64_t, char32_t& out_codePoint) {
        out_codePoint = *in_at;
        return 1;
    }
};

struct Cp1252Reader {
    static std::int32_t Read(const unsigned char* in_at, std::uint64_t, char32_t& out_codePoint) {
        const unsigned char byte = *in_at;
        out_codePoint = (byte & 0xE0) == 0x80 ? CP1252_HIGH[byte & 0x1F] : byte;
        return 1;
    }
};

}  // namespace Orska::Support::Siconv

#endif
