#include "tests/end_to_end/InstallerClient.h"

#include <odbcinst.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace Veltrane::Test {

void InstallerClientTest::SetUp() {
    m_directory = testing::TempDir() + "veltrane-XXXXXX";
    ASSERT_NE(mkdtemp(m_directory.data()), nullptr);
    std::filesystem::create_directory(m_directory + "/system");
    m_userIni = m_directory + "/user.ini";
    m_systemIni = m_directory + "/system/odbc.ini";
    WriteFile(m_directory + "/system/odbcinst.ini",
              "[Veltrane]\nDescription=test\nSetup=" SETUP_LIBRARY "\n");
    WriteFile(m_systemIni, "");
    setenv("ODBCSYSINI", (m_directory + "/system").c_str(), 1);
    setenv("ODBCINSTINI", "odbcinst.ini", 1);
    setenv("ODBCINI", m_userIni.c_str(), 1);
    setenv("VELTRANE_DSN_INITIAL_VALUES", "", 1);
}

void InstallerClientTest::TearDown() {
    std::error_code ignored;
    std::filesystem::permissions(m_directory, std::filesystem::perms::owner_all, ignored);
    std::filesystem::remove_all(m_directory, ignored);
}

bool InstallerClientTest::Configure(unsigned short in_request, const std::string& in_attributes,
                                    Window in_window) {
    // What the handle points to must not matter, so it points nowhere.
    HWND window = in_window == Window::None ? nullptr : reinterpret_cast<HWND>(1);
    return SQLConfigDataSource(window, in_request, "Veltrane", in_attributes.c_str()) != 0;
}

bool InstallerClientTest::ConfigureWide(unsigned short in_request,
                                        const std::u16string& in_attributes) {
    const std::u16string driver = u"Veltrane";
    return SQLConfigDataSourceW(nullptr, in_request, reinterpret_cast<LPCWSTR>(driver.c_str()),
                                reinterpret_cast<LPCWSTR>(in_attributes.c_str())) != 0;
}

InstallerErrors InstallerClientTest::Errors() {
    InstallerErrors errors;
    for (WORD i = 1; i <= 8; ++i) {
        DWORD code = 0;
        char text[512] = "";
        WORD length = 0;
        const RETCODE result = SQLInstallerError(i, &code, text, sizeof text, &length);
        if (result != SQL_SUCCESS && result != SQL_SUCCESS_WITH_INFO) {
            break;
        }
        errors.emplace_back(code, text);
    }
    return errors;
}

void InstallerClientTest::SetInitialValues(const std::string& in_section) {
    const std::string path = m_directory + "/values.ini";
    WriteFile(path, "[DSN]\n" + in_section);
    setenv("VELTRANE_DSN_INITIAL_VALUES", path.c_str(), 1);
}

std::string InstallerClientTest::ReadThroughInstaller(const std::string& in_dsn,
                                                      const std::string& in_key) {
    int ends[2];
    if (pipe(ends) != 0) {
        return "no pipe";
    }
    const pid_t child = fork();
    if (child == 0) {
        char value[4096] = "";
        SQLGetPrivateProfileString(in_dsn.c_str(), in_key.c_str(), "(absent)", value, sizeof value,
                                   "odbc.ini");
        const std::string text(value);
        _exit(write(ends[1], text.data(), text.size()) < 0 ? 1 : 0);
    }
    close(ends[1]);
    std::string value(4096, '\0');
    const ssize_t count = read(ends[0], value.data(), value.size());
    close(ends[0]);
    waitpid(child, nullptr, 0);
    value.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    return value;
}

std::string InstallerClientTest::ReadFile(const std::string& in_path) {
    std::ifstream file(in_path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void InstallerClientTest::WriteFile(const std::string& in_path, const std::string& in_contents) {
    std::ofstream(in_path, std::ios::binary) << in_contents;
}

}  // namespace Veltrane::Test
