/// Where the texts of error messages come from. Implemented by the layer that shows errors; held
/// through SharedPtr. An exception asks it on the thread that handles the exception.
#ifndef EXCEPTIONS_IMESSAGESOURCE_H
#define EXCEPTIONS_IMESSAGESOURCE_H

#include <cstdint>
#include <vector>

#include "../PlatformAbstraction/base/ThreadSafeSharedObject.h"
#include "../PlatformAbstraction/strings/orska_wstring.h"

namespace Orska::Support {

class IMessageSource : public ThreadSafeSharedObject {
public:
    /// The message of a key with its placeholders filled.
    /// @param in_locale      the locale or language that the asker passed, unchanged
    /// @param in_parameters  in the order in which they fill the placeholders
    /// @param out_text       replaced by the message
    /// @param out_nativeErrorCode  -1 when the source has no message for the key
    virtual void GetMessageWithParameters(const orska_wstring& in_locale,
                                          const orska_wstring& in_messageKey,
                                          std::uint32_t in_componentId,
                                          const std::vector<orska_wstring>& in_parameters,
                                          orska_wstring& out_text,
                                          std::int32_t& out_nativeErrorCode) = 0;

    /// As above, for a key without parameters.
    virtual void GetMessage(const orska_wstring& in_locale, const orska_wstring& in_messageKey,
                            std::uint32_t in_componentId, orska_wstring& out_text,
                            std::int32_t& out_nativeErrorCode) = 0;
};

}  // namespace Orska::Support

#endif
