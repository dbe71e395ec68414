/// The library's growable byte buffer, with a read and a write offset. It owns its block, which is
/// empty at first. One thread at a time can use a buffer.
#ifndef TOOLS_BUFFER_H
#define TOOLS_BUFFER_H

#include <bit>
#include <cstddef>
#include <cstdint>

#include "RequireCpp20.h"

namespace Orska {

class Buffer {
public:
    Buffer() noexcept = default;
    ~Buffer();
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    /// Makes room for more bytes after the written ones, without checking whether there is room:
    /// unread bytes move to the front of the block if some bytes before them have been read.
    /// @param in_allow  bytes; a total over 2^31 stops the process in an assertion
    /// @throws std::bad_alloc when memory runs out; the unread bytes are kept
    void AllowHelper(std::uint32_t in_allow);

    /// As AllowHelper, but does nothing if there is room.
    void Allow(std::uint32_t in_allow) {
        if (GetFree() < in_allow) {
            AllowHelper(in_allow);
        }
    }

    /// Makes room and copies bytes to the write end.
    void Append(const void* in_bytes, std::uint32_t in_count);

    /// Returns where the next byte is written. Up to GetFree() bytes can be written there and then
    /// committed; null before the first growth.
    char* GetWritePointer() noexcept { return m_data + m_used; }
    /// Marks bytes at the write pointer as written; more than GetFree() stop the process.
    void Commit(std::uint32_t in_count);

    /// Returns the first of GetUnread() unread bytes.
    const char* GetReadPointer() const noexcept { return m_data + m_readOffset; }
    /// Marks bytes as read; more than GetUnread() stop the process.
    void Consume(std::uint32_t in_count);

    std::uint32_t GetUnread() const noexcept { return m_used - m_readOffset; }
    std::uint32_t GetFree() const noexcept { return m_capacity - m_used; }
    std::uint32_t GetCapacity() const noexcept { return m_capacity; }
    std::uint32_t GetReadOffset() const noexcept { return m_readOffset; }
    std::uint32_t GetUsed() const noexcept { return m_used; }

    /// Returns the capacity that AllowHelper grows to: the smallest power of two that holds both
    /// and is at least 8. Above 2^31 bytes the 32-bit arithmetic overflows to a capacity that is
    /// too small.
    /// @param in_allow  at least 1
    static constexpr std::uint32_t GrownCapacity(std::uint32_t in_used,
                                                 std::uint32_t in_allow) noexcept {
        return std::uint32_t{1} << (std::bit_width((in_allow - 1 + in_used) | 7u) % 32);
    }

private:
    void MoveUnreadToFront() noexcept;

    char* m_data = nullptr;
    std::uint32_t m_capacity = 0;
    std::uint32_t m_readOffset = 0;
    std::uint32_t m_used = 0;
};

}  // namespace Orska

#endif
