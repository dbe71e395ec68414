#include "Setup/OdbcInstaller.h"

namespace Veltrane::ODBC::OdbcInstaller {

bool IsListOfDataSources(const orska_wstring& in_name) {
    return in_name.Compare(orska_wstring(L"ODBC Data Sources"), false) == 0;
}

}  // namespace Veltrane::ODBC::OdbcInstaller
