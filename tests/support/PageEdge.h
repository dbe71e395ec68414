/// Memory between two pages that cannot be touched: a read or write next to it ends the test.
#ifndef TESTS_SUPPORT_PAGEEDGE_H
#define TESTS_SUPPORT_PAGEEDGE_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string_view>

namespace Orska::TestSupport {

class PageEdge {
public:
    PageEdge() : m_pageSize(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
        void* const pages =
            mmap(nullptr, 3 * m_pageSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED) throw std::runtime_error("mmap");
        m_pages = static_cast<char*>(pages);
        if (mprotect(m_pages + m_pageSize, m_pageSize, PROT_READ | PROT_WRITE) != 0) {
            throw std::runtime_error("mprotect");
        }
    }
    ~PageEdge() { munmap(m_pages, 3 * m_pageSize); }
    PageEdge(const PageEdge&) = delete;
    PageEdge& operator=(const PageEdge&) = delete;

    /// The first `in_size` bytes of the page; in front of them is nothing.
    char* AtStart() const { return m_pages + m_pageSize; }
    /// The last `in_size` bytes of the page; behind them is nothing.
    char* AtEnd(std::size_t in_size) const { return m_pages + 2 * m_pageSize - in_size; }

    const char* CopyToStart(std::string_view in_text) const { return Copy(AtStart(), in_text); }
    const char* CopyToEnd(std::string_view in_text) const {
        return Copy(AtEnd(in_text.size()), in_text);
    }

private:
    static const char* Copy(char* out_place, std::string_view in_text) {
        std::memcpy(out_place, in_text.data(), in_text.size());
        return out_place;
    }

    std::size_t m_pageSize;
    char* m_pages = nullptr;
};

}  // namespace Orska::TestSupport

#endif
