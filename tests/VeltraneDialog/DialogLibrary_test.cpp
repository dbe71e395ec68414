/// Only the VeltraneDialog.dll beside the code that asks for it is loaded.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "VeltraneDialog/DialogLibrary.h"
#include "VeltraneDialog/WideText.h"

namespace Veltrane::ODBC {
namespace {

namespace fs = std::filesystem;

class DialogLibraryTest : public testing::Test {
protected:
    DialogLibraryTest() {
        fs::create_directories(m_folder);
        fs::copy_file(m_own / "dialog_probe.exe", m_folder / "dialog_probe.exe",
                      fs::copy_options::overwrite_existing);
    }
    ~DialogLibraryTest() override { fs::remove_all(m_folder); }
    std::string Probe() const {
        std::string output;
        std::FILE* const pipe = _wpopen((m_folder / "dialog_probe.exe").c_str(), L"r");
        for (int c = 0; pipe != nullptr && (c = std::fgetc(pipe)) != EOF;) {
            output += static_cast<char>(c);
        }
        if (pipe != nullptr) _pclose(pipe);
        return output;
    }
    const fs::path m_own = fs::path(PathBesideModule(L"x")).parent_path();
    const fs::path m_folder = fs::temp_directory_path() / "veltrane_dialog_library_test";
};

TEST_F(DialogLibraryTest, NoneIsLoadedFromTheWorkingFolderOrThePath) {
    ASSERT_TRUE(fs::exists(m_own / DIALOG_LIBRARY_NAME));
    fs::current_path(m_own);
    _wputenv_s(L"PATH", m_own.c_str());
    const std::string output = Probe();
    EXPECT_EQ(output.find("error=No DSN editor can be shown. "), 0U) << output;
    const std::string sought = (m_folder / DIALOG_LIBRARY_NAME).string();
    EXPECT_NE(output.find(sought + " cannot be loaded: "), std::string::npos) << output;
    EXPECT_NE(output.find(" VELTRANE_DSN_INITIAL_VALUES names."), std::string::npos) << output;
}

TEST_F(DialogLibraryTest, AFileThatIsNotALibraryIsNamed) {
    std::ofstream(m_folder / DIALOG_LIBRARY_NAME) << "no library";
    const std::string output = Probe();
    EXPECT_NE(output.find("VeltraneDialog.dll cannot be loaded: "), std::string::npos) << output;
}

}  // namespace
}  // namespace Veltrane::ODBC
