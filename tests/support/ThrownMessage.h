/// The exception of an action as one text for comparison: the key and the parameters of
/// an ErrorException.
#ifndef TESTS_SUPPORT_THROWNMESSAGE_H
#define TESTS_SUPPORT_THROWNMESSAGE_H

#include <string>

#include "Exceptions/ErrorException.h"

namespace Orska::Test {

/// "Key" or "Key(first, second)"; "nothing" when nothing is thrown. Other exceptions pass.
template <typename Exception = Support::ErrorException, typename Action>
std::string ThrownMessage(const Action& in_action) {
    try {
        in_action();
    } catch (const Exception& exception) {
        std::string text = exception.GetMessageKeyOrText().GetAsUtf8();
        const char* separator = "(";
        for (const Support::orska_wstring& parameter : exception.GetMessageParameters()) {
            text += separator + parameter.GetAsUtf8();
            separator = ", ";
        }
        return *separator == ',' ? text + ")" : text;
    }
    return "nothing";
}

}  // namespace Orska::Test

#endif
