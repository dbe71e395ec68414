#include "tests/support/Reallocate_Fake.h"

#include <cstdlib>

#include "tools/Reallocate.h"

namespace Orska {

void* Reallocate(void* in_block, std::size_t in_size) noexcept {
    return Test::s_failReallocate ? nullptr : std::realloc(in_block, in_size);
}

}  // namespace Orska
