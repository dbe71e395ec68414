#include <cxxabi.h>

#include "PlatformAbstraction/strings/TextPool.h"
#include "tools/WindowsApi.h"

namespace Orska::Support {

namespace {

void CallAtThreadEnd(void (*in_function)(void*)) noexcept {
    abi::__cxa_thread_atexit(in_function, nullptr, nullptr);
}

/// This compiler's run-time keeps a thread's variables and its list of calls at the thread's end in
/// two slots of the thread, and empties them in the order in which the process first used them. The
/// list has to be first: else the pool is gone when it is to be closed, and its texts leak.
struct ListFirst {
    ListFirst() noexcept {
        // A function of the system's that does no harm: the list keeps the library of a function
        // loaded until the thread ends, and must not be what frees ours, which it is a part of.
        CallAtThreadEnd(
            reinterpret_cast<void (*)(void*)>(reinterpret_cast<void*>(&::SetLastError)));
    }
};

[[gnu::init_priority(101)]] const ListFirst s_listFirst;

}  // namespace

void ClosePoolAtThreadEnd() noexcept {
    CallAtThreadEnd([](void*) { ClosePool(); });
}

}  // namespace Orska::Support
