/// Whether a program may be run from its place (Linux).
#ifndef VELTRANEDIALOG_RUNNABLEPROGRAM_H
#define VELTRANEDIALOG_RUNNABLEPROGRAM_H

#include <string>

namespace Veltrane::ODBC {

/// @return why a program must not be run: it does not exist, or others could replace it; empty when
///         it can be run
std::string WhyNotRunnable(const std::string& in_program);

}  // namespace Veltrane::ODBC

#endif
