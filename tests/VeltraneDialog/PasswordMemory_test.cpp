#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

#include "VeltraneDialog/InitialValues.h"
#include "VeltraneDialog/VeltraneDSNDialog.h"
#include "VeltraneDialog/Wipe.h"
#include "tests/support/PasswordCopies.h"
#include "tests/support/TemporaryDirectory.h"

namespace Veltrane::ODBC {
namespace {

void ShowWithPassword(const char* in_mode, std::size_t in_length) {
    setenv("VELTRANE_DSN_EDITOR", FAKE_EDITOR_PROGRAM, 1);
    setenv("FAKE_EDITOR", in_mode, 1);
    VeltraneDSNDialog dialog;
    {
        DialogString password = MakePassword(in_length);
        dialog.SetPwd(*password);
        Wipe(*password);
    }
    EXPECT_EQ(CopiesOfThePassword(), 1U) << "the search finds what is there";
    try {
        dialog.ShowDialog();
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(CopiesOfThePassword(), 1U) << error.what();
    }
    EXPECT_EQ(CopiesOfThePassword(), 1U) << "besides the editor's own value";
}

TEST(PasswordMemory, NoCopyIsLeft) {
    for (const char* mode : {"ok", "cancel", "garbage", "end"}) {
        for (const std::size_t length : {std::size_t{30}, std::size_t{400}}) {
            SCOPED_TRACE(std::string(mode) + " " + std::to_string(length));
            ShowWithPassword(mode, length);
            EXPECT_EQ(CopiesOfThePassword(), 0U);
        }
    }
}

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
