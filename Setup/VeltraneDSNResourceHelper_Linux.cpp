#include <dlfcn.h>

#include <algorithm>
#include <cstring>

#include "Setup/VeltraneDSNResourceHelper.h"

namespace Veltrane::ODBC {

namespace {

struct StringResource {
    unsigned m_id;
    const char* m_text;
};

constexpr StringResource STRING_TABLE[] = {
#define VELTRANE_STRING(in_id, in_text) {in_id, in_text},
#include "Setup/VeltraneDSNStrings.inc"
#undef VELTRANE_STRING
};

}  // namespace

void* VeltraneDSNResourceHelper::GetModuleInstance() noexcept {
    Dl_info info{};
    return dladdr(STRING_TABLE, &info) != 0 ? info.dli_fbase : nullptr;
}

// The table is part of the module's image; the handle is not needed to find it.
int VeltraneDSNResourceHelper::LoadStringNarrow(void* /*in_module*/, unsigned in_resourceStringId,
                                                char* out_buffer, int in_size) noexcept {
    for (const StringResource& entry : STRING_TABLE) {
        if (entry.m_id == in_resourceStringId) {
            const int count = std::min(static_cast<int>(std::strlen(entry.m_text)), in_size - 1);
            std::memcpy(out_buffer, entry.m_text, static_cast<std::size_t>(count));
            out_buffer[count] = '\0';
            return count;
        }
    }
    return 0;
}

}  // namespace Veltrane::ODBC
