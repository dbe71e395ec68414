// RegexReplace against ICU's own matcher. A text whose replacement fails stays as it was.
//
// Input: the flags, then pattern, replacement and text in UTF-8.
#include <unicode/regex.h>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/strings/orska_wstring.h"
#include "fuzz/FuzzInput.h"

namespace {

using namespace Orska::Support;
using Orska::Fuzz::FuzzInput;
using Orska::Fuzz::Require;

/// In steps of ICU's match engine, some 10,000 states each. What takes longer is left out: the
/// search for a pattern may take time without end, by contract.
constexpr std::int32_t MOST_STEPS = 20;
constexpr std::size_t LONGEST = 120;

struct Expected {
    UErrorCode m_status = U_ZERO_ERROR;
    icu::UnicodeString m_text;
};

Expected ReplaceWithIcu(const orska_wstring& in_text, const orska_wstring& in_pattern,
                        const orska_wstring& in_replacement, std::uint32_t in_flags,
                        bool in_isFirstOnly) {
    Expected expected;
    icu::RegexMatcher matcher(*in_pattern.GetImpl(), in_flags, expected.m_status);
    if (U_FAILURE(expected.m_status)) return expected;
    matcher.setTimeLimit(MOST_STEPS, expected.m_status);
    matcher.reset(*in_text.GetImpl());
    expected.m_text = in_isFirstOnly
                          ? matcher.replaceFirst(*in_replacement.GetImpl(), expected.m_status)
                          : matcher.replaceAll(*in_replacement.GetImpl(), expected.m_status);
    return expected;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* in_data, std::size_t in_size) {
    if (in_size > LONGEST) return 0;
    FuzzInput input(in_data, in_size);
    // Flags that ICU has and RegexReplace does not let through are tried as well.
    const std::uint8_t raw = input.TakeByte();
    const bool isFirstOnly = (raw & 1) != 0;
    const std::int32_t flags = isFirstOnly ? INT32_MIN | raw : raw;
    const orska_wstring pattern(input.TakePart());
    const orska_wstring replacement(input.TakePart());
    const orska_wstring before(input.TakeRest());
    const Expected expected = ReplaceWithIcu(before, pattern, replacement,
                                             static_cast<std::uint32_t>(raw & 0x2E), isFirstOnly);
    if (expected.m_status == U_REGEX_TIME_OUT) return 0;
    orska_wstring text = before;
    try {
        text.RegexReplace(pattern, replacement, flags);
        Require(U_SUCCESS(expected.m_status), "a pattern that ICU refuses");
        Require(*text.GetImpl() == expected.m_text, "another text");
    } catch (const ErrorException& error) {
        Require(U_FAILURE(expected.m_status), "a pattern that ICU takes");
        Require(error.GetMessageKeyOrText() == orska_wstring("ICURegexError"), "another key");
        Require(text == before, "a changed text");
    }
    return 0;
}
