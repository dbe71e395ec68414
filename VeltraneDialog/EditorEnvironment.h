/// The environment of an editor program (Linux).
#ifndef VELTRANEDIALOG_EDITORENVIRONMENT_H
#define VELTRANEDIALOG_EDITORENVIRONMENT_H

#include <vector>

namespace Veltrane::ODBC {

/// The host's environment without what would load the host's own libraries and plugins into the
/// editor. Of a host with raised privileges only what terminal and language need.
/// @return entries that belong to the host's environment, a null at the end
std::vector<char*> EditorEnvironment();

}  // namespace Veltrane::ODBC

#endif
