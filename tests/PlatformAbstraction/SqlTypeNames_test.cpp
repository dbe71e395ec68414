// The ODBC headers come first: the names below are their macros. Those of Windows want its
// own first.
#ifdef _WIN32
#include <windows.h>
#endif
#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>
// And this, for INFINITY and NAN.
#include <cmath>

#include "PlatformAbstraction/SqlTypeNames.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Orska::Support;
using namespace Orska::Support::SqlTypeNames;

struct Row {
    const char* m_name;
    const orska_wstring& m_constant;
    int m_headerCode;
};

// Each list takes the code from the headers, by the name's macro, and not from the library's table.
#define ORSKA_SPECIAL_VALUE(in_name, in_text)

#define ORSKA_SQL_TYPE(in_name, in_code) {#in_name, NAME_##in_name, in_name},
#define ORSKA_SQL_SHORT_NAME(in_name, in_code) {#in_name, NAME_##in_name, SQL_##in_name},
#define ORSKA_C_TYPE(in_name, in_code)
const std::vector<Row> SQL_ROWS = {
#include "PlatformAbstraction/SqlTypeNames.inc"
};
#undef ORSKA_SQL_TYPE
#undef ORSKA_SQL_SHORT_NAME
#undef ORSKA_C_TYPE

#define ORSKA_SQL_TYPE(in_name, in_code)
#define ORSKA_SQL_SHORT_NAME(in_name, in_code)
#define ORSKA_C_TYPE(in_name, in_code) {#in_name, NAME_##in_name, in_name},
const std::vector<Row> C_ROWS = {
#include "PlatformAbstraction/SqlTypeNames.inc"
};

TEST(SqlTypeNames, NamesLeadToTheCodesOfTheHeaders) {
    for (const Row& row : SQL_ROWS) {
        SCOPED_TRACE(row.m_name);
        EXPECT_EQ(row.m_constant.GetAsUtf8(), row.m_name);
        EXPECT_EQ(GetSqlTypeCode(row.m_constant), row.m_headerCode);
    }
    for (const Row& row : C_ROWS) {
        SCOPED_TRACE(row.m_name);
        EXPECT_EQ(row.m_constant.GetAsUtf8(), row.m_name);
        EXPECT_EQ(GetCTypeCode(row.m_constant), row.m_headerCode);
    }
}

TEST(SqlTypeNames, CodesLeadToTheNamesOfOdbc3) {
    const struct {
        const orska_wstring& (*m_lookup)(std::int16_t) noexcept;
        int m_code;
        const char* m_name;
    } rows[] = {
        {GetSqlTypeName, SQL_BIGINT, "SQL_BIGINT"},
        {GetSqlTypeName, SQL_ALL_TYPES, "SQL_UNKNOWN_TYPE"},
        {GetSqlTypeName, SQL_DATE, "SQL_DATETIME"},
        {GetSqlTypeName, SQL_TIME, "SQL_INTERVAL"},
        {GetSqlTypeName, SQL_TIMESTAMP, "SQL_TIMESTAMP"},
        {GetSqlTypeName, SQL_TYPE_TIMESTAMP, "SQL_TYPE_TIMESTAMP"},
        {GetSqlTypeName, SQL_UNICODE, "SQL_WCHAR"},
        {GetSqlTypeName, SQL_INTERVAL_DAY, "SQL_INTERVAL_DAY"},
        {GetSqlTypeName, SQL_INTERVAL_MINUTE_TO_SECOND, "SQL_INTERVAL_MINUTE_TO_SECOND"},
        {GetCTypeName, SQL_C_CHAR, "SQL_C_CHAR"},
        {GetCTypeName, SQL_C_BOOKMARK, "SQL_C_UBIGINT"},
        {GetCTypeName, SQL_C_VARBOOKMARK, "SQL_C_BINARY"},
        {GetCTypeName, SQL_C_UTINYINT, "SQL_C_UTINYINT"},
        {GetCTypeName, SQL_C_DEFAULT, "SQL_C_DEFAULT"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.m_name);
        EXPECT_EQ(row.m_lookup(static_cast<std::int16_t>(row.m_code)).GetAsUtf8(), row.m_name);
    }
}

TEST(SqlTypeNames, WhatIsUnknownIsNullOrNothing) {
    EXPECT_TRUE(GetSqlTypeName(SQL_C_UBIGINT).IsNull());  // a code of C types only
    EXPECT_TRUE(GetSqlTypeName(INT16_MIN).IsNull());
    EXPECT_TRUE(GetCTypeName(SQL_VARCHAR).IsNull());
    EXPECT_EQ(GetSqlTypeCode(orska_wstring(u"sql_bigint")), std::nullopt);
    EXPECT_EQ(GetSqlTypeCode(orska_wstring(u"SQL_C_CHAR")), std::nullopt);
    EXPECT_EQ(GetCTypeCode(orska_wstring(u"SQL_CHAR")), std::nullopt);
    EXPECT_EQ(GetCTypeCode(orska_wstring(u"")), std::nullopt);
    EXPECT_EQ(GetCTypeCode(orska_wstring()), std::nullopt);
}

TEST(SqlTypeNames, SpecialValues) {
    EXPECT_EQ(VALUE_INFINITY.GetAsUtf8(), "INFINITY");
    EXPECT_EQ(VALUE_NEGATIVE_INFINITY.GetAsUtf8(), "-INFINITY");
    EXPECT_EQ(VALUE_NAN.GetAsUtf8(), "NaN");
}

}  // namespace
