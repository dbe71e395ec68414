#include "cli/DriverManager.h"

#include <odbcinst.h>

#include "cli/ProfileFile.h"

namespace Veltrane::Cli {

namespace {

/// The driver manager reads lines of at most 1,000 bytes.
constexpr int VALUE_BUFFER_SIZE = 4096;
constexpr int MAX_LIST_SIZE = 1 << 24;

/// Profile reads look where the config mode says; it is put back behind each one.
class ConfigMode {
public:
    explicit ConfigMode(Scope in_scope) {
        SQLSetConfigMode(in_scope == Scope::User ? ODBC_USER_DSN : ODBC_SYSTEM_DSN);
    }
    ConfigMode(const ConfigMode&) = delete;
    ConfigMode& operator=(const ConfigMode&) = delete;
    ~ConfigMode() { SQLSetConfigMode(ODBC_BOTH_DSN); }
};

/// The errors of the last call, one a line: "code: text".
std::string InstallerErrors() {
    std::string text;
    for (WORD i = 1; i <= 8; ++i) {
        DWORD code = 0;
        char message[SQL_MAX_MESSAGE_LENGTH + 1] = "";
        WORD length = 0;
        const RETCODE result = SQLInstallerError(i, &code, message, sizeof message, &length);
        if (result != SQL_SUCCESS && result != SQL_SUCCESS_WITH_INFO) {
            break;
        }
        if (!text.empty()) {
            text += '\n';
        }
        text.append(std::to_string(code)).append(": ").append(message);
    }
    return text;
}

}  // namespace

std::optional<std::string> DriverManager::Read(const std::string& in_dsn,
                                               const std::string& in_key) const {
    // A default that no line of the file can hold tells an absent key from an empty value; a buffer
    // that is as it was tells that the file could not be read.
    constexpr char ABSENT[] = "\n";
    const ConfigMode mode(m_scope);
    char buffer[VALUE_BUFFER_SIZE] = "\r";
    const int length = SQLGetPrivateProfileString(in_dsn.c_str(), in_key.c_str(), ABSENT, buffer,
                                                  sizeof buffer, "odbc.ini");
    if (length < 0 || std::string(buffer) == "\r") {
        throw InstallerError(DescribeUnreadable(m_scope));
    }
    if (std::string(buffer) == ABSENT) {
        return std::nullopt;
    }
    return buffer;
}

std::vector<std::string> DriverManager::ListDsns() const {
    const ConfigMode mode(m_scope);
    std::vector<char> buffer(1 << 16);
    int length = 0;
    for (;;) {
        length = SQLGetPrivateProfileString(nullptr, nullptr, "", buffer.data(),
                                            static_cast<int>(buffer.size()), "odbc.ini");
        if (length < static_cast<int>(buffer.size()) / 2 || buffer.size() >= MAX_LIST_SIZE) {
            break;
        }
        buffer.assign(buffer.size() * 4, '\0');
    }
    if (length < 0) {
        throw InstallerError(DescribeUnreadable(m_scope));
    }
    std::vector<std::string> names;
    for (const char* name = buffer.data(); *name != '\0'; name += names.back().size() + 1) {
        names.emplace_back(name);
    }
    return names;
}

void DriverManager::Configure(Request in_request, const std::string& in_driver,
                              const std::string& in_dsn) const {
    constexpr WORD USER_TO_SYSTEM = ODBC_ADD_SYS_DSN - ODBC_ADD_DSN;
    WORD request = static_cast<WORD>(in_request);
    if (m_scope == Scope::System) {
        request = static_cast<WORD>(request + USER_TO_SYSTEM);
    }
    std::string attributes = "DSN=" + in_dsn;
    attributes.push_back('\0');
    if (!SQLConfigDataSource(nullptr, request, in_driver.c_str(), attributes.c_str())) {
        const std::string errors = InstallerErrors();
        throw InstallerError(errors.empty() ? "the installer gave no reason" : errors);
    }
}

}  // namespace Veltrane::Cli
