#include "tools/LineText.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tools/Reallocate.h"

namespace Orska {

namespace {

constexpr std::size_t NUMBER_SIZE = 24;  ///< bytes, enough for any number

}  // namespace

LineText::~LineText() {
    if (m_text != m_stack) {
        std::free(m_text);
    }
}

bool LineText::Reserve(std::size_t in_capacity) noexcept {
    if (in_capacity <= m_capacity) {
        return true;
    }
    const bool isOnStack = m_text == m_stack;
    char* block = static_cast<char*>(Reallocate(isOnStack ? nullptr : m_text, in_capacity));
    if (block == nullptr) {
        return false;
    }
    if (isOnStack) {
        std::memcpy(block, m_stack, m_size);
    }
    m_text = block;
    m_capacity = in_capacity;
    return true;
}

void LineText::Append(std::string_view in_text) noexcept {
    std::size_t size = in_text.size();
    if (size > m_capacity - m_size && !Reserve(m_size + size + SPARE)) {
        size = m_capacity - m_size;
    }
    std::memcpy(m_text + m_size, in_text.data(), size);
    m_size += size;
}

void LineText::AppendUnsigned(std::uint64_t in_value) noexcept {
    char digits[NUMBER_SIZE];
    const char* end = std::to_chars(digits, digits + sizeof digits, in_value).ptr;
    Append({digits, static_cast<std::size_t>(end - digits)});
}

void LineText::AppendSigned(std::int64_t in_value) noexcept {
    char digits[NUMBER_SIZE];
    const char* end = std::to_chars(digits, digits + sizeof digits, in_value).ptr;
    Append({digits, static_cast<std::size_t>(end - digits)});
}

void LineText::AppendHex4(std::uint32_t in_value) noexcept {
    constexpr char DIGITS[] = "0123456789ABCDEF";
    const char text[] = {DIGITS[in_value >> 12 & 15], DIGITS[in_value >> 8 & 15],
                         DIGITS[in_value >> 4 & 15], DIGITS[in_value & 15]};
    Append({text, sizeof text});
}

void LineText::AppendMessage(const char* in_format, std::va_list in_arguments) noexcept {
    const std::size_t start = m_size;
    std::va_list copy;
    va_copy(copy, in_arguments);
    const bool isDone = AppendSimple(in_format, copy);
    va_end(copy);
    if (!isDone) {
        m_size = start;
        AppendAny(in_format, in_arguments);
    }
}

/// Handles the conversions of nearly all trace lines. The C library takes some 15 times as long as
/// printing if the text does not fit its buffer. Returns false at any other conversion. A lone "%"
/// at the end, which the C library would refuse, is printed.
bool LineText::AppendSimple(const char* in_format, std::va_list in_arguments) noexcept {
    for (;;) {
        const char* percent = std::strchr(in_format, '%');
        if (percent == nullptr) {
            Append(in_format);
            return true;
        }
        Append({in_format, static_cast<std::size_t>(percent - in_format)});
        in_format = percent + 2;
        switch (percent[1]) {
            case 's': {
                const char* text = va_arg(in_arguments, const char*);
                Append(text == nullptr ? "(null)" : text);
                break;
            }
            case 'd':
                AppendSigned(va_arg(in_arguments, int));
                break;
            case 'u':
                AppendUnsigned(va_arg(in_arguments, unsigned));
                break;
            case '%':
                Append("%");
                break;
            case '\0':
                Append("%");
                return true;
            default:
                return false;
        }
    }
}

void LineText::AppendAny(const char* in_format, std::va_list in_arguments) noexcept {
    std::va_list secondPass;
    va_copy(secondPass, in_arguments);
    const std::size_t space = m_capacity - m_size;
    const int result = std::vsnprintf(m_text + m_size, space, in_format, in_arguments);
    const std::size_t size = result < 0 ? 0 : static_cast<std::size_t>(result);
    if (result < 0) {
        Append(in_format);
    } else if (size + SPARE <= space) {
        m_size += size;
    } else if (Reserve(m_size + size + SPARE)) {
        std::vsnprintf(m_text + m_size, size + 1, in_format, secondPass);
        m_size += size;
    } else if (space > 0) {
        m_size += size < space ? size : space - 1;
    }
    va_end(secondPass);
}

void LineText::End() noexcept {
    if (m_size == m_capacity && !Reserve(m_size + 1)) {
        --m_size;
    }
    m_text[m_size++] = '\n';
}

}  // namespace Orska
