/// Examines stored DSNs and the files that hold them.
#ifndef CLI_DSNFINDINGS_H
#define CLI_DSNFINDINGS_H

#include <string>

#include "Setup/Profile.h"
#include "cli/dsn/DsnStore.h"
#include "cli/examine/Finding.h"

namespace Veltrane::Cli {

/// Examines one DSN: missing values, and values that programs read differently.
/// @param in_driver  a DSN of another driver need not have its keys
Findings ExamineDsn(const ODBC::ProfileView& in_text, Scope in_scope, const std::string& in_dsn,
                    const std::string& in_driver);

/// Examines the file of a scope: readable, writable, private if it holds a password.
Findings ExamineFile(const DsnStore& in_store);

/// Names the DSNs of the user's file that hide one of the system's.
Findings ExamineShadows(const DsnStore& in_user, const DsnStore& in_system);

}  // namespace Veltrane::Cli

#endif
