/// The library's growable byte buffer, with an offset for reading and one for writing. It owns its
/// block, which begins empty. One thread uses a buffer at a time.
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

    /// Makes room for more bytes after the written ones, without testing first whether there is
    /// any: unread bytes move to the front of the block when some before them have been read.
    /// @param in_allow  bytes; more than 2^31 in all stop the process in an assertion
    /// @throws std::bad_alloc when there is no memory; the unread bytes are kept
    void AllowHelper(std::uint32_t in_allow);

    /// As AllowHelper, but does nothing when there is room.
    void Allow(std::uint32_t in_allow) {
        if (GetFree() < in_allow) {
            AllowHelper(in_allow);
        }
    }

    /// Copies bytes to the write end, making room.
    void Append(const void* in_bytes, std::uint32_t in_count);

    /// Where the next byte is written. GetFree() bytes may be written there and then be committed;
    /// null before the first growth.
    char* GetWritePointer() noexcept { return m_data + m_used; }
    /// Counts bytes at the write pointer as written; at most GetFree(), or the process stops.
    void Commit(std::uint32_t in_count);

    /// The first unread byte; GetUnread() bytes are there.
    const char* GetReadPointer() const noexcept { return m_data + m_readOffset; }
    /// Counts bytes as read; at most GetUnread(), or the process stops.
    void Consume(std::uint32_t in_count);

    std::uint32_t GetUnread() const noexcept { return m_used - m_readOffset; }
    std::uint32_t GetFree() const noexcept { return m_capacity - m_used; }
    std::uint32_t GetCapacity() const noexcept { return m_capacity; }
    std::uint32_t GetReadOffset() const noexcept { return m_readOffset; }
    std::uint32_t GetUsed() const noexcept { return m_used; }

    /// The capacity that AllowHelper grows to: the smallest power of two that holds both and is at
    /// least 8. Above 2^31 bytes the arithmetic, in 32 bits, gives one that is too small.
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
