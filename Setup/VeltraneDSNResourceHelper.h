/// Messages by id from the string table of the module that this code lives in.
#ifndef SETUP_VELTRANEDSNRESOURCEHELPER_H
#define SETUP_VELTRANEDSNRESOURCEHELPER_H

#include "PlatformAbstraction/strings/orska_wstring.h"

namespace Veltrane::ODBC {

class VeltraneDSNResourceHelper {
public:
    /// The text of a string resource, cut to 255 characters. Never fails: an id that the table
    /// lacks gives "Error loading the string".
    static Orska::Support::orska_wstring LoadStringResource(unsigned in_resourceStringId);

    /// The handle of the image that this code lives in, not of the host program. Not owned.
    static void* GetModuleInstance() noexcept;

private:
    /// Copies a string resource in the process's narrow encoding and ends it with a NUL.
    /// @param in_size  bytes of the buffer
    /// @return bytes copied, at most in_size - 1, without the NUL; 0 when there is no such string
    static int LoadStringNarrow(void* in_module, unsigned in_resourceStringId, char* out_buffer,
                                int in_size) noexcept;
};

}  // namespace Veltrane::ODBC

#endif
