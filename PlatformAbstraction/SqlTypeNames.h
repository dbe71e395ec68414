/// The names of ODBC data types and of special values, as strings that are built once, at
/// library load.
///
/// For each name there is a constant `NAME_` + name, such as `NAME_SQL_BIGINT`, `NAME_SQL_C_ULONG`
/// or `NAME_INTERVAL_DAY`. The prefix keeps them apart from the macros of the ODBC headers, which
/// this header does not need. `VALUE_INFINITY`, `VALUE_NEGATIVE_INFINITY` and `VALUE_NAN` hold
/// "INFINITY", "-INFINITY" and "NaN".
///
/// Any thread may read the constants once the library is loaded.
#ifndef PLATFORMABSTRACTION_SQLTYPENAMES_H
#define PLATFORMABSTRACTION_SQLTYPENAMES_H

#include "strings/orska_wstring.h"

namespace Orska::Support::SqlTypeNames {

#define ORSKA_TYPE_NAME(in_name) extern const orska_wstring NAME_##in_name;
#define ORSKA_SHORT_TYPE_NAME(in_name) ORSKA_TYPE_NAME(in_name)
#define ORSKA_SPECIAL_VALUE(in_name, in_text) extern const orska_wstring VALUE_##in_name;
#include "SqlTypeNames.inc"
#undef ORSKA_TYPE_NAME
#undef ORSKA_SHORT_TYPE_NAME
#undef ORSKA_SPECIAL_VALUE

}  // namespace Orska::Support::SqlTypeNames

#endif
