/// Clears memory that held a password.
#ifndef PLATFORMABSTRACTION_BASE_WIPE_H
#define PLATFORMABSTRACTION_BASE_WIPE_H

#include <cstddef>
#include <string>

namespace Orska::Support {

/// Writes zeros that the compiler may not leave out.
inline void WipeBytes(void* out_bytes, std::size_t in_count) {
    volatile unsigned char* bytes = static_cast<unsigned char*>(out_bytes);
    for (std::size_t i = 0; i < in_count; ++i) {
        bytes[i] = 0;
    }
}

/// Clears the whole buffer of a string, including what a longer text left in it, and empties it.
template <typename Char>
void Wipe(std::basic_string<Char>& io_text) {
    io_text.resize(io_text.capacity());
    WipeBytes(io_text.data(), io_text.size() * sizeof(Char));
    io_text.clear();
}

/// Clears a string on every way out of a block.
template <typename Char>
class WipeAtEnd {
public:
    explicit WipeAtEnd(std::basic_string<Char>& io_text) : m_text(io_text) {}
    WipeAtEnd(const WipeAtEnd&) = delete;
    WipeAtEnd& operator=(const WipeAtEnd&) = delete;
    ~WipeAtEnd() { Wipe(m_text); }

private:
    std::basic_string<Char>& m_text;
};

}  // namespace Orska::Support

#endif
