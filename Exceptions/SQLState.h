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

    /// The code of a diagnostic state; a value outside the table gives that of DIAG_GENERAL_ERROR.
    explicit SQLState(DiagState in_state) noexcept;

    /// The first five characters of a text in ASCII, after blanks, tabs, line feeds, carriage
    /// returns, vertical tabs and form feeds have been trimmed at both ends. A shorter text keeps
    /// the tail of "00000": "HY" gives "HY000".
    explicit SQLState(const std::string& in_text) noexcept;

    /// False when all characters are zero.
    bool IsSet() const noexcept;

    /// The characters, zero-terminated; empty when not set. Valid as long as this object.
    const char* GetText() const noexcept { return m_text; }

private:
    static constexpr int LENGTH = 5;

    char m_text[LENGTH + 1] = {};
};

}  // namespace Orska::Support

#endif
