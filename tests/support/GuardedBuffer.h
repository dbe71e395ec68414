/// A buffer between two pages that must not be touched: an access one byte outside ends the test.
#ifndef TESTS_SUPPORT_GUARDEDBUFFER_H
#define TESTS_SUPPORT_GUARDEDBUFFER_H

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace Orska::Support::Testing {

class GuardedBuffer {
public:
    /// @param in_capacity  bytes; rounded up to whole pages
    explicit GuardedBuffer(std::size_t in_capacity);
    ~GuardedBuffer();
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    /// The first usable byte; the page before it is forbidden.
    char* GetStart() const { return m_start; }
    /// After the last usable byte, where the next forbidden page begins.
    char* GetEnd() const { return m_start + m_capacity; }
    /// Copies bytes to the end of the buffer and returns their start.
    char* PutAtEnd(std::string_view in_bytes) { return Put(GetEnd() - in_bytes.size(), in_bytes); }
    /// Copies bytes to the start of the buffer and returns their start.
    char* PutAtStart(std::string_view in_bytes) { return Put(m_start, in_bytes); }

private:
    static char* Put(char* out_start, std::string_view in_bytes) {
        std::copy(in_bytes.begin(), in_bytes.end(), out_start);
        return out_start;
    }

    char* m_mapping;
    std::size_t m_mappedSize;
    char* m_start;
    std::size_t m_capacity;
};

}  // namespace Orska::Support::Testing

#endif
