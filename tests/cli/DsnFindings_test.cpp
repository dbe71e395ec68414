#include "cli/examine/DsnFindings.h"

#include <gtest/gtest.h>

#include "cli/system/PlatformWords.h"
#include "tests/support/IniScratch.h"

namespace Veltrane::Cli {
namespace {

std::string Ids(const std::string& in_file) {
    static const Test::IniScratch s_scratch;
    Test::IniScratch::Write(s_scratch.UserFile(), in_file);
    std::string ids;
    for (const Finding& finding : ExamineDsn(DsnStore(Scope::User).Load(), "a", "Veltrane")) {
        ids += std::string(ids.empty() ? "" : " ") + finding.m_id;
    }
    return ids;
}

TEST(DsnFindings, ExamineTheLinesOfADsn) {
    const std::string sound = "[a]\nServer=s\nDatabase=d\n";
    const struct {
        const char* m_point;
        std::string m_file;
        const char* m_ids;
    } cases[] = {
        {"sound", sound, ""},
        {"no database", "[a]\nServer=s\n", "value-missing"},
        {"a control character", "[a]\nServer=s\x01\nDatabase=d\n", "value-does-not-survive"},
        {"not UTF-8", sound + "UID=\xFF\n", "value-does-not-survive"},
        {"the longest line", sound + "X=" + std::string(997, 'v') + "\n", ""},
        {"a longer line", sound + "X=" + std::string(998, 'v') + "\n", "value-does-not-survive"},
        {"a long line of another DSN", sound + "[b]\nX=" + std::string(998, 'v') + "\n", ""},
        {"a key near one of ours", sound + "Sever=t\n", "key-unknown"},
        {"another driver, which has no such keys", "[a]\nDriver=Other\nSever=s\n", ""},
        {"a key twice", sound + "server=t\n", "key-twice"},
        {"a value that iODBC cuts", sound + "PWD=a ;b\n",
         PLATFORM_WORDS.m_hasCommentsInValues ? "value-cut-by-iodbc" : ""},
        {"a semicolon that it does not", sound + "PWD=a;b\n", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_point);
        EXPECT_EQ(Ids(c.m_file), c.m_ids);
    }
}

}  // namespace
}  // namespace Veltrane::Cli
