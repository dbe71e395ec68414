/// The source of the texts of error messages. Implemented by the layer that shows errors; held by
/// SharedPtr. Called on the thread that handles the exception.
#ifndef EXCEPTIONS_IMESSAGESOURCE_H
#define EXCEPTIONS_IMESSAGESOURCE_H

#include <cstdint>
#include <vector>

#include "../PlatformAbstraction/base/ThreadSafeSharedObject.h"
#include "../PlatformAbstraction/strings/orska_wstring.h"

namespace Orska::Support {

class IMessageSource : public ThreadSafeSharedObject {
public:
    /// Makes the message of a key, with its placeholders filled.
    /// @param in_locale      the caller's locale or language, unchanged
    /// @param in_parameters  in the order in which they fill the placeholders
    /// @param out_text       replaced by the message
    /// @param out_nativeErrorCode  -1 if there is no message for the key
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
