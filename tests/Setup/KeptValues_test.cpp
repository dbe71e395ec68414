// A request that changes nothing loses nothing: the installer's own reader finds the same values in
// a generated section after Load and Save. Tested with each driver manager.
#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <vector>

#include "Setup/OdbcInstaller.h"
#include "Setup/VeltraneDSNConfiguration.h"
#include "tests/support/IniScratch.h"
#include "tests/support/Installer.h"
#include "tests/support/NewProcess.h"

namespace Veltrane::ODBC {
namespace {

using Orska::Support::orska_wstring;
using Test::IniScratch;
using Test::InNewProcess;
using Test::Installer;

const std::array<std::string, 6> KEYS = {"Server", "Namespace", "LoginMode",
                                         "UID",    "PWD",       "Database"};

using Sections = std::vector<std::array<std::string, KEYS.size()>>;

class Generator {
public:
    std::size_t Below(std::size_t in_limit) { return m_random() % in_limit; }
    std::string OneOf(const std::vector<std::string>& in_list) {
        return in_list[Below(in_list.size())];
    }

    std::string Value() {
        switch (Below(5)) {
            case 0:
                return Mixed(1 + Below(8));
            case 1:  // the record gets only its beginning
                return Mixed(60) + std::string(150 + Below(60), 'x') + Mixed(60);
            case 2:
                return std::string(250 + Below(20), OneOf({"\xFC", "p", "\x7F"})[0]) + Mixed(3);
            case 3:
                return std::string(900 + Below(200), 'l');
            default:
                return OneOf(
                    {"", "v\v ;c", "a ;b # c", "'q;' x", "\"q # \"", "; c", "p=;#'\"{}[]\\%$"});
        }
    }

private:
    /// Returns ASCII, blanks, control characters, lone bytes and whole characters in any order.
    std::string Mixed(std::size_t in_parts) {
        std::string text;
        while (in_parts-- != 0) {
            const std::string control(1, static_cast<char>(11 + Below(21)));
            const std::string lone(1, static_cast<char>(0x80 + Below(0x80)));
            text += OneOf({control, "\t", lone, " ", "x", "yz", "abc",
                           OneOf({"ü", "日", "😀", "\xC2\x85", "\xC2", "\u3000", "\uFFFD"})});
        }
        return text;
    }

    std::mt19937 m_random;
};

/// Makes a section for each value that is dangerous by its place or by one byte, then
/// generated ones.
Sections MakeSections(std::size_t in_count) {
    Sections sections;
    for (int byte = 1; byte < 0x100; ++byte) {
        const std::string inside = std::string("CH") + static_cast<char>(byte) + "TEAU";
        if (byte != '\n') sections.push_back({inside, inside, inside, inside, inside, inside});
    }
    for (std::size_t place = 250; place < 270; ++place) {
        std::string value(280, 'x');
        value[place] = ' ';
        sections.push_back({value, value, value, value, value, value});
    }
    Generator generator;
    while (sections.size() < in_count) {
        auto& section = sections.emplace_back();
        for (std::string& value : section) value = generator.Value();
    }
    return sections;
}

std::string MakeFile(const Sections& in_sections, const std::string& in_lineEnd) {
    Generator generator;
    std::string file;
    for (std::size_t i = 0; i < in_sections.size(); ++i) {
        file.append("[d").append(std::to_string(i)).append("]\nDriver=Old\n");
        for (std::size_t key = 0; key < KEYS.size(); ++key) {
            file.append(KEYS[key]).append(generator.OneOf({"=", " = ", "=\t"}));
            file.append(in_sections[i][key]).append(generator.OneOf({"\n", in_lineEnd, "\r\n"}));
        }
    }
    return file;
}

/// Returns every value as the installer reads it, each with its NUL.
std::vector<std::string> ReadAll(const Installer& in_installer, const std::string& in_prefix,
                                 std::size_t in_count) {
    // In a new process, because the installer caches what it reads.
    const std::string text = InNewProcess([&] {
        std::string all;
        for (std::size_t i = 0; i < in_count; ++i) {
            for (const std::string& key : KEYS) {
                all += in_installer.Read(in_prefix + std::to_string(i), key) + '\0';
            }
        }
        return all;
    });
    std::vector<std::string> values;
    for (std::size_t at = 0; at < text.size(); at += values.back().size() + 1) {
        values.emplace_back(text.c_str() + at);
    }
    return values;
}

/// By contract, blank values of these keys are not written. The record has more kinds of blanks
/// than the reader trims.
bool IsDropped(std::size_t in_key, const std::string& in_value) {
    orska_wstring text;
    text.SetFromUtf8(in_value);
    return in_key != 0 && in_key + 1 != KEYS.size() && text.Trim().IsEmpty();
}

/// Saves as Cancel in an editor does, and OK without a change.
void SaveUnchanged(const std::string& in_dsn, const std::string& in_newName) {
    const OdbcInstaller::Request request;
    VeltraneDSNConfiguration record(orska_wstring(std::string("Veltrane")));
    record.Load(orska_wstring("DSN=" + in_dsn + std::string(1, '\0')));
    record.SetDsn(orska_wstring(in_newName));
    record.Save();
}

void CheckSections(const Installer& in_installer, const Sections& in_sections) {
    const std::vector<std::string> before = ReadAll(in_installer, "d", in_sections.size());
    ASSERT_EQ(before.size(), in_sections.size() * KEYS.size());
    const std::string failures = InNewProcess([&] {
        std::string all;
        for (std::size_t i = 0; i < in_sections.size(); ++i) {
            const std::string number = std::to_string(i);
            try {
                // Under a new name first: the old one would be read again afterwards.
                SaveUnchanged("d" + number, "renamed" + number);
                SaveUnchanged("d" + number, "d" + number);
            } catch (...) {
                all += "d" + number + " is refused\n";
            }
        }
        return all;
    });
    EXPECT_EQ(failures, "");
    for (const char* const prefix : {"d", "renamed"}) {
        const std::vector<std::string> after = ReadAll(in_installer, prefix, in_sections.size());
        ASSERT_EQ(after.size(), before.size());
        for (std::size_t i = 0; i < before.size(); ++i) {
            const std::size_t key = i % KEYS.size();
            EXPECT_EQ(after[i], IsDropped(key, before[i]) ? "(absent)" : before[i])
                << prefix << i / KEYS.size() << " " << KEYS[key];
        }
    }
}

void CheckNothingChanges(bool in_isIodbc) {
    const IniScratch scratch(IniScratch::InMemory());
    // Loaded first, so that the setup logic finds and uses this library.
    const Installer installer(in_isIodbc);
    if (!installer.IsInstalled()) GTEST_SKIP() << "iODBC is not installed";
    const Sections all = MakeSections(500);
    // In small files, because the installer parses the file for each value.
    constexpr std::size_t IN_A_FILE = 20;
    for (std::size_t first = 0; first < all.size() && !testing::Test::HasFailure();
         first += IN_A_FILE) {
        SCOPED_TRACE(first);
        const auto begin = all.begin() + static_cast<std::ptrdiff_t>(first);
        const Sections sections(begin, begin + IN_A_FILE);
        IniScratch::Write(scratch.UserFile(), MakeFile(sections, in_isIodbc ? "\r" : "\n"));
        CheckSections(installer, sections);
    }
}

TEST(KeptValues, OfUnixodbc) { CheckNothingChanges(false); }

TEST(KeptValues, OfIodbc) { CheckNothingChanges(true); }

}  // namespace
}  // namespace Veltrane::ODBC
