/// The one owner of what the system hands out by a handle: closes it at its end, or when another
/// one takes its place. FileDescriptor.h and WindowsHandle.h name it for each system. Used by one
/// thread at a time.
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
    /// @param in_handle  what the system's call gave, also when it failed
    explicit OwnedHandle(Handle in_handle) noexcept : m_handle(in_handle) {}
    OwnedHandle(OwnedHandle&& in_other) noexcept : m_handle(in_other.Release()) {}
    /// The other one gets what was held here.
    OwnedHandle& operator=(OwnedHandle&& in_other) noexcept {
        std::swap(m_handle, in_other.m_handle);
        return *this;
    }
    ~OwnedHandle() { Close(); }

    bool IsOpen() const noexcept { return Kind::IsHandle(m_handle); }
    Handle Get() const noexcept { return m_handle; }
    /// Gives the handle away, to be closed by the caller.
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
