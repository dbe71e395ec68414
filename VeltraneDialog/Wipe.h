/// The names under which the editor and what builds on it clear passwords.
#ifndef VELTRANEDIALOG_WIPE_H
#define VELTRANEDIALOG_WIPE_H

#include "PlatformAbstraction/base/Wipe.h"

namespace Veltrane::ODBC {

using Orska::Support::Wipe;
using Orska::Support::WipeAtEnd;
using Orska::Support::WipeBytes;

}  // namespace Veltrane::ODBC

#endif
