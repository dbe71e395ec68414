// Load, save and removal of one data source in any odbc.ini, on real files. The installer's own
// reader and ours return the same values, before and after. All other sections stay byte for byte.
// A save that would lose something is refused and leaves the file unchanged.
//
// Input: what to do, then the name, four values, and the file.
#include <odbcinst.h>
#include <unistd.h>

#include <sstream>
#include <utility>
#include <vector>

#include "Setup/InstallerLibrary.h"
#include "Setup/OdbcIniText.h"
#include "Setup/OdbcInstaller.h"
#include "fuzz/FuzzInput.h"
#include "tests/support/IniScratch.h"

namespace {

using namespace Veltrane::ODBC;
using namespace Veltrane::ODBC::OdbcInstaller;
using Orska::Fuzz::FuzzInput;
using Orska::Fuzz::Require;
using Veltrane::Test::IniScratch;

const IniScratch& Scratch() {
    static const IniScratch s_scratch;
    return s_scratch;
}

orska_wstring Text(const std::string& in_utf8) {
    orska_wstring text;
    text.SetFromUtf8(in_utf8);
    return text;
}

std::string Fold(std::string in_text) {
    for (char& c : in_text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    return in_text;
}

std::string Trim(const std::string& in_text) {
    constexpr const char* BLANKS = " \t\n\v\f\r";
    const std::size_t begin = in_text.find_first_not_of(BLANKS);
    if (begin == std::string::npos) return {};
    return in_text.substr(begin, in_text.find_last_not_of(BLANKS) - begin + 1);
}

bool HasLongLine(const std::string& in_file) {
    std::size_t line = 0;
    for (const char c : in_file) {
        line = c == '\n' ? 0 : line + 1;
        if (line > OdbcIniLine::MAX_LINE) return true;
    }
    return false;
}

/// The lines that no change of this section may touch: those of other sections, and all comments.
/// Blank lines at the end of a section or before a comment can come and go with it. For the reader
/// a NUL ends a line.
std::vector<std::string> LinesOfOthers(const std::string& in_file, const std::string& in_name) {
    std::vector<std::string> lines;
    bool isOurs = false;
    std::istringstream file(in_file + "\n[");
    for (std::string line; std::getline(file, line);) {
        const std::string seen = Trim(line.c_str());
        const bool isHeader = seen.starts_with('[');
        if (isHeader) isOurs = Fold(Trim(seen.substr(1, seen.find(']', 1) - 1))) == Fold(in_name);
        const bool isComment = seen.starts_with('#') || seen.starts_with(';');
        while ((isHeader || isComment) && !lines.empty() && lines.back().empty()) {
            lines.pop_back();
        }
        if (line.ends_with('\r')) line.pop_back();  // of a last line that had no end
        if (!isOurs || isComment)
            lines.push_back(isHeader || isComment || seen.empty() ? seen : line);
    }
    return lines;
}

std::string DropMark(const std::string& in_file) {
    return in_file.starts_with("\xEF\xBB\xBF") ? in_file.substr(3) : in_file;
}

void CheckOthers(const std::string& in_before, const std::string& in_after,
                 const std::string& in_name) {
    // A request that is refused leaves the mark in place.
    Require(HasLongLine(in_before) || LinesOfOthers(DropMark(in_before), in_name) ==
                                          LinesOfOthers(DropMark(in_after), in_name),
            "other lines are changed", in_after);
}

std::string ReadOurs(const std::string& in_section, const std::string& in_key) {
    orska_wstring value;
    GetPrivateProfileString(Text(in_section), Text(in_key), Text(""), value, 2000,
                            Text("odbc.ini"));
    return value.GetAsUtf8();
}

std::string ReadTheirs(const std::string& in_section, const std::string& in_key) {
    char value[2000] = "";
    SQLGetPrivateProfileString(in_section.c_str(), in_key.c_str(), "", value, sizeof value,
                               "odbc.ini");
    return value;
}

struct Save {
    std::string m_name;
    std::vector<std::pair<std::string, std::string>> m_values;
};

/// @return whether it was saved
bool Run(const Save& in_save, bool in_isRemovedFirst) {
    Update update;
    if (in_isRemovedFirst && !RemoveDSNFromIni(Text(in_save.m_name))) return false;
    if (!WriteDSNToIni(Text(in_save.m_name), Text("Veltrane"))) return false;
    for (const auto& [key, value] : in_save.m_values) {
        if (!WritePrivateProfileString(Text(in_save.m_name), Text(key), Text(value),
                                       Text("odbc.ini"))) {
            return false;
        }
    }
    return update.Commit();
}

/// Compares what both read of every section of the file, and of one more. Their reader has buffers
/// for names and refuses a file with a byte order mark. We get only UTF-8.
void CompareReading(const std::string& in_file, const std::string& in_name) {
    if (DropMark(in_file) != in_file) return;
    ForgetReadValues();  // of the inputs before
    std::vector<std::string> names = OdbcIniText(in_file).GetSections();
    names.push_back(in_name);
    for (const std::string& name : names) {
        if (name.size() > 900 || Text(name.c_str()).GetAsUtf8() != name || name.empty()) continue;
        for (const char* key : {"Driver", "Server", "UID", "k", "x y", "_z", "ü"}) {
            const std::string ours = ReadOurs(name, key);
            const std::string theirs = Text(ReadTheirs(name, key)).GetAsUtf8();
            Require(ours == theirs, "we read something else than they", theirs + " " + ours);
        }
    }
}

/// False if the installer's reader cannot read the file: it has buffers of 1000 bytes for names.
bool IsForTheirReader(const std::string& in_file) {
    return !HasLongLine(in_file) && in_file.find('\0') == std::string::npos;
}

void CheckSaved(const Save& in_save, const std::string& in_after) {
    for (const auto& [key, value] : in_save.m_values) {
        Require(ReadOurs(in_save.m_name, key) == value, "we read a wrong value", in_after);
        if (IsForTheirReader(in_after)) {
            Require(ReadTheirs(in_save.m_name, key) == value, "they read a wrong value", in_after);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* in_data, std::size_t in_size) {
    const std::filesystem::path file = Scratch().UserFile();
    FuzzInput input(in_data, in_size);
    const std::uint8_t what = input.TakeByte();
    Save save;
    // As UTF-8; malformed bytes are replaced here.
    const auto takeText = [&] { return Text(input.TakePart()).GetAsUtf8(); };
    save.m_name = takeText();
    for (const char* key : {"Server", "UID", "PWD", "Database"}) {
        save.m_values.emplace_back(key, takeText());
    }
    const std::string before = input.TakeRest();
    // They read the second of two files by other rules, unless the first cannot be read.
    IniScratch::Write(Scratch().SystemFile(), before);
    SQLSetConfigMode(ODBC_BOTH_DSN);
    for (const char* first : {"[first]\n", "unreadable\n"}) {
        IniScratch::Write(file, first);
        CompareReading(before, save.m_name);
    }
    std::filesystem::remove(Scratch().SystemFile());
    IniScratch::Write(file, before);
    SQLSetConfigMode(ODBC_USER_DSN);
    CompareReading(before, save.m_name);
    const Request request;
    const bool isValid = ValidDSN(Text(save.m_name));
    if ((what & 2) != 0) {
        const bool isRemoved = isValid && RemoveDSNFromIni(Text(save.m_name));
        const std::string after = IniScratch::Read(file);
        Require(isRemoved || after == before, "a failed removal changed the file", after);
        if (isRemoved) {
            Require(ReadOurs(save.m_name, "Driver").empty(), "a removed section", after);
            CheckOthers(before, after, save.m_name);
        }
        return 0;
    }
    const bool isSaved = isValid && Run(save, (what & 1) != 0);
    const std::string after = IniScratch::Read(file);
    if (isValid || isSaved) CheckOthers(before, after, save.m_name);
    if (isSaved) CheckSaved(save, after);
    Require(Scratch().CountFiles() == 1, "a file is left");
    return 0;
}
