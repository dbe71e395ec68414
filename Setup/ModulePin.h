/// Keeps this library in the process once it has been used, although the installer frees it after
/// every request.
#ifndef SETUP_MODULEPIN_H
#define SETUP_MODULEPIN_H

namespace Veltrane::ODBC {

/// Called at every entry; the first call does it. Any thread.
void PinModule() noexcept;

}  // namespace Veltrane::ODBC

#endif
