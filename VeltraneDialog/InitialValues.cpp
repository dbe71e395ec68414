#include "VeltraneDialog/InitialValues.h"

#include <cstddef>
#include <stdexcept>

#include "PlatformAbstraction/base/Ascii.h"
#include "VeltraneDialog/FieldRules.h"
#include "VeltraneDialog/Utf8.h"
#include "VeltraneDialog/Wipe.h"

namespace Veltrane::ODBC {

using Orska::Support::EqualsIgnoringCase;

namespace {

std::string_view TrimBlanks(std::string_view in_text) {
    return Orska::Support::Trim(in_text, " \t\r");
}

/// Parses line by line, and counts lines for error texts.
class Parser {
public:
    Parser(std::string_view in_contents, const std::string& in_fileName)
        : m_rest(in_contents), m_fileName(in_fileName) {
        constexpr std::string_view BYTE_ORDER_MARK("\xEF\xBB\xBF");
        if (m_rest.substr(0, BYTE_ORDER_MARK.size()) == BYTE_ORDER_MARK) {
            m_rest.remove_prefix(BYTE_ORDER_MARK.size());
        }
    }

    DialogValues Run() {
        while (!m_rest.empty()) {
            ++m_line;
            const std::size_t end = m_rest.find('\n');
            ParseLine(TrimBlanks(m_rest.substr(0, end)));
            m_rest.remove_prefix(end == std::string_view::npos ? m_rest.size() : end + 1);
        }
        return m_values;
    }

private:
    void ParseLine(std::string_view in_line) {
        if (in_line.empty() || in_line.front() == ';' || in_line.front() == '#') {
            return;
        }
        if (in_line.front() == '[') {
            if (in_line.back() != ']') {
                Fail("a section header without its closing bracket");
            }
            const std::string_view name = in_line.substr(1, in_line.size() - 2);
            m_isInSection = EqualsIgnoringCase(TrimBlanks(name), "DSN");
            return;
        }
        if (m_isInSection) {
            ParseKey(in_line);
        }
    }

    void ParseKey(std::string_view in_line) {
        const std::size_t equals = in_line.find('=');
        if (equals == std::string_view::npos || equals == 0) {
            Fail("neither a section, a comment nor a key with its value");
        }
        const std::string_view key = TrimBlanks(in_line.substr(0, equals));
        for (const DialogField& field : DIALOG_FIELDS) {
            if (EqualsIgnoringCase(key, field.m_key)) {
                const std::string_view value = TrimBlanks(in_line.substr(equals + 1));
                m_values.*field.m_value = Decode(value);
                Check(field, value);
                return;
            }
        }
        std::string known;
        for (const DialogField& field : DIALOG_FIELDS) {
            known.append(known.empty() ? "" : &field == &DIALOG_FIELDS.back() ? " and " : ", ");
            known.append(field.m_key);
        }
        Fail("an unknown key; known are " + known);
    }

    std::u16string Decode(std::string_view in_value) const {
        std::u16string text;
        if (!DecodeUtf8(in_value, text) || in_value.find('\0') != std::string_view::npos) {
            Fail("a value that is not UTF-8 text");
        }
        return text;
    }

    /// Skips empty values, which mean none, and the name: the setup library has an error for it.
    void Check(const DialogField& in_field, std::string_view in_value) const {
        if (in_value.empty() || in_field.m_value == &DialogValues::m_dsn) return;
        if (const char* const reason = WhyRefused(in_field, in_value)) {
            Fail(std::string(in_field.m_key) + ": " + reason);
        }
    }

    [[noreturn]] void Fail(std::string in_reason) const {
        if (in_reason.back() != '.') in_reason += '.';
        throw std::runtime_error("Initial values of a DSN: " + m_fileName + ", line " +
                                 std::to_string(m_line) + ": " + in_reason);
    }

    std::string_view m_rest;
    const std::string& m_fileName;
    DialogValues m_values;
    int m_line = 0;
    bool m_isInSection = false;
};

}  // namespace

DialogValues::~DialogValues() {
    if (m_pwd) {
        Wipe(*m_pwd);
    }
}

DialogValues ParseInitialValues(std::string_view in_contents, const std::string& in_fileName) {
    return Parser(in_contents, in_fileName).Run();
}

}  // namespace Veltrane::ODBC
