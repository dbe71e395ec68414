#include "tools/buf.h"

#include <algorithm>
#include <cinttypes>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "tools/Reallocate.h"
#include "tools/trace.h"

namespace Orska {

namespace {

constexpr std::uint64_t BYTES_PER_LINE = 16;

/// Each line has up to 16 bytes and the offset of its first byte.
void AppendHexDump(std::string& io_text, const char* in_bytes, std::uint64_t in_count) {
    char piece[32];
    for (std::uint64_t i = 0; i < in_count; ++i) {
        std::snprintf(piece, sizeof piece, " %02X", static_cast<unsigned char>(in_bytes[i]));
        io_text += piece;
        if ((i + 1) % BYTES_PER_LINE == 0 || i + 1 == in_count) {
            std::snprintf(piece, sizeof piece, "\t#%04X\n",
                          static_cast<unsigned>(i - i % BYTES_PER_LINE));
            io_text += piece;
        }
    }
}

}  // namespace

// NOLINTBEGIN(readability-identifier-naming): the names of buf.h

void buf_allow(buf* my, std::uint64_t n) {
    if (my->get > 0) {
        if (my->get < my->put) {
            std::memmove(my->data, my->data + my->get, my->put - my->get);
        }
        my->put -= my->get;
        my->get = 0;
    }
    if (buf_left(my) >= n) {
        return;
    }
    ORSKA_ASSERT(!buf_mapped(my), "!buf_mapped(my)", "tools", 633);
    const std::uint64_t size = buf_grown_size(my->put, n);
    if (size < my->put || size - my->put < n) {
        throw std::bad_alloc();  // no power of two in 64 bits is large enough
    }
    my->size = size;
    void* block = Reallocate(my->data, size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    my->data = static_cast<char*>(block);
}

void buf_free(buf* my) noexcept {
    if (!buf_mapped(my)) {
        std::free(my->data);
    }
    *my = buf{};
}

void buf_dump(const buf* my, std::FILE* out_stream) {
    char head[192];
    std::snprintf(head, sizeof head,
                  "BUF 0x%" PRIxPTR " { size=%" PRIu64 " get=%" PRIu64 " put=%" PRIu64
                  " data=0x%" PRIxPTR "%s ",
                  reinterpret_cast<std::uintptr_t>(my), my->size, my->get, my->put,
                  reinterpret_cast<std::uintptr_t>(my->data), buf_mapped(my) ? " mapped" : "");
    std::string text = head;
    const std::uint64_t count = std::min<std::uint64_t>(GetDumpLimit(), buf_len(my));
    if (count > 0) {
        text += '\n';
        AppendHexDump(text, my->data + my->get, count);
    }
    text += "}\n";
    std::fwrite(text.data(), 1, text.size(), out_stream == nullptr ? stderr : out_stream);
}

// NOLINTEND(readability-identifier-naming)

}  // namespace Orska
