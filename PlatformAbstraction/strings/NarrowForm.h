/// The narrow form of a string for conversions that must not allocate: short ASCII text is on
/// the stack, all other text in a std::string.
#ifndef PLATFORMABSTRACTION_NARROWFORM_H
#define PLATFORMABSTRACTION_NARROWFORM_H

#include <cstddef>
#include <string>

#include "PlatformAbstraction/strings/orska_wstring.h"

namespace Orska::Support {

class NarrowForm {
public:
    /// Converts the text to the process ANSI encoding; NULL becomes an empty text.
    explicit NarrowForm(const orska_wstring& in_text);
    NarrowForm(const NarrowForm&) = delete;
    NarrowForm& operator=(const NarrowForm&) = delete;

    /// Not NUL-terminated. Valid as long as this object.
    const char* GetText() const noexcept { return m_text; }
    /// Bytes.
    std::size_t GetLength() const noexcept { return m_length; }

private:
    const char* m_text = m_stack;
    std::size_t m_length = 0;
    std::string m_heap;
    char m_stack[256];
};

}  // namespace Orska::Support

#endif
