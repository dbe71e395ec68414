#include "tools/Buffer.h"

#include <cinttypes>
#include <cstdlib>
#include <cstring>
#include <new>

#include "tools/Assert.h"
#include "tools/Reallocate.h"
#include "tools/trace.h"

namespace Orska {

namespace {

constexpr char FUNCTION[] = "Orska::Buffer::AllowHelper";
constexpr char SOURCE[] = "Buffer";

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
#pragma GCC diagnostic ignored "-Wformat-extra-args"
/// The format ends in a lone "%", which is printed as it is instead of the last argument. People
/// search for this text, so it stays.
void TraceNullBlock(std::uint32_t in_newCapacity, std::uint32_t in_capacity,
                    std::uint32_t in_unread, std::uint32_t in_allow) {
    ORSKA_TRACE(1, FUNCTION, SOURCE, 59,
                "REALLOC(m_data, %u) returned NULL. capacity=%u used=%u allow=%", in_newCapacity,
                in_capacity, in_unread, in_allow);
}
#pragma GCC diagnostic pop

}  // namespace

Buffer::~Buffer() { std::free(m_data); }

void Buffer::AllowHelper(std::uint32_t in_allow) {
    ORSKA_TRACE(4, FUNCTION, SOURCE, 33,
                "Allowing %u on buffer %" PRIxPTR ". Requires REALLOC or move: %s", in_allow,
                reinterpret_cast<std::uintptr_t>(this),
                m_readOffset > 0 || GetFree() < in_allow ? "true" : "false");
    MoveUnreadToFront();
    if (in_allow <= GetFree()) {
        return;
    }
    const std::uint32_t newCapacity = GrownCapacity(m_used, in_allow);
    // Above 2^31 bytes the arithmetic overflows to a capacity of 1, which counts as growth of an
    // empty buffer. So the room is checked too.
    ORSKA_ASSERT(newCapacity && (newCapacity > m_capacity) && (newCapacity - m_used >= in_allow),
                 "newCapacity && (newCapacity > m_capacity)", SOURCE, 46);
    void* block = Reallocate(m_data, newCapacity);
    if (block == nullptr) {
        if (newCapacity == 0) {
            TraceNullBlock(newCapacity, m_capacity, GetUnread(), in_allow);
        }
        throw std::bad_alloc();
    }
    m_data = static_cast<char*>(block);
    m_capacity = newCapacity;
}

void Buffer::Append(const void* in_bytes, std::uint32_t in_count) {
    Allow(in_count);
    if (in_count > 0) {
        std::memcpy(m_data + m_used, in_bytes, in_count);
        m_used += in_count;
    }
}

void Buffer::Commit(std::uint32_t in_count) {
    ORSKA_ASSERT(in_count <= GetFree(), "in_count <= GetFree()", SOURCE, 0);
    m_used += in_count;
}

void Buffer::Consume(std::uint32_t in_count) {
    ORSKA_ASSERT(in_count <= GetUnread(), "in_count <= GetUnread()", SOURCE, 0);
    m_readOffset += in_count;
}

void Buffer::MoveUnreadToFront() noexcept {
    // When everything has been read, the offsets deliberately stay: pointers to the bytes just read
    // remain valid until the block grows.
    if (m_readOffset == 0 || m_readOffset == m_used) {
        return;
    }
    std::memmove(m_data, m_data + m_readOffset, m_used - m_readOffset);
    m_used -= m_readOffset;
    m_readOffset = 0;
}

}  // namespace Orska
