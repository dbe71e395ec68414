// Linked into every program and library that is measured (scripts/coverage), so that a process that
// ends with _exit or aborts writes its counts too.
#include <sys/resource.h>

extern "C" {

void __gcov_dump();
[[noreturn]] void __real__exit(int in_status);
[[noreturn]] void __real_abort();

/// Works even if a test has limited the size of files.
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
