#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "tests/support/PasswordCopies.h"

namespace Veltrane::ODBC {

void ForEachWritableRegion(const std::function<void(std::span<const char>)>& in_function) {
    constexpr std::size_t LARGEST_REGION = std::size_t{64} << 20;
    static std::vector<char> s_bytes(LARGEST_REGION);
    const auto own = reinterpret_cast<std::uintptr_t>(s_bytes.data());
    std::ifstream maps("/proc/self/maps");
    const int memory = open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
    for (std::string line; std::getline(maps, line);) {
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        char mode[5] = "";
        const int fields = std::sscanf(line.c_str(), "%lx-%lx %4s", &begin, &end, mode);
        const bool isWritable = fields == 3 && mode[0] == 'r' && mode[1] == 'w';
        if (!isWritable || end - begin > LARGEST_REGION || (begin <= own && own < end)) {
            continue;
        }
        const ssize_t count = pread(memory, s_bytes.data(), end - begin, static_cast<off_t>(begin));
        in_function({s_bytes.data(), count < 0 ? 0 : static_cast<std::size_t>(count)});
    }
    close(memory);
}

}  // namespace Veltrane::ODBC
