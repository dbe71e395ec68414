#include "Setup/StringMarshalling.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "tools/WindowsApi.h"

namespace {

using Conversion = decltype(&WideCharToMultiByte);

/// Errors with which the next conversions fail.
std::vector<DWORD> s_failures;

int WINAPI ConvertOrFail(UINT in_codePage, DWORD in_flags, LPCWCH in_text, int in_length,
                         LPSTR out_bytes, int in_size, LPCCH in_default, LPBOOL out_isUsed) {
    static const auto s_real = reinterpret_cast<Conversion>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "WideCharToMultiByte")));
    if (s_failures.empty()) {
        return s_real(in_codePage, in_flags, in_text, in_length, out_bytes, in_size, in_default,
                      out_isUsed);
    }
    SetLastError(s_failures.front());
    s_failures.erase(s_failures.begin());
    return 0;
}

}  // namespace

/// The pointer through which this program calls the system's function. A real conversion fails only
/// if a code page is not installed, which a test cannot arrange.
extern "C" {
Conversion __imp_WideCharToMultiByte = &ConvertOrFail;
}

namespace Veltrane::ODBC {
namespace {

TEST(ThreadCodePage, ReplacesCharactersThatItLacks) {
    const struct {
        const char* m_point;
        LANGID m_language;
    } cases[] = {
        {"English, cp1252", 0x0409},
        {"Japanese, cp932", 0x0411},
        {"Hindi, only UTF-8, which refuses the flag", 0x0439},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_point);
        ASSERT_TRUE(SetThreadLocale(MAKELCID(c.m_language, SORT_DEFAULT)));
        for (const char16_t* text : {u"", u"a", u"ü€日本\U0001F600", u"\xD800"}) {
            EXPECT_NO_THROW(CheckThreadCodePage(text));
        }
    }
}

TEST(ThreadCodePage, RefusesATextWhoseConversionFails) {
    const struct {
        const char* m_point;
        std::vector<DWORD> m_failures;
        const char16_t* m_text;
        bool m_isRefused;
    } cases[] = {
        {"the code page is missing", {ERROR_INVALID_PARAMETER}, u"a", true},
        {"no such character", {ERROR_NO_UNICODE_TRANSLATION}, u"日本", true},
        {"fails without flag too", {ERROR_INVALID_FLAGS, ERROR_INVALID_PARAMETER}, u"a", true},
        {"fails only with the flag", {ERROR_INVALID_FLAGS}, u"a", false},
        {"an empty text is not converted", {ERROR_INVALID_PARAMETER}, u"", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_point);
        s_failures = c.m_failures;
        std::string message;
        try {
            EXPECT_EQ(FromEditorString(DialogString(c.m_text)).GetView(), c.m_text);
        } catch (const std::range_error& error) {
            message = error.what();
        }
        EXPECT_EQ(message, c.m_isRefused ? "Conversion from WideChar to MultiByte failed.  Please "
                                           "check the content of the string and/or locale settings."
                                         : "");
        s_failures.clear();
    }
}

}  // namespace
}  // namespace Veltrane::ODBC
