/// The growable byte buffer of the trace and dump tools: a plain structure and its operations. One
/// thread uses a buffer at a time.
///
/// Unlike `Orska::Buffer`, one whose bytes have all been read starts again at its front.
#ifndef TOOLS_BUF_H
#define TOOLS_BUF_H

#include <bit>
#include <cstdint>
#include <cstdio>

#include "Assert.h"

namespace Orska {

// The assertion texts spell these names, without our prefixes.
// NOLINTBEGIN(readability-identifier-naming)

/// Zero-initialised it is an empty buffer; `buf_free` ends its use.
struct buf {
    std::uint64_t get;    ///< offset of the first unread byte
    std::uint64_t put;    ///< offset one past the last written byte
    std::uint64_t size;   ///< bytes of the block
    char* data;           ///< the block: owned and made with `realloc`, unless it is mapped
    std::uint32_t flags;  ///< BUF_MAPPED or 0
};

/// The block is mapped: not owned, and it cannot grow.
constexpr std::uint32_t BUF_MAPPED = 1;

inline bool buf_mapped(const buf* my) noexcept { return (my->flags & BUF_MAPPED) != 0; }
/// Unread bytes.
inline std::uint64_t buf_len(const buf* my) noexcept { return my->put - my->get; }
/// Free bytes after the written ones.
inline std::uint64_t buf_left(const buf* my) noexcept { return my->size - my->put; }

/// Takes `n` bytes of the free space as written; they begin at the result.
inline char* buf_put(buf* my, std::uint64_t n) noexcept {
    ORSKA_ASSERT(n <= buf_left(my), "n <= buf_left(my)", "tools", 0);
    char* start = my->data + my->put;
    my->put += n;
    return start;
}

/// Takes `n` unread bytes as read; they begin at the result and stay there until room is made.
inline const char* buf_get(buf* my, std::uint64_t n) noexcept {
    ORSKA_ASSERT(n <= buf_len(my), "n <= buf_len(my)", "tools", 0);
    const char* start = my->data + my->get;
    my->get += n;
    return start;
}

/// The size that buf_allow grows to: the smallest power of two that holds both and is at least 8;
/// 1 when there is none in 64 bits.
constexpr std::uint64_t buf_grown_size(std::uint64_t put, std::uint64_t n) noexcept {
    return std::uint64_t{1} << (std::bit_width((n - 1 + put) | std::uint64_t{7}) % 64);
}

/// Makes room for `n` bytes after the written ones.
/// @throws std::bad_alloc when there is no memory. `size` is then already the new one, so the
///         buffer is good for nothing but `buf_free`
void buf_allow(buf* my, std::uint64_t n);

/// Releases the block, unless it is mapped, and makes the buffer empty.
void buf_free(buf* my) noexcept;

/// Writes the buffer's fields and its first unread bytes, at most GetDumpLimit(), as hex digits.
/// @param out_stream  null: standard error
/// @throws std::bad_alloc when there is no memory for the text
void buf_dump(const buf* my, std::FILE* out_stream);

// NOLINTEND(readability-identifier-naming)

}  // namespace Orska

#endif
