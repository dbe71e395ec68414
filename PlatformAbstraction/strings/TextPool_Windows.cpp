#include <cxxabi.h>

#include "PlatformAbstraction/strings/TextPool.h"
#include "tools/WindowsApi.h"

namespace Orska::Support {

namespace {

void CallAtThreadEnd(void (*in_function)(void*)) noexcept {
    abi::__cxa_thread_atexit(in_function, nullptr, nullptr);
}

/// This compiler's run-time keeps a thread's variables and its list of calls at the thread's end in
/// two slots, and clears them in the order in which the process first used them. The list has to be
/// first: otherwise the pool is gone before ClosePool runs, and its texts leak.
struct ListFirst {
    ListFirst() noexcept {
        // A harmless function of the system. The list keeps the library of a function loaded
        // until the thread ends. It must not be the last to free our library, which has the code
        // of the list.
        CallAtThreadEnd(reinterpret_cast<void (*)(void*)>(reinterpret_cast<void*>(&SetLastError)));
    }
};

[[gnu::init_priority(101)]] const ListFirst s_listFirst;

}  // namespace

void ClosePoolAtThreadEnd() noexcept {
    CallAtThreadEnd([](void*) { ClosePool(); });
}

}  // namespace Orska::Support
