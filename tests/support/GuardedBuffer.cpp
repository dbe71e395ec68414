#include "tests/support/GuardedBuffer.h"

#include <cstring>

namespace Orska::Support::Testing {

char* GuardedBuffer::PutAtEnd(std::string_view in_bytes) {
    char* const start = GetEnd() - in_bytes.size();
    if (!in_bytes.empty()) std::memcpy(start, in_bytes.data(), in_bytes.size());
    return start;
}

char* GuardedBuffer::PutAtStart(std::string_view in_bytes) {
    if (!in_bytes.empty()) std::memcpy(m_start, in_bytes.data(), in_bytes.size());
    return m_start;
}

}  // namespace Orska::Support::Testing
