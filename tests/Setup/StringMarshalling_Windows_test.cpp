#include <gtest/gtest.h>

#include <stdexcept>

#include "Setup/StringMarshalling.h"
#include "tools/WindowsApi.h"

namespace Veltrane::ODBC {
namespace {

TEST(ThreadCodePage, LacksCharactersButRefusesNone) {
    const struct {
        const char* m_point;
        LANGID m_language;
    } cases[] = {
        {"English, cp1252", 0x0409},
        {"Japanese, cp932", 0x0411},
        {"Hindi, UTF-8 alone, which refuses the flag", 0x0439},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_point);
        ASSERT_TRUE(::SetThreadLocale(MAKELCID(c.m_language, SORT_DEFAULT)));
        for (const char16_t* text : {u"", u"a", u"ü€日本\U0001F600", u"\xD800"}) {
            EXPECT_NO_THROW(CheckThreadCodePage(text));
        }
    }
}

}  // namespace
}  // namespace Veltrane::ODBC
