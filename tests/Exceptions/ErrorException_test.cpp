#include "Exceptions/ErrorException.h"

#include <gtest/gtest.h>

#include <string>

namespace Orska::Support {
namespace {

TEST(ErrorExceptionTest, DescribesAKeyOnOneLine) {
    const ErrorException plain(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L"InvalidNullParam");
    EXPECT_EQ(plain.GetUnformattedDescription().GetAsUtf8(),
              "Unformatted ErrorException: {MessageKey=\"InvalidNullParam\" ComponentID=3' "
              "RowNumber=UNKNOWN ColumnNumber=UNKNOWN DiagState=63}");
    const ErrorException full(SQLState("42S02"), 7, L"a\"b", {L"x", L"\""}, 0, 12);
    EXPECT_EQ(full.GetUnformattedDescription().GetAsUtf8(),
              "Unformatted ErrorException: {MessageKey=\"a\\\"b\" ComponentID=7' RowNumber=0 "
              "ColumnNumber=12 CustomState=\"42S02\" MessageParameters=[\"x\", \"\\\"\"]}");
}

}  // namespace
}  // namespace Orska::Support
