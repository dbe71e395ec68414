/// The growable byte buffer of the trace and dump tools: a plain structure and its functions. One
/// thread at a time can use a buffer.
///
/// Unlike in `Orska::Buffer`, when all bytes have been read, the offsets return to the front.
#ifndef TOOLS_BUF_H
#define TOOLS_BUF_H

#include <bit>
#include <cstdint>
#include <cstdio>

#include "Assert.h"

namespace Orska {

// The assertion texts have these names, so they have no prefixes.
// NOLINTBEGIN(readability-identifier-naming)

/// An empty buffer if zero-initialised. Release it with `buf_free`.
struct buf {
    std::uint64_t get;    ///< offset of the first unread byte
    std::uint64_t put;    ///< offset one past the last written byte
    std::uint64_t size;   ///< bytes of the block
    char* data;           ///< the block: owned and allocated with `realloc`, unless mapped
    std::uint32_t flags;  ///< BUF_MAPPED or 0
};

/// The block is mapped: it is not owned and cannot grow.
constexpr std::uint32_t BUF_MAPPED = 1;

inline bool buf_mapped(const buf* my) noexcept { return (my->flags & BUF_MAPPED) != 0; }
/// Unread bytes.
inline std::uint64_t buf_len(const buf* my) noexcept { return my->put - my->get; }
/// Free bytes after the written ones.
inline std::uint64_t buf_left(const buf* my) noexcept { return my->size - my->put; }

/// Marks `n` bytes of the free space as written and returns their start.
inline char* buf_put(buf* my, std::uint64_t n) noexcept {
    ORSKA_ASSERT(n <= buf_left(my), "n <= buf_left(my)", "tools", 0);
    char* start = my->data + my->put;
    my->put += n;
    return start;
}

/// Marks `n` unread bytes as read and returns their start. They stay there until room is made.
inline const char* buf_get(buf* my, std::uint64_t n) noexcept {
    ORSKA_ASSERT(n <= buf_len(my), "n <= buf_len(my)", "tools", 0);
    const char* start = my->data + my->get;
    my->get += n;
    return start;
}

/// Returns the size that buf_allow grows to: the smallest power of two that holds both and is at
/// least 8; 1 if there is none in 64 bits.
constexpr std::uint64_t buf_grown_size(std::uint64_t put, std::uint64_t n) noexcept {
    return std::uint64_t{1} << (std::bit_width((n - 1 + put) | std::uint64_t{7}) % 64);
}

/// Makes room for `n` bytes after the written ones.
/// @throws std::bad_alloc when memory runs out. `size` is then already the new one, so only
///         `buf_free` can be called
void buf_allow(buf* my, std::uint64_t n);

/// Frees the block, unless it is mapped, and makes the buffer empty.
void buf_free(buf* my) noexcept;

/// Writes the buffer's fields and its first unread bytes, at most GetDumpLimit(), as hex digits.
/// @param out_stream  null for standard error
/// @throws std::bad_alloc when there is no memory for the text
void buf_dump(const buf* my, std::FILE* out_stream);

// NOLINTEND(readability-identifier-naming)

}  // namespace Orska

#endif
