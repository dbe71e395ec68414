// The C library's error texts in the charset of a locale.
#include <gtest/gtest.h>
#include <libintl.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>
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

TEST(SystemError, TextsAreReadInTheCharsetOfTheLocale) {
    const TemporaryDirectory directory;
    std::filesystem::create_directories(directory.GetPath("de/LC_MESSAGES"));
    const std::string messages =
        directory.Write("de.po",
                        "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n"
                        "msgid \"No such device or address\"\nmsgstr \"Kein Ger\xC3\xA4t\"\n"
                        "msgid \"Input/output error\"\nmsgstr \"\u20AC \U0001F4BE\"\n");
    const std::string catalogue = directory.GetPath("de/LC_MESSAGES/libc.mo");
    if (std::system(("msgfmt -o '" + catalogue + "' '" + messages + "'").c_str()) != 0) {
        GTEST_SKIP() << "gettext is not installed";
    }
    unsetenv("LANGUAGE");
    bindtextdomain("libc", directory.GetPath().c_str());
    for (const char* name : {"de_DE.ISO-8859-1", "de_DE.UTF-8"}) {
        SCOPED_TRACE(name);
        ASSERT_TRUE(SetLocale({name, ""}, directory.GetPath()));
        EXPECT_EQ(GetLastErrorText(ENXIO).GetAsUtf8(), "Kein Ger\xC3\xA4t");
        EXPECT_EQ((Veltrane::ODBC::FileFailure{"", "cannot open", ENXIO}.Describe()),
                  "cannot open: Kein Ger\xC3\xA4t");
    }
    EXPECT_EQ(GetLastErrorText(EIO).GetAsUtf8(), "\u20AC \U0001F4BE");
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(GetLastErrorText(ENXIO).GetAsUtf8(), "No such device or address");
}

}  // namespace
}  // namespace Orska::Support
