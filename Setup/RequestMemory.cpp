#include "Setup/RequestMemory.h"

#include <cstring>

namespace Veltrane::ODBC {

namespace {

/// Clears the stack below the caller, as deep as a request goes.
__attribute__((noinline)) void ClearStack() noexcept {
    constexpr std::size_t DEPTH = std::size_t{24} << 10;
    char bytes[DEPTH];
    ClearMemory(bytes, sizeof bytes);
}

}  // namespace

void ClearMemory(void* out_bytes, std::size_t in_size) noexcept {
    std::memset(out_bytes, 0, in_size);
    asm volatile("" : : "r"(out_bytes) : "memory");
}

RequestMemory::~RequestMemory() { ClearStack(); }

}  // namespace Veltrane::ODBC
