#include "Setup/VeltraneDSNResourceHelper.h"

#include <vector>

namespace Veltrane::ODBC {

using Orska::Support::orska_wstring;

orska_wstring VeltraneDSNResourceHelper::LoadStringResource(unsigned in_resourceStringId) {
    static const orska_wstring loadErr(L"Error loading the string");
    constexpr int STEP = 256;
    int size = STEP;
    std::vector<char> buffer(static_cast<std::size_t>(size));
    int count = 0;
    // The buffer grows when the text filled it, but the loop then tests the new size, where the
    // test never holds: a long text is not loaded again and is returned truncated to 255
    // characters. Kept exactly so; all texts of the table are far shorter.
    do {
        count = LoadStringNarrow(GetModuleInstance(), in_resourceStringId, buffer.data(), size);
        if (count == 0) {
            return loadErr;
        }
        if (size - count <= 1) {
            size += STEP;
            buffer.resize(static_cast<std::size_t>(size));
        }
    } while (size - count <= 1);
    return orska_wstring(buffer.data());
}

}  // namespace Veltrane::ODBC
