// We read the same from odbc.ini files as the driver manager. Both read generated files, each pair
// in a new process because the driver manager caches what it reads.
#include <gtest/gtest.h>
#include <odbcinst.h>

#include <array>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "Setup/OdbcInstaller.h"
#include "tests/support/IniScratch.h"
#include "tests/support/NewProcess.h"

namespace Veltrane::ODBC {
namespace {

using Orska::Support::orska_wstring;
using Test::IniScratch;
using Test::InNewProcess;

constexpr int BUFFER_SIZE = 4096;
const std::vector<std::string> SECTIONS = {"A", "b", "A b", "[A", "#A"};
const std::vector<std::string> KEYS = {"Driver", "Server", "k", "x y", "_z", "ü"};

class Generator {
public:
    explicit Generator(unsigned in_seed) : m_random(in_seed) {}

    std::string File() {
        std::string text;
        const std::size_t lines = Below(12);
        // Most files start correctly; the others are refused as a whole.
        if (Below(10) != 0) text += Below(2) == 0 ? "[A]\n" : "# comment\n\n[b]\r\n";
        for (std::size_t i = 0; i < lines; ++i) text += Line() + LineEnd();
        if (Below(4) == 0) text += Line();
        return text;
    }

private:
    std::size_t Below(std::size_t in_limit) { return m_random() % in_limit; }
    std::string OneOf(const std::vector<std::string>& in_list) {
        return in_list[Below(in_list.size())];
    }
    std::string Blanks() {
        return OneOf(
            {"", "", "", " ", "\t", " \t ", "\r", "\v", "\f", std::string(Below(1100), ' ')});
    }
    std::string LineEnd() { return OneOf({"\n", "\n", "\n", "\r\n", "\n\n", " \n"}); }
    std::string Case(std::string in_text) {
        for (char& c : in_text) {
            if (Below(8) == 0) {
                c = static_cast<char>(Below(2) == 0 ? std::toupper(c) : std::tolower(c));
            }
        }
        return in_text;
    }
    std::string Value() {
        return OneOf({"", "v", "v w", "a=b", "=", "ü€日本", "x;y", "x # y", "[A]", "]", "\"q\"",
                      "a\tb", std::string("n\0ul", 4), std::string(980 + Below(40), 'l'),
                      std::string(980 + Below(40), 'l') + "Server=w", std::string(2500, '['),
                      std::string(990 + Below(12), ' ') + "[A]", "\xE9\xFF"}) +
               Blanks();
    }
    std::string Line() {
        switch (Below(8)) {
            case 0:
            case 1:
                return Blanks() + "[" + Blanks() + Case(OneOf(SECTIONS)) + Blanks() +
                       OneOf({"]", "]", "]", "] tail", "]]", ""});
            case 2:
                return Blanks() + OneOf({"#", ";"}) + Value();
            case 3:
                return Blanks() + Value();
            case 4:
                return Blanks() + std::string(1, '\0') + OneOf({"", "Server=z", "[A]"});
            default:
                return Blanks() + Case(OneOf(KEYS)) + Blanks() + OneOf({"=", "=", "=", "", "=="}) +
                       Blanks() + Value();
        }
    }

    std::mt19937 m_random;
};

std::string Describe(int in_count, const std::string& in_value) {
    return std::to_string(in_count) + " \"" + in_value + "\"";
}

std::string ReadTheirs(const std::string& in_section, const std::string& in_key) {
    std::array<char, BUFFER_SIZE> buffer{};
    const int count = SQLGetPrivateProfileString(in_section.c_str(), in_key.c_str(), "default text",
                                                 buffer.data(), BUFFER_SIZE, "odbc.ini");
    return Describe(count, buffer.data());
}

std::string ReadOurs(const std::string& in_section, const std::string& in_key) {
    orska_wstring value;
    const int count =
        OdbcInstaller::GetPrivateProfileString(orska_wstring(in_section), orska_wstring(in_key),
                                               orska_wstring(std::string("default text")), value,
                                               BUFFER_SIZE, orska_wstring(std::string("odbc.ini")));
    return Describe(count, value.GetAsUtf8());
}

/// Text that is not ASCII has different counts of code units and bytes, so only the text
/// is compared.
bool IsSame(const std::string& in_theirs, const std::string& in_ours) {
    if (in_theirs == in_ours) return true;
    const auto text = [](const std::string& in_line) {
        orska_wstring decoded;
        decoded.SetFromUtf8(in_line.substr(in_line.find('"')));
        return decoded.GetAsUtf8();
    };
    return in_theirs.find_first_of("\xC3\xE2\xE9") != std::string::npos &&
           text(in_theirs) == text(in_ours);
}

/// Returns the differences, each on a line.
std::string Compare(unsigned in_seed) {
    const IniScratch scratch;
    Generator generator(in_seed);
    if (in_seed % 7 != 0) IniScratch::Write(scratch.UserFile(), generator.File());
    if (in_seed % 11 != 0) IniScratch::Write(scratch.SystemFile(), generator.File());
    SQLSetConfigMode(static_cast<UWORD>(in_seed % 3));
    const OdbcInstaller::Request request;
    std::string differences;
    for (const std::string& section : SECTIONS) {
        for (const std::string& key : KEYS) {
            const std::string ours = ReadOurs(section, key);
            const std::string theirs = ReadTheirs(section, key);
            if (IsSame(theirs, ours)) continue;
            differences.append("[" + section + "] " + key + ": theirs ");
            differences.append(theirs).append(", ours ").append(ours).append("\n");
        }
    }
    return differences;
}

// ORSKA_TEST_ROUNDS sets a higher number of files than in a quick run.
TEST(OdbcIniReading, ReadsWhatTheDriverManagerReads) {
    const char* const rounds = std::getenv("ORSKA_TEST_ROUNDS");
    const unsigned count = rounds == nullptr ? 150 : static_cast<unsigned>(std::atoi(rounds));
    for (unsigned seed = 0; seed < count; ++seed) {
        ASSERT_EQ(InNewProcess([=] { return Compare(seed); }), "") << seed;
    }
}

}  // namespace
}  // namespace Veltrane::ODBC
