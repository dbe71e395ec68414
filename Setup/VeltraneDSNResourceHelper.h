/// Loads messages by id from the string table of this module.
#ifndef SETUP_VELTRANEDSNRESOURCEHELPER_H
#define SETUP_VELTRANEDSNRESOURCEHELPER_H

#include "PlatformAbstraction/strings/orska_wstring.h"

namespace Veltrane::ODBC {

class VeltraneDSNResourceHelper {
public:
    /// Returns a string resource, truncated to 255 characters; "Error loading the string" for an
    /// unknown id. Never fails.
    static Orska::Support::orska_wstring LoadStringResource(unsigned in_resourceStringId);

    /// Returns the handle of this module, not of the host program. Not owned.
    static void* GetModuleInstance() noexcept;

private:
    /// Copies a string resource in the process's narrow encoding, terminated by a NUL.
    /// @param in_size  bytes of the buffer
    /// @return bytes copied, at most in_size - 1, without the NUL; 0 when there is no such string
    static int LoadStringNarrow(void* in_module, unsigned in_resourceStringId, char* out_buffer,
                                int in_size) noexcept;
};

}  // namespace Veltrane::ODBC

#endif
