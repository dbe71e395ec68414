/// A client of the ODBC installer for tests: a scratch folder with an odbcinst.ini that names the
/// built setup library, an odbc.ini for the user and one for the system, and SQLConfigDataSource.
#ifndef TESTS_END_TO_END_INSTALLERCLIENT_H
#define TESTS_END_TO_END_INSTALLERCLIENT_H

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace Veltrane::Test {

/// Code and text of one installer error.
using InstallerErrors = std::vector<std::pair<unsigned long, std::string>>;

/// Where the client hands over a parent window: none, or a handle that nothing can be done with.
enum class Window { None, Opaque };

class InstallerClientTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Calls SQLConfigDataSource for the driver "Veltrane".
    /// @param in_attributes  entries with their NULs; the final NUL is added
    bool Configure(unsigned short in_request, const std::string& in_attributes,
                   Window in_window = Window::None);
    /// The same through SQLConfigDataSourceW; the texts in UTF-16.
    bool ConfigureWide(unsigned short in_request, const std::u16string& in_attributes);

    /// Every error that the installer holds after the last call.
    static InstallerErrors Errors();

    /// Names a file of initial values with this content for the next requests.
    void SetInitialValues(const std::string& in_section);

    /// A value as the installer reads it, in a process of its own because it caches.
    std::string ReadThroughInstaller(const std::string& in_dsn, const std::string& in_key);

    static std::string ReadFile(const std::string& in_path);
    static void WriteFile(const std::string& in_path, const std::string& in_contents);

    std::string m_directory;
    std::string m_userIni;
    std::string m_systemIni;
};

}  // namespace Veltrane::Test

#endif
