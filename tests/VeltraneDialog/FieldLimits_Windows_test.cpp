#include <gtest/gtest.h>

#include <string>

#include "VeltraneDialog/FieldRules.h"

namespace Veltrane::ODBC {
namespace {

TEST(FieldLimits, AreCountedInUtf16) {
    const struct {
        std::size_t m_field;
        std::size_t m_most;
        std::string m_reason;
    } cases[] = {{0, 32, "Too long: a name has at most 32 characters."},
                 {1, 259, "Too long: a value has at most 259 characters."}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_reason);
        std::string text;
        for (std::size_t i = 0; i < c.m_most; ++i) text += "日";
        EXPECT_EQ(WhyRefused(DIALOG_FIELDS[c.m_field], text), nullptr);
        const char* const reason = WhyRefused(DIALOG_FIELDS[c.m_field], text + "x");
        ASSERT_NE(reason, nullptr);
        EXPECT_EQ(reason, c.m_reason);
    }
}

}  // namespace
}  // namespace Veltrane::ODBC
