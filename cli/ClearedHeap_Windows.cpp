/// As ClearedHeap_Linux.cpp: every block of the C++ heap is cleared before it is given back.
#include <malloc.h>
#include <windows.h>

#include <cstdlib>
#include <new>

namespace {

void ClearAndFree(void* in_block) noexcept {
    if (in_block == nullptr) return;
    SecureZeroMemory(in_block, _msize(in_block));
    std::free(in_block);
}

void* Allocate(std::size_t in_size) {
    void* const block = std::malloc(in_size == 0 ? 1 : in_size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace

void* operator new(std::size_t in_size) { return Allocate(in_size); }
void* operator new[](std::size_t in_size) { return Allocate(in_size); }
void operator delete(void* in_block) noexcept { ClearAndFree(in_block); }
void operator delete[](void* in_block) noexcept { ClearAndFree(in_block); }
void operator delete(void* in_block, std::size_t) noexcept { ClearAndFree(in_block); }
void operator delete[](void* in_block, std::size_t) noexcept { ClearAndFree(in_block); }
