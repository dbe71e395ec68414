#include "PlatformAbstraction/base/ThreadSafeSharedObject.h"

#include "PlatformAbstraction/base/orska_abort.h"

namespace Orska::Support {

std::uint32_t AtomicCompareExchange(std::atomic<std::uint32_t>& io_counter,
                                    std::uint32_t in_expected, std::uint32_t in_desired) noexcept {
    // On failure the value found is written to the local copy of the expectation.
    io_counter.compare_exchange_strong(in_expected, in_desired, std::memory_order_acq_rel,
                                       std::memory_order_acquire);
    return in_expected;
}

namespace {

/// Returns the sum.
std::uint32_t Add(std::atomic<std::uint32_t>& io_counter, std::int32_t in_delta) noexcept {
    std::uint32_t before = io_counter.load(std::memory_order_relaxed);
    for (;;) {
        const std::uint32_t after = before + static_cast<std::uint32_t>(in_delta);
        const std::uint32_t found = AtomicCompareExchange(io_counter, before, after);
        if (found == before) {
            return after;
        }
        before = found;
    }
}

}  // namespace

bool AtomicAdd(std::atomic<std::uint32_t>& io_counter, std::int32_t in_delta) noexcept {
    return Add(io_counter, in_delta) == 0;
}

void ThreadSafeSharedObject::Retain() noexcept {
    if (AtomicAdd(m_refCount, 1)) {
        orska_abort("ThreadSafeSharedObject", 34,
                    "Incrementing the refcount should never result in 0.");
    }
}

std::uint32_t ThreadSafeSharedObject::Release() {
    const std::uint32_t left = Add(m_refCount, -1);
    return left == 0 ? Destroy() : left;
}

std::uint32_t ThreadSafeSharedObject::Destroy() {
    delete this;
    return 0;
}

}  // namespace Orska::Support
