/// A five-character SQLSTATE code, or none.
#ifndef EXCEPTIONS_SQLSTATE_H
#define EXCEPTIONS_SQLSTATE_H

#include <string>

#include "DiagState.h"

namespace Orska::Support {

class SQLState {
public:
    /// No state: all characters are zero.
    constexpr SQLState() noexcept = default;

    /// The code of a diagnostic state; for a value outside the table, that of DIAG_GENERAL_ERROR.
    explicit SQLState(DiagState in_state) noexcept;

    /// The first five characters of an ASCII text, trimmed of blanks, tabs, line feeds, carriage
    /// returns, vertical tabs and form feeds. A shorter text keeps the tail of "00000": "HY"
    /// becomes "HY000".
    explicit SQLState(const std::string& in_text) noexcept;

    /// False if all characters are zero.
    bool IsSet() const noexcept;

    /// Returns the characters, zero-terminated; empty if not set. Owned by this object.
    const char* GetText() const noexcept { return m_text; }

private:
    static constexpr int LENGTH = 5;

    char m_text[LENGTH + 1] = {};
};

}  // namespace Orska::Support

#endif
