// The string table of this program is the fake one below.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "Setup/VeltraneDSNResourceHelper.h"

namespace Veltrane::ODBC {

namespace {

// Process-wide: set by the tests, read by the fake table.
std::string s_text;
std::vector<int> s_sizes;

}  // namespace

void* VeltraneDSNResourceHelper::GetModuleInstance() noexcept { return nullptr; }

int VeltraneDSNResourceHelper::LoadStringNarrow(void* /*in_module*/, unsigned /*in_id*/,
                                                char* out_buffer, int in_size) noexcept {
    s_sizes.push_back(in_size);
    const int count = std::min(static_cast<int>(s_text.size()), in_size - 1);
    std::memcpy(out_buffer, s_text.data(), static_cast<std::size_t>(count));
    out_buffer[count] = '\0';
    return count;
}

namespace {

TEST(LongStringResource, IsLoadedOnceAndCutTo255Characters) {
    for (const std::size_t length : {1U, 254U, 255U, 256U, 300U, 1000U}) {
        SCOPED_TRACE(length);
        s_sizes.clear();
        s_text = std::string(length, 'x');
        const std::string expected = s_text.substr(0, 255);
        EXPECT_EQ(VeltraneDSNResourceHelper::LoadStringResource(101),
                  Orska::Support::orska_wstring(expected));
        EXPECT_EQ(s_sizes, std::vector<int>{256});
    }
}

}  // namespace
}  // namespace Veltrane::ODBC
