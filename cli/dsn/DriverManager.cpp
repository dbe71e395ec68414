#include "cli/dsn/DriverManager.h"

#include "cli/dsn/InitialValuesFile.h"
#include "cli/dsn/InstallerCalls.h"

namespace Veltrane::Cli {

namespace {

/// The errors of the last call, one a line: "code: text".
std::string InstallerErrors() {
    std::string text;
    unsigned long code = 0;
    std::string message;
    for (unsigned short i = 1; i <= 8 && InstallerCalls::GetError(i, code, message); ++i) {
        if (!text.empty()) text += '\n';
        text.append(std::to_string(code)).append(": ").append(message);
    }
    return text.empty() ? "the installer gave no reason" : text;
}

}  // namespace

std::string DriverManager::Configure(Request in_request, Scope in_scope,
                                     const std::string& in_driver, const std::string& in_dsn,
                                     const Entries& in_values) const {
    constexpr unsigned short USER_TO_SYSTEM = 3;
    auto request = static_cast<unsigned short>(in_request);
    if (in_scope == Scope::System) {
        request = static_cast<unsigned short>(request + USER_TO_SYSTEM);
    }
    const InitialValuesFile values(in_values);
    const bool isDone = InstallerCalls::Configure(request, in_driver, "DSN=" + in_dsn);
    return isDone ? std::string() : InstallerErrors();
}

}  // namespace Veltrane::Cli
