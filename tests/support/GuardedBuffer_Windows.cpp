#include <cstdlib>

#include "tests/support/GuardedBuffer.h"
#include "tools/WindowsApi.h"

namespace Orska::Support::Testing {

GuardedBuffer::GuardedBuffer(std::size_t in_capacity) {
    SYSTEM_INFO system;
    GetSystemInfo(&system);
    const std::size_t page = system.dwPageSize;
    m_capacity = (in_capacity + page - 1) / page * page;
    m_mappedSize = m_capacity + 2 * page;
    // Reserved pages without memory cannot be touched.
    void* const mapping = VirtualAlloc(nullptr, m_mappedSize, MEM_RESERVE, PAGE_NOACCESS);
    if (mapping == nullptr) std::abort();
    m_mapping = static_cast<char*>(mapping);
    m_start = m_mapping + page;
    if (VirtualAlloc(m_start, m_capacity, MEM_COMMIT, PAGE_READWRITE) == nullptr) std::abort();
}

GuardedBuffer::~GuardedBuffer() { VirtualFree(m_mapping, 0, MEM_RELEASE); }

}  // namespace Orska::Support::Testing
