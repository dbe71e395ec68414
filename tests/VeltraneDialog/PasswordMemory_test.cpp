#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "VeltraneDialog/InitialValues.h"
#include "VeltraneDialog/Wipe.h"
#include "tests/support/PasswordCopies.h"
#include "tests/support/TemporaryDirectory.h"

namespace Veltrane::ODBC {
namespace {

TEST(PasswordMemory, OnlyTheInitialValueIsKeptOfTheFile) {
    const Orska::Test::TemporaryDirectory directory;
    const std::string file = directory.Write("values.ini", "");
    {
        std::u16string password = MakePassword(200);
        const WipeAtEnd wipePassword(password);
        std::string text(5000, '#');
        text.reserve(20000);
        text += "\n[DSN]\nPWD=";
        for (const char16_t unit : password) text += static_cast<char>(unit);
        text += "\n" + std::string(5000, '#');
        const int descriptor = open(file.c_str(), O_WRONLY);
        ASSERT_EQ(write(descriptor, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        close(descriptor);
        Wipe(text);
    }
    setenv("VELTRANE_DSN_INITIAL_VALUES", file.c_str(), 1);
    {
        const DialogValues values = LoadInitialValues();
        EXPECT_EQ(CopiesOfThePassword(), 1U);
    }
    EXPECT_EQ(CopiesOfThePassword(), 0U);
}

}  // namespace
}  // namespace Veltrane::ODBC
