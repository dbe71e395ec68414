#include "Setup/SystemCalls.h"

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <mutex>

#include "tools/HighDescriptor.h"

namespace Veltrane::ODBC::SystemCalls {

namespace {

/// The open private handles, each plus one; 0 is a free place. A request opens at most four. A
/// handle without a place stays open in children.
/// Process-wide: set by PrivateHandle, read and emptied in a forked child.
constinit std::array<std::atomic<int>, 512> s_private{};
/// The number of forks between the process that loaded the library and this one.
/// Process-wide: set in a forked child, read by PrivateHandle.
constinit std::atomic<unsigned> s_forks{0};

/// Process-wide: held by ForkLock, and by a fork while it runs.
constinit std::mutex s_forkMutex;
/// Process-wide: the thread that holds the lock, 0 for none, and how often it has taken it.
/// A recursive mutex would not do: a child cannot unlock it.
constinit std::atomic<pthread_t> s_forkOwner{0};
constinit unsigned s_forkDepth = 0;

void TakeForkLock() {
    if (s_forkOwner != pthread_self()) {
        s_forkMutex.lock();
        s_forkOwner = pthread_self();
    }
    ++s_forkDepth;
}

void ReleaseForkLock() {
    if (--s_forkDepth > 0) return;
    s_forkOwner = 0;
    s_forkMutex.unlock();
}

/// Runs in the child, where it must neither allocate nor lock: other threads of the parent can have
/// been in the middle of anything.
void CloseInChild() {
    ++s_forks;
    for (std::atomic<int>& place : s_private) {
        const int handle = place.exchange(0);
        if (handle != 0) close(handle - 1);
    }
    ReleaseForkLock();
}

/// Registered when the library is loaded: its first use could be on two threads or during a fork.
[[maybe_unused]] const int s_isHandled =
    pthread_atfork(&TakeForkLock, &ReleaseForkLock, &CloseInChild);

std::size_t TakePlace(int in_handle) {
    for (std::size_t i = 0; i < s_private.size(); ++i) {
        int free = 0;
        if (s_private[i].compare_exchange_strong(free, in_handle + 1)) return i;
    }
    return s_private.size();
}

}  // namespace

ForkLock::ForkLock() { TakeForkLock(); }

ForkLock::~ForkLock() { ReleaseForkLock(); }

int KeepOffStandardHandles(int in_handle) { return Orska::MoveAboveStandard(in_handle); }

PrivateHandle::PrivateHandle(int in_handle) : m_file(in_handle), m_forks(s_forks) {
    if (m_file.IsOpen()) m_slot = TakePlace(m_file.Get());
}

int PrivateHandle::Get() const noexcept { return m_forks == s_forks ? m_file.Get() : -1; }

int PrivateHandle::CloseNow() noexcept {
    const bool isOpen = IsOpen();
    const int handle = m_file.Release();
    if (!isOpen) return 0;
    if (m_slot < s_private.size()) s_private[m_slot] = 0;
    return Close(handle);
}

void PrivateHandle::Swap(PrivateHandle& io_other) noexcept {
    m_file = std::move(io_other.m_file);
    std::swap(m_slot, io_other.m_slot);
    std::swap(m_forks, io_other.m_forks);
}

}  // namespace Veltrane::ODBC::SystemCalls
