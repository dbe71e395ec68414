/// Keeps passwords out of the host's memory after a request. RequestMemory clears texts and the
/// stack, and the library's operator delete clears heap blocks (WipedHeap.cpp). What the driver
/// manager keeps is out of reach.
#ifndef SETUP_REQUESTMEMORY_H
#define SETUP_REQUESTMEMORY_H

#include <cstddef>

#include "PlatformAbstraction/strings/TextPool.h"

namespace Veltrane::ODBC {

/// Writes zeros that the compiler cannot leave out. Fast, because the texts of a large odbc.ini are
/// cleared with it.
void ClearMemory(void* out_bytes, std::size_t in_size) noexcept;

/// Made in each call of an entry point, before anything else.
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
