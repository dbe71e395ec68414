// The ODBC headers come first: the names below are their macros. On Windows they need <windows.h>
// before them.
#ifdef _WIN32
#include <windows.h>
#endif
#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>
// This one defines INFINITY and NAN.
#include <cmath>

#include "PlatformAbstraction/SqlTypeNames.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Orska::Support;
using namespace Orska::Support::SqlTypeNames;

struct Row {
    const orska_wstring& m_constant;
    const char* m_name;
    int m_code;  ///< by the name's macro in the headers, which a misspelt name does not have
};

#define ORSKA_TYPE_NAME(in_name) {NAME_##in_name, #in_name, in_name},
#define ORSKA_SHORT_TYPE_NAME(in_name) {NAME_##in_name, #in_name, SQL_##in_name},
#define ORSKA_SPECIAL_VALUE(in_name, in_text)
const std::vector<Row> ROWS = {
#include "PlatformAbstraction/SqlTypeNames.inc"
};

TEST(SqlTypeNames, AreThoseOfTheHeaders) {
    for (const Row& row : ROWS) EXPECT_EQ(row.m_constant.GetAsUtf8(), row.m_name) << row.m_code;
}

TEST(SqlTypeNames, SpecialValues) {
    EXPECT_EQ(VALUE_INFINITY.GetAsUtf8(), "INFINITY");
    EXPECT_EQ(VALUE_NEGATIVE_INFINITY.GetAsUtf8(), "-INFINITY");
    EXPECT_EQ(VALUE_NAN.GetAsUtf8(), "NaN");
}

}  // namespace
