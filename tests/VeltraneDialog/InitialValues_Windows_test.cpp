#include <windows.h>

#include <filesystem>
#include <fstream>

#include "PlatformAbstraction/base/WindowsHandle.h"
#include "VeltraneDialog/WideText.h"
#include "tests/VeltraneDialog/InitialValuesFile.h"
#include "tests/support/RaisedRights.h"

namespace Veltrane::ODBC {
namespace {

class InitialValuesPlace : public InitialValuesFile {
protected:
    ~InitialValuesPlace() override {
        std::filesystem::remove(m_named);
        std::filesystem::remove(m_defaults);
    }
    static void Name(const wchar_t* in_file) {
        SetEnvironmentVariableW(L"VELTRANE_DSN_INITIAL_VALUES", in_file);
    }
    /// No code page of Wine or Windows has all of its letters.
    const std::filesystem::path m_named =
        std::filesystem::path(m_directory.GetPath()) / L"values \x65E5\x672C.ini";
    const std::filesystem::path m_defaults = PathBesideModule(L"dsn-defaults.ini");
};

TEST_F(InitialValuesPlace, IsTheNamedFileOrTheOneBesideTheLibrary) {
    std::ofstream(m_defaults) << "[DSN]\nUID=default\n";
    Name(nullptr);
    EXPECT_EQ(LoadInitialValues().m_uid, u"default");
    std::ofstream(m_named) << "[DSN]\nUID=u\n";
    Name(m_named.c_str());
    {
        const Orska::Test::RaisedRights raised;
        EXPECT_EQ(LoadInitialValues().m_uid, u"default");
    }
    EXPECT_EQ(LoadInitialValues().m_uid, u"u");
}

TEST_F(InitialValuesPlace, AFileThatCannotBeReadIsAnErrorWithItsName) {
    Name(m_named.c_str());
    const auto isSaid = [](const std::wstring& in_text) {
        const std::string error = ErrorOf([] { LoadInitialValues(); });
        EXPECT_NE(error.find(ToUtf8(in_text)), std::string::npos) << error;
    };
    isSaid(L"Initial values of a DSN: " + m_named.wstring() + L": ");
    const wchar_t* const pipeName = L"\\\\.\\pipe\\veltrane-initial-values";
    const Orska::Support::WindowsHandle pipe(
        CreateNamedPipeW(pipeName, PIPE_ACCESS_OUTBOUND, PIPE_TYPE_BYTE, 1, 0, 0, 0, nullptr));
    ASSERT_TRUE(pipe.IsOpen());
    Name(pipeName);
    isSaid(L": not a regular file.");
    Name(L"NUL");
    EXPECT_EQ(LoadInitialValues().m_dsn, u"");
    const std::wstring longName(400, L'x');
    Name(longName.c_str());
    isSaid(longName + L": ");
}

}  // namespace
}  // namespace Veltrane::ODBC
