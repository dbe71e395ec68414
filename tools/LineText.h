/// The text of one trace line while it is built. It starts on the stack and moves to the heap if it
/// grows too long; if there is no memory for that, it is truncated. Used by one thread.
#ifndef TOOLS_LINETEXT_H
#define TOOLS_LINETEXT_H

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "tools/PrintfFormat.h"

namespace Orska {

class LineText {
public:
    LineText() noexcept = default;
    ~LineText();
    LineText(const LineText&) = delete;
    LineText& operator=(const LineText&) = delete;

    void Append(std::string_view in_text) noexcept;
    /// Appends decimal digits.
    void AppendUnsigned(std::uint64_t in_value) noexcept;
    void AppendSigned(std::int64_t in_value) noexcept;
    /// Appends four upper-case hex digits of the low 16 bits.
    void AppendHex4(std::uint32_t in_value) noexcept;
    /// Formats as printf does. If the C library refuses that, appends the format itself.
    void AppendMessage(const char* in_format, std::va_list in_arguments) noexcept
        ORSKA_PRINTF_FORMAT(2, 0);
    /// Appends the line end, for which there is always room.
    void End() noexcept;

    const char* GetData() const noexcept { return m_text; }
    /// Bytes.
    std::size_t GetSize() const noexcept { return m_size; }

private:
    static constexpr std::size_t STACK_SIZE = 9999;
    /// Bytes that growth leaves free for the text after the message.
    static constexpr std::size_t SPARE = 666;

    bool Reserve(std::size_t in_capacity) noexcept;
    bool AppendSimple(const char* in_format, std::va_list in_arguments) noexcept;
    void AppendAny(const char* in_format, std::va_list in_arguments) noexcept
        ORSKA_PRINTF_FORMAT(2, 0);

    char* m_text = m_stack;
    std::size_t m_size = 0;
    std::size_t m_capacity = STACK_SIZE;
    char m_stack[STACK_SIZE];
};

}  // namespace Orska

#endif
