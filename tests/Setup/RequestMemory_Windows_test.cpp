#include "tests/Setup/RefusedRequests.h"

namespace {

/// The installer has its own allocator.
void* PlainMalloc(std::size_t in_size) { return std::malloc(in_size); }

}  // namespace

namespace Veltrane::Test {

TEST_F(RefusedRequests, RunOut) { RunOut(); }

}  // namespace Veltrane::Test
