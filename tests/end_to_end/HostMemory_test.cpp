// No request leaves a copy of the password in its host's memory. The test calls the entry points of
// the built library directly, because an installer keeps its own copies.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "PlatformAbstraction/base/Wipe.h"
#include "tests/support/IniScratch.h"
#include "tests/support/NewProcess.h"
#include "tests/support/PasswordCopies.h"

namespace Veltrane::Test {
namespace {

using namespace std::string_literals;
using ODBC::CopiesOfThePassword;

std::string Password(std::size_t in_length) {
    const std::u16string text = ODBC::MakePassword(in_length);
    return {text.begin(), text.end()};
}

void WriteFiles(const IniScratch& in_scratch, std::size_t in_length) {
    std::string others;
    for (int i = 0; i < 100; ++i) {
        others.append("[other").append(std::to_string(i)).append("]\nServer=s\nPWD=p\n\n");
    }
    const std::string values =
        "DSN=sales\nServer=s\nDatabase=d\nUID=u\nPWD=" + Password(in_length) + "\n";
    IniScratch::Write(in_scratch.UserFile(), others + "[sales]\nDriver=Old\n" + values + others);
    IniScratch::Write(in_scratch.Folder() / "values.ini", "[DSN]\n" + values);
}

/// Makes the attributes of a request without a copy.
std::string MakeList(std::size_t in_length) {
    std::string list("DSN=sales\0PWD=", 14);
    list.reserve(1000);
    std::u16string password = ODBC::MakePassword(in_length);
    for (const char16_t unit : password) list += static_cast<char>(unit);
    list += '\0';
    Orska::Support::Wipe(password);
    return list;
}

TEST(HostMemory, HasNoPasswordAfterARequest) {
    const IniScratch scratch;
    setenv("ODBCSEARCH", "ODBC_USER_DSN", 1);  // else a new unixODBC shows it only by a read
    setenv("VELTRANE_DSN_INITIAL_VALUES", (scratch.Folder() / "values.ini").c_str(), 1);
    setenv("VELTRANE_DSN_EDITOR", FAKE_EDITOR_PROGRAM, 1);
    void* const library = dlopen(SETUP_LIBRARY, RTLD_NOW);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto configure =
        reinterpret_cast<int (*)(void*, unsigned short, const char*, const char*)>(
            dlsym(library, "ConfigDSN"));
    const struct {
        const char* m_point;
        unsigned short m_request;
        const char* m_editor;  ///< null: no window
    } cases[] = {
        {"add", 1, nullptr},       {"add with a window", 1, "ok"}, {"configure", 2, nullptr},
        {"accepted", 2, "ok"},     {"cancelled", 2, "cancel"},     {"no editor", 2, "unavailable"},
        {"garbage", 2, "garbage"}, {"crash", 2, "crash"},          {"remove", 3, nullptr}};
    for (const std::size_t length : {std::size_t{30}, std::size_t{250}}) {
        for (const auto& c : cases) {
            SCOPED_TRACE(c.m_point + ", "s + std::to_string(length));
            ASSERT_EQ(InNewProcess([&] {
                          WriteFiles(scratch, length);
                          return "";
                      }),
                      "");
            std::string list = MakeList(length);
            if (c.m_editor != nullptr) setenv("FAKE_EDITOR", c.m_editor, 1);
            int window = 0;
            const int result = configure(c.m_editor == nullptr ? nullptr : &window, c.m_request,
                                         "Veltrane", list.c_str());
            const std::string editor = c.m_editor == nullptr ? "ok" : c.m_editor;
            EXPECT_EQ(result, editor == "ok" || editor == "cancel" ? 1 : 0);
            Orska::Support::Wipe(list);
            EXPECT_EQ(CopiesOfThePassword(), 0u);
            EXPECT_EQ(InNewProcess([&] {
                          const std::string text = IniScratch::Read(scratch.UserFile());
                          return text.find(Password(length)) == text.npos ? "none" : "stored";
                      }),
                      c.m_request == 3 ? "none" : "stored");
        }
    }
    const std::string list = MakeList(30);
    EXPECT_EQ(CopiesOfThePassword(), 1u) << "the search finds what is there";
}

}  // namespace
}  // namespace Veltrane::Test
