#include <windows.h>

#include "tests/support/PasswordCopies.h"

namespace Veltrane::ODBC {

void ForEachWritableRegion(const std::function<void(std::span<const char>)>& in_function) {
    constexpr std::size_t LARGEST_REGION = std::size_t{64} << 20;
    MEMORY_BASIC_INFORMATION region{};
    for (const char* at = nullptr; VirtualQuery(at, &region, sizeof region) != 0;
         at = static_cast<const char*>(region.BaseAddress) + region.RegionSize) {
        constexpr DWORD WRITABLE = PAGE_READWRITE | PAGE_EXECUTE_READWRITE | PAGE_WRITECOPY;
        const bool isRead = region.State == MEM_COMMIT && (region.Protect & WRITABLE) != 0 &&
                            (region.Protect & PAGE_GUARD) == 0 &&
                            region.RegionSize <= LARGEST_REGION;
        if (isRead) in_function({static_cast<const char*>(region.BaseAddress), region.RegionSize});
    }
}

}  // namespace Veltrane::ODBC
