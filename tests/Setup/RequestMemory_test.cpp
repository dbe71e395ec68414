// Memory runs out at each allocation of a whole request: nothing crashes, nothing leaks, and the
// answer is 0 with one error while there is memory for one.
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <limits>

#include "tests/support/RefusedMemory.h"
#include "tests/support/RequestOnFiles.h"

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define IS_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define IS_SANITIZED
#endif
#endif

#ifdef IS_SANITIZED
void* PlainMalloc(std::size_t in_size) { return std::malloc(in_size); }
#else
extern "C" void* __libc_malloc(std::size_t);          // NOLINT: glibc's name
extern "C" void* __libc_realloc(void*, std::size_t);  // NOLINT
void* PlainMalloc(std::size_t in_size) { return __libc_malloc(in_size); }
#endif

}  // namespace

// NOLINTBEGIN: the names and signatures are the language's
#ifndef IS_SANITIZED
// ICU and our text buffers call malloc. Only calls from them and from us are refused: the driver
// manager's library does not check its own.
namespace {

bool IsFromUs(const void* in_caller) {
    Dl_info info{};
    if (!s_memory.m_isCounting || ::dladdr(in_caller, &info) == 0) return false;
    const char* const slash = std::strrchr(info.dli_fname, '/');
    const char* const name = slash == nullptr ? info.dli_fname : slash + 1;
    return std::strncmp(name, "libicu", 6) == 0 || std::strncmp(name, "request_memory", 14) == 0;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void* malloc(std::size_t in_size) {
    if (IsFromUs(__builtin_return_address(0)) && IsRefused()) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_malloc(in_size);
}
extern "C" __attribute__((visibility("default"))) void* realloc(void* in_memory,
                                                                std::size_t in_size) {
    if (IsFromUs(__builtin_return_address(0)) && IsRefused()) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_realloc(in_memory, in_size);
}
#endif
// NOLINTEND

namespace Veltrane::Test {
namespace {

constexpr std::size_t ALL = std::numeric_limits<std::size_t>::max();

int RunWithout(const RequestOnFiles& in_request, std::size_t in_first, std::size_t in_refusals) {
    s_memory.Start(in_first, in_refusals);
    const int result = in_request.Run();
    s_memory.m_isCounting = false;
    return result;
}

/// How many allocations the request makes when all are granted.
std::size_t CountAllocations(const RequestOnFiles& in_request) {
    in_request.Prepare();
    RunWithout(in_request, 0, 0);
    return s_memory.m_count;
}

void Sweep(const RequestOnFiles& in_request, std::size_t in_refusals) {
    const std::size_t count = CountAllocations(in_request);
    ASSERT_GT(count, 20u);
    for (std::size_t number = 0; number < count; ++number) {
        in_request.Prepare();
        const int result = RunWithout(in_request, number, in_refusals);
        SCOPED_TRACE(in_request.Describe() + ", allocation " + std::to_string(number) + " of " +
                     std::to_string(count));
        const std::size_t errors = RequestOnFiles::CountErrors();
        if (in_refusals == 1) {
            EXPECT_EQ(errors, result == 0 ? 1u : 0u);
        } else {
            EXPECT_LE(errors, result == 0 ? 1u : 0u);
        }
        EXPECT_EQ(in_request.CountLeftFiles(), 0u);
        EXPECT_TRUE(in_request.Read().starts_with("# kept\n[Other]\nk = v\n"));
        EXPECT_TRUE(in_request.Read().ends_with("[z]\nlast=1"));
        if (testing::Test::HasFailure()) return;
    }
}

TEST(RequestMemory, RunsOut) {
    RequestOnFiles request;
    for (const FileRequest& kind : RequestOnFiles::All()) {
        if (!kind.m_hasFile) continue;
        request.Use(kind);
        // What is made once is made by the first requests, in the test as well.
        Sweep(request, 1);
        CountAllocations(request);
        const long live = s_memory.m_live;
        const long openFiles = RequestOnFiles::CountOpenFiles();
        for (const std::size_t refusals : {std::size_t{1}, ALL}) {
            Sweep(request, refusals);
            if (HasFailure()) return;
        }
        CountAllocations(request);
        EXPECT_EQ(RequestOnFiles::CountOpenFiles(), openFiles) << request.Describe();
        EXPECT_EQ(s_memory.m_live, live) << request.Describe() << ": leaks";
    }
}

/// In the first request of a process everything is made that is made once.
TEST(RequestMemory, RunsOutInTheFirstRequest) {
    enum Outcome { GRANTED, RIGHT, WRONG };
    RequestOnFiles request;
    request.Use({ODBC_ADD_DSN, true, false, true});
    std::size_t number = 0;
    for (int outcome = RIGHT; outcome != GRANTED; ++number) {
        const pid_t child = ::fork();
        if (child == 0) {
            request.Prepare();
            const int result = RunWithout(request, number, 1);
            const bool isRight = RequestOnFiles::CountErrors() == (result == 0 ? 1u : 0u);
            ::_exit(s_memory.m_count <= number ? GRANTED : isRight ? RIGHT : WRONG);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        ASSERT_TRUE(WIFEXITED(status)) << "allocation " << number;
        outcome = WEXITSTATUS(status);
        ASSERT_NE(outcome, WRONG) << "allocation " << number;
    }
    EXPECT_GT(number, 30u);
}

}  // namespace
}  // namespace Veltrane::Test
