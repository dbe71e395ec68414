#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "PlatformAbstraction/base/WindowsHandle.h"
#include "VeltraneDialog/InitialValues.h"
#include "VeltraneDialog/WideText_Windows.h"
#include "tests/support/RaisedRights.h"

namespace Veltrane::ODBC {
namespace {

class InitialValuesFileTest : public testing::Test {
protected:
    ~InitialValuesFileTest() override {
        SetEnvironmentVariableW(L"VELTRANE_DSN_INITIAL_VALUES", nullptr);
        std::filesystem::remove(m_file);
        std::filesystem::remove(m_defaults);
    }
    void Name(const std::filesystem::path& in_file) {
        SetEnvironmentVariableW(L"VELTRANE_DSN_INITIAL_VALUES", in_file.c_str());
    }
    static std::string LoadError() {
        try {
            LoadInitialValues();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "no error";
    }
    /// With letters that no code page of Wine or Windows has all of.
    const std::filesystem::path m_file =
        std::filesystem::temp_directory_path() / L"values \x65E5\x672C.ini";
    const std::filesystem::path m_defaults = PathBesideModule(L"dsn-defaults.ini");
};

TEST_F(InitialValuesFileTest, ReadsTheNamedFileElseTheOneBesideTheLibrary) {
    std::ofstream(m_defaults) << "[DSN]\nUID=default\n";
    EXPECT_EQ(LoadInitialValues().m_uid, u"default");
    std::ofstream(m_file) << "[DSN]\nDatabase=d\n" << std::string(9000, '#') << "\nUID=u\n";
    Name(m_file);
    const DialogValues values = LoadInitialValues();
    EXPECT_EQ(values.m_database, u"d");
    EXPECT_EQ(values.m_uid, u"u");
}

TEST_F(InitialValuesFileTest, AProcessWithRaisedRightsTakesNoFileOfItsUsersChoice) {
    std::ofstream(m_defaults) << "[DSN]\nUID=default\n";
    std::ofstream(m_file) << "[DSN]\nUID=u\n";
    Name(m_file);
    {
        const Orska::Test::RaisedRights raised;
        EXPECT_EQ(LoadInitialValues().m_uid, u"default");
    }
    EXPECT_EQ(LoadInitialValues().m_uid, u"u");
}

TEST_F(InitialValuesFileTest, WithoutAnyFileAllValuesAreEmptyNotNull) {
    EXPECT_EQ(LoadInitialValues().m_dsn, u"");
    EXPECT_EQ(LoadInitialValues().m_database, u"");
}

TEST_F(InitialValuesFileTest, WhatCannotBeReadIsAnErrorWithItsName) {
    Name(m_file);
    EXPECT_EQ(LoadError().find("Initial values of a DSN: " + ToUtf8(m_file.wstring()) + ": "), 0U)
        << LoadError();
    std::ofstream(m_file) << std::string((1 << 20) + 1, '#');
    EXPECT_NE(LoadError().find(": larger than 1 MiB."), std::string::npos) << LoadError();
    const wchar_t* const pipeName = L"\\\\.\\pipe\\veltrane-initial-values";
    const Orska::Support::WindowsHandle pipe(
        CreateNamedPipeW(pipeName, PIPE_ACCESS_OUTBOUND, PIPE_TYPE_BYTE, 1, 0, 0, 0, nullptr));
    ASSERT_TRUE(pipe.IsOpen());
    Name(pipeName);
    EXPECT_NE(LoadError().find(": not a regular file."), std::string::npos) << LoadError();
    Name(L"NUL");
    EXPECT_EQ(LoadInitialValues().m_dsn, u"");
    const std::wstring longName(400, L'x');
    Name(longName);
    EXPECT_NE(LoadError().find(std::string(400, 'x') + ": "), std::string::npos) << LoadError();
}

}  // namespace
}  // namespace Veltrane::ODBC
