#include <algorithm>
#include <charconv>
#include <map>
#include <optional>

#include "VeltraneDialog/Utf8.h"
#include "cli/dsn/Import.h"
#include "cli/system/CommandError.h"
#include "cli/system/Input.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

using Orska::Support::IsAsciiBlank;
using Orska::Support::Trim;
using Orska::Support::TrimLeft;

constexpr std::string_view OLD_HEADER = "REGEDIT4";
constexpr std::string_view HEADER = "Windows Registry Editor Version ";
constexpr std::size_t LONGEST_KIND = 8;  // "hex(7)" and more
constexpr std::string_view DATA_SOURCES = "\\odbc\\odbc.ini\\";

class Reader {
public:
    Reader(std::string_view in_text, const ImportWish& in_wish, std::vector<std::string>& out_notes)
        : m_text(in_text),
          m_wish(in_wish),
          m_notes(out_notes),
          m_isOld(TrimLeft(in_text).starts_with(OLD_HEADER)) {}

    ImportedDsns Run() {
        SkipBlanks();
        TakeLine();
        for (SkipBlanks(); m_at < m_text.size(); SkipBlanks()) {
            const char first = m_text[m_at];
            if (first == ';') {
                TakeLine();
            } else if (first == '[') {
                ReadKey();
            } else if (m_isInKey && (first == '"' || first == '@')) {
                ReadEntry();
            } else {
                Fail("neither a key, a value of one nor a comment");
            }
        }
        ImportedDsns dsns;
        for (auto& [path, found] : m_folders) {
            TakeList(found, m_notes);
            std::move(found.begin(), found.end(), std::back_inserter(dsns));
        }
        return dsns;
    }

private:
    void SkipBlanks() {
        while (m_at < m_text.size() && IsAsciiBlank(m_text[m_at])) ++m_at;
    }

    std::string_view TakeLine() {
        const std::size_t end = std::min(m_text.find('\n', m_at), m_text.size());
        const std::string_view line = m_text.substr(m_at, end - m_at);
        m_at = end;
        return Trim(line);
    }

    void ReadKey() {
        std::string_view path = TakeLine();
        if (!path.ends_with(']')) Fail("a key without its closing bracket");
        path = path.substr(1, path.size() - 2);
        m_isInKey = true;
        m_dsn = nullptr;
        const std::string folded = FoldCase(path);
        const std::size_t found = folded.find(DATA_SOURCES);
        // Other keys are not DSNs, and a minus marks a key to remove.
        if (found == std::string::npos || path.starts_with('-')) return;
        const std::size_t end = found + DATA_SOURCES.size();
        const std::string name(path.substr(end));
        const std::size_t inner = name.find('\\');
        if (inner != std::string::npos) {
            m_notes.push_back("\"" + name.substr(0, inner) + "\": the key " +
                              name.substr(inner + 1) + " in it is left out.");
        } else if (!EqualsIgnoringCase(name, "ODBC File DSN")) {  // the place of file DSNs
            m_dsn = &m_folders[folded.substr(0, end)].emplace_back();
            m_dsn->m_name = name;
            m_dsn->m_isSystem = folded.starts_with("hkey_local_machine\\");
            m_dsn->m_is32Bit = folded.find("\\wow6432node\\") < found;
        }
    }

    void ReadEntry() {
        const std::string name = m_text[m_at] == '@' ? (++m_at, std::string()) : ReadText();
        if (!SkipInLine('=')) Fail("a name without \"=\"");
        const std::optional<std::string> value = ReadValue();
        if (const std::string_view rest = TakeLine(); !rest.empty() && rest.front() != ';') {
            Fail("text after a value");
        }
        if (m_dsn == nullptr || name.empty()) return;  // the default value of a key has no name
        if (value) {
            m_dsn->m_values.emplace_back(name, *value);
        } else {
            m_notes.push_back(Quote(m_dsn->m_name) + ": " + name +
                              " is left out: its value is not text.");
        }
    }

    void SkipSpaces() {
        while (m_at < m_text.size() && (m_text[m_at] == ' ' || m_text[m_at] == '\t')) ++m_at;
    }

    /// @return true if the line continues with this character, which is then skipped
    bool SkipInLine(char in_char) {
        SkipSpaces();
        if (m_at == m_text.size() || m_text[m_at] != in_char) return false;
        ++m_at;
        return true;
    }

    /// Reads a text in quotes, which can contain line ends.
    std::string ReadText() {
        const std::size_t begin = m_at;
        std::string text;
        for (++m_at; m_at < m_text.size(); ++m_at) {
            const char byte = m_text[m_at];
            const char next = m_at + 1 < m_text.size() ? m_text[m_at + 1] : '\0';
            if (byte == '"') {
                ++m_at;
                return text;
            }
            const bool isEscape = byte == '\\' && (next == '\\' || next == '"');
            text += isEscape ? next : byte;
            if (isEscape) ++m_at;
        }
        m_at = begin;
        Fail("a text without its closing quote");
    }

    /// Returns nothing for a value that is not text or is marked for removal.
    std::optional<std::string> ReadValue() {
        SkipSpaces();
        const std::string_view rest = m_text.substr(m_at);
        if (rest.starts_with('"')) return ReadText();
        if (rest.starts_with('-')) {
            ++m_at;
            return std::nullopt;
        }
        const std::size_t colon = rest.find(':');
        const std::string kind = FoldCase(rest.substr(0, std::min(colon, LONGEST_KIND + 1)));
        const bool isNumber = kind == "dword";
        const bool isKnown = isNumber || kind == "hex" || kind.starts_with("hex(");
        if (!isKnown || colon > LONGEST_KIND) Fail("a value of an unknown kind");
        m_at += colon + 1;
        if (isNumber) {
            return std::to_string(ReadHex(std::string_view::npos, "a dword that is no number"));
        }
        const std::string bytes = ReadBytes();
        const bool isText = kind == "hex(1)" || kind == "hex(2)";
        return isText ? std::optional(DecodeBytes(bytes)) : std::nullopt;
    }

    std::uint32_t ReadHex(std::size_t in_most, const char* in_reason) {
        std::uint32_t number = 0;
        const std::string_view digits = m_text.substr(m_at, in_most);
        const char* const begin = digits.data();
        const auto [end, error] = std::from_chars(begin, begin + digits.size(), number, 16);
        if (error != std::errc()) Fail(in_reason);
        m_at += static_cast<std::size_t>(end - begin);
        return number;
    }

    /// Reads bytes of two digits, separated by commas; a backslash at the end of a line continues
    /// on the next one.
    std::string ReadBytes() {
        std::string bytes;
        const auto isNext = [this] {
            if (SkipInLine('\\')) SkipBlanks();
            return m_at < m_text.size() && !IsAsciiBlank(m_text[m_at]) && m_text[m_at] != ';';
        };
        while (isNext()) {
            bytes += static_cast<char>(ReadHex(2, "a byte that is no number"));
            if (isNext() && !SkipInLine(',')) Fail("bytes without a comma between them");
        }
        return bytes;
    }

    std::string DecodeBytes(std::string in_bytes) const {
        if (m_isOld) return DecodeAnsi(in_bytes.substr(0, in_bytes.find('\0')), m_wish);
        const std::u16string units = ToUnits(in_bytes, false);
        return ODBC::EncodeUtf8(units.substr(0, units.find(u'\0')));
    }

    [[noreturn]] void Fail(const char* in_reason) const {
        const std::string_view before = m_text.substr(0, m_at);
        const auto line = std::count(before.begin(), before.end(), '\n') + 1;
        FailWith(m_wish.m_source + ", line " + std::to_string(line) + ": " + in_reason + ".");
    }

    std::string_view m_text;
    const ImportWish& m_wish;
    std::vector<std::string>& m_notes;
    const bool m_isOld;
    std::size_t m_at = 0;
    bool m_isInKey = false;
    /// The DSNs of each ODBC.INI: the user's, the system's, or that of 32-bit programs.
    std::map<std::string, ImportedDsns> m_folders;
    ImportedDsn* m_dsn = nullptr;  ///< null in a skipped key
};

}  // namespace

bool IsRegistryExport(std::string_view in_text) {
    const std::string_view text = TrimLeft(in_text);
    return text.starts_with(OLD_HEADER) || text.starts_with(HEADER);
}

ImportedDsns ReadRegistryExport(std::string_view in_text, const ImportWish& in_wish,
                                std::vector<std::string>& out_notes) {
    return Reader(in_text, in_wish, out_notes).Run();
}

}  // namespace Veltrane::Cli
