#include "Setup/StringMarshalling.h"

#include <gtest/gtest.h>

#include <climits>
#include <stdexcept>

namespace Veltrane::ODBC {
namespace {

using Orska::Support::orska_wstring;
using namespace std::string_literals;

TEST(StringMarshalling, TextIsUnchangedBothWays) {
    for (const std::u16string& text : {u""s, u"a"s, u"ü€日本\U0001F600"s, u"a\0b"s}) {
        const orska_wstring record = FromEditorString(text);
        EXPECT_FALSE(record.IsNull());
        EXPECT_EQ(record.GetAsUtf16(), text);
        EXPECT_EQ(ToEditorString(record), text);
    }
}

TEST(StringMarshalling, ANullTextStaysNullInTheRecordOnly) {
    EXPECT_TRUE(FromEditorString(DialogString()).IsNull());
    EXPECT_EQ(ToEditorString(orska_wstring()), u"");
}

template <typename Exception, typename Function>
std::string MessageOf(Function in_function) {
    try {
        in_function();
    } catch (const Exception& exception) {
        return exception.what();
    }
    return "nothing thrown";
}

TEST(StringMarshalling, FailuresHaveTheirTexts) {
    EXPECT_NO_THROW(CheckEditorStringLength(INT_MAX));
    EXPECT_EQ(MessageOf<std::length_error>([] { CheckEditorStringLength(1U + INT_MAX); }),
              "Size of string exceeds INT_MAX.");
    EXPECT_EQ(MessageOf<std::invalid_argument>([] { ToInstallerText(nullptr); }),
              "NULLPTR is not supported for this conversion.");
    EXPECT_EQ(ToInstallerText("ü"), orska_wstring(L"ü"));
}

}  // namespace
}  // namespace Veltrane::ODBC
