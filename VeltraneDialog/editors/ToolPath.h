/// Where the installed veltrane-dsn is.
#ifndef VELTRANEDIALOG_EDITORS_TOOLPATH_H
#define VELTRANEDIALOG_EDITORS_TOOLPATH_H

#include <string>

namespace Veltrane::ODBC {

/// @return the path of the tool of this installation or build tree; where there is none, one that
///         cannot be run
std::string FindTool();

}  // namespace Veltrane::ODBC

#endif
