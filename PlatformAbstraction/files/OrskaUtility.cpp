#include "PlatformAbstraction/files/OrskaUtility.h"

#include <string>

#include "tools/trace.h"

namespace Orska::Support {

namespace {

constexpr char SOURCE[] = "PlatformAbstraction\\OrskaUtility_Windows";

}  // namespace

orska_wstring GetLastErrorText(std::uint32_t in_code) {
    return GetLastErrorTextImpl(in_code, true);
}

orska_wstring GetLastErrorTextImpl(std::uint32_t in_code, bool in_allowRetry) {
    std::string text;
    if (FormatSystemMessage(in_code, text)) {
        return orska_wstring().SetFromUtf8(text);
    }
    const std::uint32_t secondCode = GetLastErrorCode();
    ORSKA_TRACE(1, "GetLastErrorTextImpl", SOURCE, 71,
                "FormatMessageW() failed with GetLastError() = %u", secondCode);
    const std::wstring asked = std::to_wstring(in_code);
    if (in_allowRetry) {
        return orska_wstring(L"FormatMessageW() failed while getting error message for error " +
                             asked + L": ") +
               GetLastErrorTextImpl(secondCode, false);
    }
    // There are no spaces around the first number, on purpose: people search for this text.
    return orska_wstring(L"FormatMessageW() failed with error" + std::to_wstring(secondCode) +
                         L"while getting error message for error " + asked);
}

orska_wstring GetNtStatusText(std::uint32_t in_code) {
    std::string text;
    if (FormatNtStatusMessage(in_code, text)) {
        return orska_wstring().SetFromUtf8(text);
    }
    return orska_wstring(L"Unknown NTSTATUS " + std::to_wstring(in_code));
}

}  // namespace Orska::Support
