#include "Exceptions/SQLState.h"

#include <gtest/gtest.h>

#include <string>

namespace Orska::Support {
namespace {

TEST(SQLStateTest, HasTheCodeOfADiagState) {
    // Both ends of each class of codes.
    const struct {
        int m_index;
        DiagState m_state;
        const char* m_text;
    } cases[] = {
        {0, DIAG_01000, "01000"},   {14, DIAG_01S09, "01S09"},  {15, DIAG_07001, "07001"},
        {20, DIAG_07S01, "07S01"},  {21, DIAG_08001, "08001"},  {26, DIAG_08S01, "08S01"},
        {27, DIAG_21000, "21000"},  {29, DIAG_21S02, "21S02"},  {30, DIAG_22001, "22001"},
        {40, DIAG_22026, "22026"},  {41, DIAG_23000, "23000"},  {47, DIAG_28000, "28000"},
        {51, DIAG_3F000, "3F000"},  {52, DIAG_40001, "40001"},  {54, DIAG_40003, "40003"},
        {55, DIAG_42000, "42000"},  {62, DIAG_44000, "44000"},  {63, DIAG_GENERAL_ERROR, "HY000"},
        {82, DIAG_HY024, "HY024"},  {83, DIAG_HY090, "HY090"},  {100, DIAG_HY111, "HY111"},
        {103, DIAG_HYT01, "HYT01"}, {104, DIAG_IM007, "IM007"}, {106, DIAG_IM009, "IM009"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(row.m_state, row.m_index);
        EXPECT_STREQ(SQLState(row.m_state).GetText(), row.m_text);
        EXPECT_TRUE(SQLState(row.m_state).IsSet());
    }
    EXPECT_EQ(DIAG_STATE_COUNT, 107);
    EXPECT_STREQ(SQLState(static_cast<DiagState>(107)).GetText(), "HY000");
    EXPECT_STREQ(SQLState(static_cast<DiagState>(-1)).GetText(), "HY000");
}

TEST(SQLStateTest, IsMadeOfTrimmedText) {
    const struct {
        const char* m_text;
        const char* m_result;
    } cases[] = {
        {"42S02", "42S02"},
        {"HY", "HY000"},
        {"ABCDEFG", "ABCDE"},
        {" HY1 ", "HY100"},
        {"\t\n\r\v\f HYT00\f", "HYT00"},
        {"H Y", "H Y00"},
        {"", "00000"},
        {" \t ", "00000"},
        {"       ABCDEFG", "ABCDE"},
        {"X", "X0000"},
    };
    for (const auto& row : cases) {
        EXPECT_STREQ(SQLState(row.m_text).GetText(), row.m_result) << row.m_text;
        EXPECT_TRUE(SQLState(row.m_text).IsSet());
    }
}

}  // namespace
}  // namespace Orska::Support
