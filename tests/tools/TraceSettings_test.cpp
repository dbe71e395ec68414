#include "tools/TraceSettings.h"

#include <gtest/gtest.h>

#include "tools/trace.h"

namespace {

using namespace Orska;

TEST(TraceSettings, Parse) {
    const struct {
        const char* m_value;
        std::uint32_t m_word;
        const char* m_fileName;
    } rows[] = {
        {nullptr, 0, nullptr},
        {"", 0, nullptr},
        {"0", 0, nullptr},
        {"0st:file", 0, nullptr},
        {"st:file", 0, nullptr},
        {":file", 0, nullptr},
        {"-1:file", 0, nullptr},
        {"1", 1, nullptr},
        {" 3", 3, nullptr},
        {"3:", 3, ""},
        {"4st:trace.log", 4 | TRACE_TIME_STAMP | TRACE_THREAD_ID, "trace.log"},
        {"1fstnp", 0x1F01, nullptr},
        {"2 p, n", 2 | TRACE_PROCESS_ID | TRACE_NO_SOURCE, nullptr},
        {"2FSTNPxyz", 2, nullptr},
        {"1:a name with blanks.log", 1, "a name with blanks.log"},
        {"1t:C:\\fsnp\\trace.log", 1 | TRACE_THREAD_ID, "C:\\fsnp\\trace.log"},
        {"254", 254, nullptr},
        {"255", 254, nullptr},
        {"256", 254, nullptr},
        {"99999999999999999999:file", 254, "file"},
        {"-99999999999999999999", 0, nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.m_value == nullptr ? "(null)" : row.m_value);
        const TraceSettings settings = ParseTraceSettings(row.m_value);
        EXPECT_EQ(settings.m_word, row.m_word);
        EXPECT_STREQ(settings.m_fileName, row.m_fileName);
    }
}

}  // namespace
