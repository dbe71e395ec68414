/// Memory runs out at each allocation of a whole request: nothing crashes or leaks, and the request
/// returns 0 with one error if there is memory for one.
#ifndef TESTS_SETUP_REFUSEDREQUESTS_H
#define TESTS_SETUP_REFUSEDREQUESTS_H

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/support/InstallerStage.h"
#include "tests/support/RefusedMemory.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestSystem.h"

extern "C" int ConfigDSN(void*, unsigned short, const char*, const char*);
extern "C" int ConfigDSNW(void*, unsigned short, const char16_t*, const char16_t*);

namespace Veltrane::Test {

class RefusedRequests : public testing::Test {
protected:
    RefusedRequests() {
        const std::string values =
            m_directory.Write("values.ini", "[DSN]\nDSN=x\nServer=new\nUID=u\nPWD=p\nDatabase=d\n");
        Orska::Test::SetVariable("VELTRANE_DSN_INITIAL_VALUES", values.c_str());
    }

    /// Refuses allocations of a request, from the first on.
    int RunWithout(std::size_t in_first, std::size_t in_refusals) {
        m_stage.Begin(m_request > 3, BEFORE);
        s_memory.Start(in_first, in_refusals);
        const int result = m_isWide ? ConfigDSNW(nullptr, m_request, u"drv", u"DSN=x\0")
                                    : ConfigDSN(nullptr, m_request, "drv", "DSN=x\0");
        s_memory.m_isCounting = false;
        return result;
    }

    /// Checks every kind of request, for the user and for the system.
    void RunOut() {
        for (unsigned bits = 0; bits < 12; ++bits) {
            m_request = static_cast<unsigned short>(1 + bits / 2);
            m_isWide = bits % 2 != 0;
            SCOPED_TRACE(testing::Message() << m_request << (m_isWide ? ", wide" : ", narrow"));
            // The first requests make everything that is made once, also in the test.
            RefuseEach();
            const long live = s_memory.m_live;
            RefuseEach();
            EXPECT_EQ(s_memory.m_live, live) << "leaks";
            if (HasFailure()) return;
        }
    }

    const Profile BEFORE = {{"x", {{"Driver", "drv"}, {"Server", "old"}, {"Database", "d"}}},
                            {"y", {{"Driver", "drv"}, {"k", "v"}}}};
    unsigned short m_request = 1;
    bool m_isWide = true;
    Orska::Test::TemporaryDirectory m_directory;
    InstallerStage m_stage;

private:
    /// Refuses each allocation of a request, alone and with all after it.
    void RefuseEach() {
        RunWithout(0, 0);
        const std::size_t count = s_memory.m_count;
        ASSERT_GT(count, 10u);
        for (const std::size_t refusals :
             {std::size_t{1}, std::numeric_limits<std::size_t>::max()}) {
            for (std::size_t number = 0; number < count && !HasFailure(); ++number) {
                const int result = RunWithout(number, refusals);
                SCOPED_TRACE(testing::Message() << "allocation " << number << " of " << count);
                const std::size_t errors = m_stage.Posted().size();
                EXPECT_LE(errors, result == 0 ? 1u : 0u);
                if (refusals == 1) {
                    EXPECT_EQ(errors, result == 0 ? 1u : 0u);
                }
                EXPECT_EQ(m_stage.Get().at("y"), BEFORE.at("y"));
            }
        }
        RunWithout(0, 0);
    }
};

}  // namespace Veltrane::Test

#endif
