#include "cli/DriverManager.h"

#include <odbcinst.h>

#include "cli/ProfileFile.h"

namespace Veltrane::Cli {

namespace {

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

void ThrowInstallerErrors(const std::string& in_path) {
    std::string text = InstallerErrors();
    const std::string problem = in_path.empty() ? in_path : DescribeUnwritable(in_path);
    if (!problem.empty()) {
        text += (text.empty() ? "" : "\n") + problem;
    }
    throw InstallerError(text.empty() ? "the installer gave no reason" : text);
}

bool DriverManager::IsValidName(const std::string& in_name) {
    const bool isSimple = in_name.find_first_of(std::string("\0\n\r\t", 4)) == std::string::npos;
    return isSimple && !in_name.empty() && in_name.front() != ' ' && in_name.back() != ' ' &&
           SQLValidDSN(in_name.c_str());
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
        ThrowInstallerErrors({});
    }
}

}  // namespace Veltrane::Cli
