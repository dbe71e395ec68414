/// Texts that are kept together, so that edits and lines can be views of them.
#ifndef SETUP_TEXTSTORE_H
#define SETUP_TEXTSTORE_H

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Veltrane::ODBC {

class TextStore {
public:
    TextStore() = default;
    TextStore(const TextStore&) = delete;
    TextStore& operator=(const TextStore&) = delete;

    /// Joins the parts. The result stays where it is until Clear or the end of the store.
    std::string_view Keep(std::initializer_list<std::string_view> in_parts) {
        std::size_t size = 0;
        for (const std::string_view part : in_parts) size += part.size();
        if (m_block.size() - m_used < size) {
            std::string block(std::max(size, BLOCK_SIZE), '\0');
            if (m_used > 0) m_full.push_back(std::move(m_block));
            m_block = std::move(block);
            m_used = 0;
        }
        char* const text = m_block.data() + m_used;
        char* end = text;
        for (const std::string_view part : in_parts) end = std::copy(part.begin(), part.end(), end);
        m_used += size;
        return {text, size};
    }
    void Clear() noexcept {
        m_full.clear();
        m_block = {};
        m_used = 0;
    }

private:
    static constexpr std::size_t BLOCK_SIZE = 1024;

    /// Too long for a string's own buffer, so the texts stay where they are when it is moved.
    std::string m_block;
    std::size_t m_used = 0;
    std::vector<std::string> m_full;
};

}  // namespace Veltrane::ODBC

#endif
