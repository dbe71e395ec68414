/// Owns one handle of the system and closes it in its destructor. FileDescriptor.h and
/// WindowsHandle.h define it for each system. Used by one thread at a time.
#ifndef PLATFORMABSTRACTION_BASE_OWNEDHANDLE_H
#define PLATFORMABSTRACTION_BASE_OWNEDHANDLE_H

#include <utility>

namespace Orska::Support {

/// @tparam Kind  names the type Handle and has NoHandle(), IsHandle(handle) and Close(handle)
template <typename Kind>
class OwnedHandle {
public:
    using Handle = typename Kind::Handle;

    OwnedHandle() noexcept = default;
    /// @param in_handle  the result of the system call, a failure included
    explicit OwnedHandle(Handle in_handle) noexcept : m_handle(in_handle) {}
    OwnedHandle(OwnedHandle&& in_other) noexcept : m_handle(in_other.Release()) {}
    /// Swaps the two handles.
    OwnedHandle& operator=(OwnedHandle&& in_other) noexcept {
        std::swap(m_handle, in_other.m_handle);
        return *this;
    }
    ~OwnedHandle() { Close(); }

    bool IsOpen() const noexcept { return Kind::IsHandle(m_handle); }
    Handle Get() const noexcept { return m_handle; }
    /// Returns the handle, which the caller then closes.
    Handle Release() noexcept { return std::exchange(m_handle, Kind::NoHandle()); }
    void Close() noexcept {
        if (IsOpen()) {
            Kind::Close(Release());
        }
    }

private:
    Handle m_handle = Kind::NoHandle();
};

}  // namespace Orska::Support

#endif
