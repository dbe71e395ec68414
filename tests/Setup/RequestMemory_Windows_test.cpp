// Memory runs out at each allocation of a whole request: nothing crashes, nothing leaks, and the
// answer is 0 with one error while there is memory for one.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/support/InstallerStage.h"
#include "tests/support/RefusedMemory.h"
#include "tests/support/TemporaryDirectory.h"
#include "tools/WindowsApi.h"
// Must follow <windows.h>.
#include <odbcinst.h>

namespace {

/// The installer has its own.
void* PlainMalloc(std::size_t in_size) { return std::malloc(in_size); }

}  // namespace

namespace Veltrane::Test {
namespace {

constexpr std::size_t ALL = std::numeric_limits<std::size_t>::max();

class RequestMemory : public testing::Test {
protected:
    RequestMemory() {
        const std::string values =
            m_directory.Write("values.ini", "[DSN]\nDSN=x\nServer=new\nUID=u\nPWD=p\nDatabase=d\n");
        ::SetEnvironmentVariableA("VELTRANE_DSN_INITIAL_VALUES", values.c_str());
    }

    int RunWithout(WORD in_request, bool in_isWide, std::size_t in_first, std::size_t in_refusals) {
        m_stage.Begin(false, BEFORE);
        s_memory.Start(in_first, in_refusals);
        const int result = in_isWide ? ::ConfigDSNW(nullptr, in_request, L"drv", L"DSN=x\0")
                                     : ::ConfigDSN(nullptr, in_request, "drv", "DSN=x\0");
        s_memory.m_isCounting = false;
        return result;
    }

    void Sweep(WORD in_request, bool in_isWide, std::size_t in_refusals) {
        ASSERT_NE(RunWithout(in_request, in_isWide, 0, 0), 0);
        const std::size_t count = s_memory.m_count;
        ASSERT_GT(count, 10u);
        for (std::size_t number = 0; number < count; ++number) {
            SCOPED_TRACE("allocation " + std::to_string(number) + " of " + std::to_string(count));
            const int result = RunWithout(in_request, in_isWide, number, in_refusals);
            const std::size_t errors = m_stage.Posted().size();
            if (in_refusals == 1) {
                EXPECT_EQ(errors, result == 0 ? 1u : 0u);
            } else {
                EXPECT_LE(errors, result == 0 ? 1u : 0u);
            }
            EXPECT_EQ(m_stage.Get().at("y"), BEFORE.at("y"));
            if (HasFailure()) return;
        }
    }

    const Profile BEFORE = {{"x", {{"Driver", "drv"}, {"Server", "old"}, {"Database", "d"}}},
                            {"y", {{"Driver", "drv"}, {"k", "v"}}}};
    Orska::Test::TemporaryDirectory m_directory;
    InstallerStage m_stage;
};

TEST_F(RequestMemory, RunsOut) {
    const struct {
        WORD m_request;
        bool m_isWide;
    } requests[] = {{ODBC_ADD_DSN, true}, {ODBC_CONFIG_DSN, false}, {ODBC_REMOVE_DSN, true}};
    for (const auto& [request, isWide] : requests) {
        SCOPED_TRACE("request " + std::to_string(request));
        // What is made once is made by the first requests, in the test as well.
        for (const std::size_t refusals : {std::size_t{0}, std::size_t{1}, ALL}) {
            RunWithout(request, isWide, 0, refusals);
            m_stage.Posted();
        }
        const long live = s_memory.m_live;
        for (const std::size_t refusals : {std::size_t{1}, ALL}) {
            Sweep(request, isWide, refusals);
            if (HasFailure()) return;
        }
        EXPECT_EQ(s_memory.m_live, live) << "leaks";
    }
}

}  // namespace
}  // namespace Veltrane::Test
