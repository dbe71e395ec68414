#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/support/GuardedBuffer.h"

namespace Orska::Support::Testing {

GuardedBuffer::GuardedBuffer(std::size_t in_capacity) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    m_capacity = (in_capacity + page - 1) / page * page;
    m_mappedSize = m_capacity + 2 * page;
    void* const mapping =
        mmap(nullptr, m_mappedSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED) std::abort();
    m_mapping = static_cast<char*>(mapping);
    m_start = m_mapping + page;
    if (mprotect(m_start, m_capacity, PROT_READ | PROT_WRITE) != 0) std::abort();
}

GuardedBuffer::~GuardedBuffer() { munmap(m_mapping, m_mappedSize); }

}  // namespace Orska::Support::Testing
