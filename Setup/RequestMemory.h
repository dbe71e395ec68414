/// What a request leaves in the memory of its host: nothing of the password. The texts and the
/// stack are cleared by the object below, and the heap by the library's operator delete
/// (WipedHeap.cpp). What the driver manager keeps is its own.
#ifndef SETUP_REQUESTMEMORY_H
#define SETUP_REQUESTMEMORY_H

#include <cstddef>

#include "PlatformAbstraction/strings/TextPool.h"

namespace Veltrane::ODBC {

/// Writes zeros that the compiler may not leave out, as fast as can be: the texts of a large
/// odbc.ini are cleared with it.
void ClearMemory(void* out_bytes, std::size_t in_size) noexcept;

/// One for each call of an entry point, made before anything else.
class RequestMemory {
public:
    RequestMemory() = default;
    RequestMemory(const RequestMemory&) = delete;
    RequestMemory& operator=(const RequestMemory&) = delete;
    ~RequestMemory();

private:
    Orska::Support::WipedTexts m_texts;
};

}  // namespace Veltrane::ODBC

#endif
