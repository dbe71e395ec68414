#include "tools/Reallocate.h"

#include <cstdlib>

namespace Orska {

void* Reallocate(void* in_block, std::size_t in_size) noexcept {
    return std::realloc(in_block, in_size);
}

}  // namespace Orska
