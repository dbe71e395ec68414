// The C library's error texts in the charset of a locale.
#include <gtest/gtest.h>
#include <libintl.h>

#include <cerrno>
#include <clocale>
#include <cstdint>
#include <filesystem>
#include <string>

#include "PlatformAbstraction/files/OrskaUtility.h"
#include "Setup/OdbcIniFile.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestSystem.h"

namespace Orska::Support {
namespace {

using Test::SetLocale;
using Test::TemporaryDirectory;

/// A message catalogue in UTF-8 with one text, as msgfmt makes it.
std::string MakeCatalogue(const std::string& in_text, const std::string& in_translation) {
    const std::string header = "Content-Type: text/plain; charset=UTF-8\n";
    const std::string texts[] = {"", in_text, header, in_translation};
    constexpr std::uint32_t TABLES = 7 * sizeof(std::uint32_t);
    std::string bytes;
    const auto append = [&bytes](std::size_t in_number) {
        const auto number = static_cast<std::uint32_t>(in_number);
        bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
    };
    for (const std::uint32_t number : {0x950412DEU, 0U, 2U, TABLES, TABLES + 16, 0U, TABLES + 32}) {
        append(number);
    }
    std::size_t at = TABLES + 32;
    for (const std::string& text : texts) {
        append(text.size());
        append(at);
        at += text.size() + 1;
    }
    for (const std::string& text : texts) bytes += text + '\0';
    return bytes;
}

TEST(SystemError, TextsAreReadInTheCharsetOfTheLocale) {
    const TemporaryDirectory directory;
    std::filesystem::create_directories(directory.GetPath("de/LC_MESSAGES"));
    directory.Write("de/LC_MESSAGES/libc.mo",
                    MakeCatalogue("No such device or address", "Kein Ger\xC3\xA4t"));
    unsetenv("LANGUAGE");
    bindtextdomain("libc", directory.GetPath().c_str());
    for (const char* name : {"de_DE.ISO-8859-1", "de_DE.UTF-8"}) {
        SCOPED_TRACE(name);
        ASSERT_TRUE(SetLocale({name, ""}, directory.GetPath()));
        EXPECT_EQ(GetLastErrorText(ENXIO).GetAsUtf8(), "Kein Ger\xC3\xA4t");
        EXPECT_EQ((Veltrane::ODBC::FileFailure{"", "cannot open", ENXIO}.Describe()),
                  "cannot open: Kein Ger\xC3\xA4t");
    }
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(GetLastErrorText(ENXIO).GetAsUtf8(), "No such device or address");
}

}  // namespace
}  // namespace Orska::Support
