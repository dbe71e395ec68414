/// The functions that clear passwords, in the editor's namespace.
#ifndef VELTRANEDIALOG_WIPE_H
#define VELTRANEDIALOG_WIPE_H

#include "PlatformAbstraction/base/Wipe.h"

namespace Veltrane::ODBC {

using Orska::Support::Wipe;
using Orska::Support::WipeAtEnd;
using Orska::Support::WipeBytes;

}  // namespace Veltrane::ODBC

#endif
