#include "PlatformAbstraction/SqlTypeNames.h"

namespace Orska::Support::SqlTypeNames {

#define ORSKA_TYPE_NAME(in_name) const orska_wstring NAME_##in_name(u"" #in_name);
#define ORSKA_SHORT_TYPE_NAME(in_name) ORSKA_TYPE_NAME(in_name)
#define ORSKA_SPECIAL_VALUE(in_name, in_text) const orska_wstring VALUE_##in_name(u"" in_text);
#include "PlatformAbstraction/SqlTypeNames.inc"

}  // namespace Orska::Support::SqlTypeNames
