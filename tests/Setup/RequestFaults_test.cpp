// Every system call of a whole request fails. The request returns 0 and posts one error, or works
// without the call. The file is the old or the new one, and no other file is left.
#include <cerrno>

#include "tests/support/RequestOnFiles.h"
#include "tests/support/SystemCalls_Fake.h"

namespace Veltrane::Test {
namespace {

/// Makes the n-th call fail, counted from 0.
void FailAt(std::size_t in_number, int in_error) {
    s_systemCalls = {};
    s_systemCalls.m_before = [=](const std::string&, std::size_t in_call) {
        return in_call == in_number ? in_error : 0;
    };
}

void Check(const RequestOnFiles& in_request, const std::string& in_old, const std::string& in_new,
           int in_result, long in_openFiles, const std::string& in_failed) {
    const std::string now = in_request.Read();
    EXPECT_TRUE(!now.empty() || !std::filesystem::exists(in_request.File()));
    EXPECT_LE(in_request.CountLeftFiles(), in_failed == "unlink" ? 1u : 0u);
    EXPECT_EQ(RequestOnFiles::CountErrors(), in_result == 0 ? 1u : 0u);
    // When the directory cannot be synced it is too late to go back, but the request must not
    // report success.
    EXPECT_TRUE(now == (in_result == 1 ? in_new : in_old) ||
                (in_failed == "fsync" && in_result == 0 && now == in_new))
        << now;
    EXPECT_EQ(RequestOnFiles::CountOpenFiles(), in_openFiles);
    // No lock is held: the same request succeeds.
    s_systemCalls = {};
    in_request.Prepare();
    in_request.Run();
    EXPECT_EQ(in_request.Read(), in_new);
    EXPECT_EQ(in_request.CountLeftFiles(), 0u);
}

TEST(RequestFaults, EachSystemCallFails) {
    std::size_t failed = 0;
    RequestOnFiles request;
    for (const FileRequest& kind : RequestOnFiles::All()) {
        request.Use(kind);
        // Without it, finding the mode takes 6 to 20 ms since unixODBC 2.3.13.
        setenv("ODBCSEARCH", kind.m_isSystem ? "ODBC_SYSTEM_DSN" : "ODBC_USER_DSN", 1);
        request.Prepare();
        const std::string before = request.Read();
        s_systemCalls = {};
        const int plainResult = request.Run();
        EXPECT_EQ(RequestOnFiles::CountErrors(), plainResult == 0 ? 1u : 0u) << request.Describe();
        const std::string after = request.Read();
        const long openFiles = RequestOnFiles::CountOpenFiles();
        const std::size_t calls = s_systemCalls.m_calls.size();
        ASSERT_GT(calls, 3u);
        for (std::size_t call = 0; call < calls; ++call) {
            for (const int error : {EIO, ENOSPC, ESTALE, ENOLCK, EOPNOTSUPP}) {
                // The kind of list makes no difference to system calls.
                if (kind.m_isWide && error != EIO) continue;
                request.Prepare();
                FailAt(call, error);
                const int result = request.Run();
                // The number of calls depends on how often a request waits for others.
                const auto& made = s_systemCalls.m_calls;
                const std::string name = call < made.size() ? made[call] : "not reached";
                SCOPED_TRACE(request.Describe() + ", " + name + " " + std::to_string(call) +
                             ", error " + std::to_string(error));
                failed += result == 0 ? 1 : 0;
                Check(request, before, after, result, openFiles, name);
                if (testing::Test::HasFailure()) return;
            }
        }
    }
    EXPECT_GT(failed, 500u);
}

}  // namespace
}  // namespace Veltrane::Test
