/// The installer for tests that run whole requests: unixODBC with files in a temporary folder or,
/// on Windows, the test installer with its registry. Each has its own body; all texts are UTF-8.
#ifndef TESTS_SUPPORT_INSTALLERSTAGE_H
#define TESTS_SUPPORT_INSTALLERSTAGE_H

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Veltrane::Test {

/// The keys of a data source with their values; the data sources by their names. Empty data sources
/// and the list of names are left out.
using Keys = std::map<std::string, std::string>;
using Profile = std::map<std::string, Keys>;

class InstallerStage {
public:
    /// The driver that the installer writes into a new data source of "drv".
    static const char* const WRITTEN_DRIVER;
    /// The registry stores any text, and its names are counted in UTF-16; files do neither.
    static const bool IS_REGISTRY;

    /// Has the driver "drv".
    InstallerStage();
    InstallerStage(const InstallerStage&) = delete;
    InstallerStage& operator=(const InstallerStage&) = delete;
    ~InstallerStage();

    /// Starts again with these data sources for the user or the system, whom the requests are for,
    /// and none for the other. For the system no config mode is set: a request for it needs none.
    void Begin(bool in_isSystem, const Profile& in_profile);
    /// The data sources that the requests were for, and the others.
    Profile Get();
    Profile GetOther();
    /// Makes one operation fail: "RemoveDSN", "WriteDSN", "Write <key>"; empty for none.
    void FailAt(const std::string& in_operation);
    /// The errors posted since Begin, without those of failing operations.
    std::vector<std::pair<unsigned long, std::string>> Posted();

private:
    bool m_isSystem = false;
};

}  // namespace Veltrane::Test

#endif
