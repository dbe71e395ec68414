/// Reference-counted objects that may be shared between threads, and the pointer that holds them.
///
/// The count is changed by atomic compare-and-swap only, so no update is lost and exactly one
/// thread sees it reach 0. The object itself is as thread-safe as its subclass makes it.
#ifndef PLATFORMABSTRACTION_THREADSAFESHAREDOBJECT_H
#define PLATFORMABSTRACTION_THREADSAFESHAREDOBJECT_H

#include <atomic>
#include <cstdint>
#include <utility>

#include "../../tools/RequireCpp20.h"

namespace Orska::Support {

/// Adds a delta, modulo 2^32.
/// @return true when the result is 0
bool AtomicAdd(std::atomic<std::uint32_t>& io_counter, std::int32_t in_delta) noexcept;

/// Stores `in_desired` if the counter holds `in_expected`.
/// @return the value held before
std::uint32_t AtomicCompareExchange(std::atomic<std::uint32_t>& io_counter,
                                    std::uint32_t in_expected, std::uint32_t in_desired) noexcept;

class ThreadSafeSharedObject {
public:
    ThreadSafeSharedObject(const ThreadSafeSharedObject&) = delete;
    ThreadSafeSharedObject& operator=(const ThreadSafeSharedObject&) = delete;

    /// Adds a reference. A count that wraps to 0 stops the process through orska_abort.
    void Retain() noexcept;

    /// Drops a reference. Dropping the last one calls Destroy.
    /// @return the references left, or what Destroy returns
    std::uint32_t Release();

protected:
    /// A new object has one reference, its creator's.
    ThreadSafeSharedObject() noexcept = default;
    virtual ~ThreadSafeSharedObject() = default;

    /// Called by Release when the count reaches 0. Deletes the object and returns 0 unless a
    /// subclass overrides it.
    virtual std::uint32_t Destroy();

    std::atomic<std::uint32_t> m_refCount{1};
};

/// Owns one reference to a ThreadSafeSharedObject, or none.
template <typename T>
class SharedPtr {
public:
    SharedPtr() noexcept = default;
    /// Takes over the caller's reference (a new object's first one); null is allowed.
    explicit SharedPtr(T* in_object) noexcept : m_object(in_object) {}
    SharedPtr(const SharedPtr& in_other) noexcept : m_object(in_other.m_object) {
        if (m_object != nullptr) {
            m_object->Retain();
        }
    }
    SharedPtr(SharedPtr&& in_other) noexcept
        : m_object(std::exchange(in_other.m_object, nullptr)) {}
    ~SharedPtr() {
        if (m_object != nullptr) {
            m_object->Release();
        }
    }

    SharedPtr& operator=(SharedPtr in_other) noexcept {
        std::swap(m_object, in_other.m_object);
        return *this;
    }

    T* Get() const noexcept { return m_object; }
    T* operator->() const noexcept { return m_object; }
    T& operator*() const noexcept { return *m_object; }
    explicit operator bool() const noexcept { return m_object != nullptr; }

private:
    T* m_object = nullptr;
};

}  // namespace Orska::Support

#endif
