// Linked into every program and library that is measured (scripts/coverage): a process that ends
// with _exit, or aborts, leaves its counts as well.
#include <sys/resource.h>

extern "C" {

void __gcov_dump();
[[noreturn]] void __real__exit(int in_status);
[[noreturn]] void __real_abort();

/// Also where a test has limited the size of files.
static void Dump() {
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_FSIZE, &limit);
    __gcov_dump();
}

[[noreturn]] void __wrap__exit(int in_status) {
    Dump();
    __real__exit(in_status);
}

[[noreturn]] void __wrap_abort() {
    Dump();
    __real_abort();
}
}
