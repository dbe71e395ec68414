#include "cli/dsn/InstallerCalls.h"

#include <odbcinst.h>

namespace Veltrane::Cli::InstallerCalls {

bool Configure(unsigned short in_request, const std::string& in_driver,
               const std::string& in_attribute) {
    const std::string attributes = in_attribute + '\0';
    return SQLConfigDataSource(nullptr, in_request, in_driver.c_str(), attributes.c_str()) != 0;
}

bool GetError(unsigned short in_number, unsigned long& out_code, std::string& out_text) {
    DWORD code = 0;
    char text[SQL_MAX_MESSAGE_LENGTH + 1] = "";
    WORD length = 0;
    const RETCODE result = SQLInstallerError(in_number, &code, text, sizeof text, &length);
    out_code = code;
    out_text = text;
    return result == SQL_SUCCESS || result == SQL_SUCCESS_WITH_INFO;
}

}  // namespace Veltrane::Cli::InstallerCalls
