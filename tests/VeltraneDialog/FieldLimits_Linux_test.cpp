#include <gtest/gtest.h>

#include <string>

#include "VeltraneDialog/FieldRules.h"

namespace Veltrane::ODBC {
namespace {

std::string Reason(const DialogField& in_field, const std::string& in_text) {
    const char* const reason = WhyRefused(in_field, in_text);
    return reason != nullptr ? reason : "";
}

TEST(FieldLimits, NamesHaveAtMost32Bytes) {
    const std::string tooLong = "Too long: a name has at most 32 bytes; some letters take several.";
    const DialogField& name = DIALOG_FIELDS.front();
    EXPECT_EQ(Reason(name, std::string(32, 'a')), "");
    EXPECT_EQ(Reason(name, std::string(33, 'a')), tooLong);
    EXPECT_EQ(Reason(name, "üüüüüüüüüüüüüüüüx"), tooLong) << "17 letters";
}

TEST(FieldLimits, ValuesFillAtMostOneLine) {
    const std::string tooLong = "Too long: a line of odbc.ini has at most 999 bytes.";
    for (const DialogField& field : DIALOG_FIELDS) {
        if (field.m_key == "DSN") {
            continue;
        }
        SCOPED_TRACE(field.m_key);
        const std::size_t room = 999 - field.m_key.size() - 1;
        EXPECT_EQ(Reason(field, std::string(room, 'x')), "");
        EXPECT_EQ(Reason(field, std::string(room + 1, 'x')), tooLong);
    }
}

}  // namespace
}  // namespace Veltrane::ODBC
