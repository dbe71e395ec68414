// INI settings, compared with a slow reader of the same rules. Reading one section at a time has
// the same result as all at once.
//
// Input: the case switch, then the file.
#include <optional>
#include <set>
#include <stdexcept>
#include <vector>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/settings/IniFileConfigurationReader.h"
#include "fuzz/FuzzInput.h"
#include "tests/support/SettingText.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using namespace Orska::Support;
using Orska::Fuzz::FuzzInput;
using Orska::Fuzz::Require;
using Orska::Test::ToText;

std::string Trim(const std::string& in_text) {
    constexpr const char* BLANKS = " \t\n\v\f\r";
    const std::size_t begin = in_text.find_first_not_of(BLANKS);
    if (begin == std::string::npos) return {};
    return in_text.substr(begin, in_text.find_last_not_of(BLANKS) - begin + 1);
}

std::string ToUpper(std::string in_text) {
    for (char& c : in_text) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
    return in_text;
}

/// The value without its quotes, or nothing when they are malformed.
std::optional<std::string> Unquote(const std::string& in_value) {
    const bool isQuoted = in_value.size() > 1 && (in_value[0] == '"' || in_value[0] == '\'');
    if (!isQuoted) return in_value;
    if (in_value.find(in_value[0], 1) != in_value.size() - 1) return std::nullopt;
    return in_value.substr(1, in_value.size() - 2);
}

/// The lines as the reader sees them: without carriage returns. A byte 0xFF ends its line, or the
/// file if it is the first of a line.
std::vector<std::string> SplitLines(const std::string& in_file) {
    std::vector<std::string> lines;
    bool isStarted = false;
    for (const char byte : in_file) {
        if (byte == '\xFF' && !isStarted) return lines;
        if (!isStarted) lines.emplace_back();
        isStarted = byte != '\n' && byte != '\xFF';
        if (isStarted && byte != '\r') lines.back() += byte;
    }
    return lines;
}

/// @return the number of the line that is malformed, 0 for none
std::size_t Read(const std::string& in_file, bool in_isCaseSensitive,
                 ConfigurationMap& out_configuration) {
    std::string section;
    std::size_t number = 0;
    for (std::string line : SplitLines(in_file)) {
        ++number;
        line = Trim(line.substr(0, line.find_first_of("#;")));
        if (line.empty()) continue;
        if (line.front() == '[' && line.back() == ']') {
            section = ToUpper(line.substr(1, line.size() - 2));
            continue;
        }
        const std::size_t equals = line.find('=');
        if (equals == std::string::npos || equals == 0) return number;
        const std::string key = Trim(line.substr(0, equals));
        const std::optional<std::string> value = Unquote(Trim(line.substr(equals + 1)));
        if (!value) return number;
        out_configuration[orska_wstring(section)].Set(
            orska_wstring(in_isCaseSensitive ? key : ToUpper(key)),
            SettingValue(orska_wstring(*value)));
    }
    return 0;
}

/// The sections one by one, found by their names.
void CompareSections(const IniFileConfigurationReader& in_reader, const orska_wstring& in_path,
                     const ConfigurationMap& in_all) {
    for (const auto& [name, section] : in_all) {
        // Names are compared in upper case, which other alphabets change too.
        orska_wstring upper = name;
        if (upper.ToUpper() != name) continue;
        SectionMap one;
        Require(in_reader.LoadConfiguration(one, in_path, name), "a file that does not open");
        Require(ToText(one) == ToText(section), "wrong section", ToText(one));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* in_data, std::size_t in_size) {
    static const Orska::Test::TemporaryDirectory s_directory;
    FuzzInput input(in_data, in_size);
    const bool isCaseSensitive = input.TakeByte() % 2 != 0;
    const std::string contents = input.TakeRest();
    const orska_wstring path(s_directory.Write("file", contents));
    const IniFileConfigurationReader reader(isCaseSensitive, false);
    ConfigurationMap expected;
    const std::size_t malformed = Read(contents, isCaseSensitive, expected);
    ConfigurationMap all;
    try {
        Require(reader.LoadConfiguration(all, path, nullptr), "a file that does not open");
        Require(malformed == 0, "a malformed line was accepted", std::to_string(malformed));
        CompareSections(reader, path, all);
    } catch (const ProductException& error) {
        Require(error.GetMessageKeyOrText() == orska_wstring("IniParseError"), "wrong key");
        const std::vector<orska_wstring>& parameters = error.GetMessageParameters();
        Require(parameters.size() == 2 && parameters[0] == path, "wrong parameters");
        Require(parameters[1] == orska_wstring(std::to_string(malformed)), "wrong line",
                parameters[1].GetAsUtf8());
    }
    Require(ToText(all) == ToText(expected), "wrong settings", ToText(all));
    return 0;
}
