#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>

#include "tests/Setup/RefusedRequests.h"
#include "tests/support/IniScratch.h"

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
// ICU and our text buffers call malloc. Only their calls and ours are refused: the driver manager's
// library does not check its own.
namespace {

bool IsFromUs(const void* in_caller) {
    Dl_info info{};
    if (!s_memory.m_isCounting || dladdr(in_caller, &info) == 0) return false;
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

TEST_F(RefusedRequests, RunOut) {
    RunWithout(0, 0);
    const std::ptrdiff_t openFiles = IniScratch::CountOpenFiles();
    RunOut();
    EXPECT_EQ(IniScratch::CountOpenFiles(), openFiles);
}

/// The first request of a process makes everything that is made once.
TEST_F(RefusedRequests, RunOutInTheFirstRequest) {
    enum Outcome { GRANTED, RIGHT, WRONG };
    std::size_t number = 0;
    for (int outcome = RIGHT; outcome != GRANTED; ++number) {
        const pid_t child = fork();
        if (child == 0) {
            const int result = RunWithout(number, 1);
            const bool isRight = m_stage.Posted().size() == (result == 0 ? 1u : 0u);
            _exit(s_memory.m_count <= number ? GRANTED : isRight ? RIGHT : WRONG);
        }
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFEXITED(status)) << "allocation " << number;
        outcome = WEXITSTATUS(status);
        ASSERT_NE(outcome, WRONG) << "allocation " << number;
    }
    EXPECT_GT(number, 30u);
}

}  // namespace
}  // namespace Veltrane::Test
