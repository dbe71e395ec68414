#include "VeltraneDialog/Utf8.h"

#include <cstddef>

namespace Veltrane::ODBC {

namespace {

/// What a lead byte says: how many bytes follow, its own bits and the least code point that may be
/// written with this length.
struct Lead {
    int m_trailCount;
    char32_t m_bits;
    char32_t m_least;
};

bool ReadLead(unsigned char in_byte, Lead& out_lead) {
    if (in_byte < 0x80) {
        out_lead = {0, in_byte, 0};
    } else if (in_byte >= 0xC2 && in_byte < 0xE0) {
        out_lead = {1, in_byte & 0x1FU, 0x80};
    } else if (in_byte >= 0xE0 && in_byte < 0xF0) {
        out_lead = {2, in_byte & 0x0FU, 0x800};
    } else if (in_byte >= 0xF0 && in_byte < 0xF5) {
        out_lead = {3, in_byte & 0x07U, 0x10000};
    } else {
        return false;
    }
    return true;
}

void AppendUtf16(char32_t in_codePoint, std::u16string& out_text) {
    if (in_codePoint < 0x10000) {
        out_text += static_cast<char16_t>(in_codePoint);
    } else {
        out_text += static_cast<char16_t>(0xD800 + ((in_codePoint - 0x10000) >> 10));
        out_text += static_cast<char16_t>(0xDC00 + ((in_codePoint - 0x10000) & 0x3FF));
    }
}

void AppendUtf8(char32_t in_codePoint, std::string& out_bytes) {
    const auto trail = [&](int in_shift) {
        out_bytes += static_cast<char>(0x80 | ((in_codePoint >> in_shift) & 0x3F));
    };
    if (in_codePoint < 0x80) {
        out_bytes += static_cast<char>(in_codePoint);
    } else if (in_codePoint < 0x800) {
        out_bytes += static_cast<char>(0xC0 | (in_codePoint >> 6));
        trail(0);
    } else if (in_codePoint < 0x10000) {
        out_bytes += static_cast<char>(0xE0 | (in_codePoint >> 12));
        trail(6);
        trail(0);
    } else {
        out_bytes += static_cast<char>(0xF0 | (in_codePoint >> 18));
        trail(12);
        trail(6);
        trail(0);
    }
}

}  // namespace

bool DecodeUtf8(std::string_view in_bytes, std::u16string& out_text) {
    // Room for all at once, so that no piece of a password stays behind in a smaller buffer.
    out_text.reserve(out_text.size() + in_bytes.size());
    std::size_t position = 0;
    while (position < in_bytes.size()) {
        Lead lead{};
        if (!ReadLead(static_cast<unsigned char>(in_bytes[position++]), lead)) {
            return false;
        }
        char32_t codePoint = lead.m_bits;
        for (int i = 0; i < lead.m_trailCount; ++i) {
            if (position == in_bytes.size() || (in_bytes[position] & 0xC0) != 0x80) {
                return false;
            }
            codePoint = (codePoint << 6) | (in_bytes[position++] & 0x3FU);
        }
        if (codePoint < lead.m_least || codePoint > 0x10FFFF ||
            (codePoint >= 0xD800 && codePoint < 0xE000)) {
            return false;
        }
        AppendUtf16(codePoint, out_text);
    }
    return true;
}

std::string EncodeUtf8(std::u16string_view in_text) {
    std::string bytes;
    bytes.reserve(3 * in_text.size());
    for (std::size_t i = 0; i < in_text.size(); ++i) {
        char32_t codePoint = in_text[i];
        const bool isPair = codePoint >= 0xD800 && codePoint < 0xDC00 && i + 1 < in_text.size() &&
                            in_text[i + 1] >= 0xDC00 && in_text[i + 1] < 0xE000;
        if (isPair) {
            codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (in_text[++i] - 0xDC00U);
        } else if (codePoint >= 0xD800 && codePoint < 0xE000) {
            codePoint = 0xFFFD;
        }
        AppendUtf8(codePoint, bytes);
    }
    return bytes;
}

}  // namespace Veltrane::ODBC
