/// The values that a request has read from the profile. A value that it did not change is written
/// as it was stored: in full if the record got it truncated, byte for byte if it is not valid text.
#ifndef SETUP_HANDEDOUTVALUES_H
#define SETUP_HANDEDOUTVALUES_H

#include <algorithm>
#include <utility>
#include <vector>

#include "Setup/VeltraneDSNConfiguration.h"

namespace Veltrane::ODBC {

/// @tparam Stored  a value as the profile stores it
template <typename Stored>
class HandedOutValues {
public:
    using orska_wstring = Orska::Support::orska_wstring;

    /// @param in_given  the text that was returned to the reader
    void Remember(const orska_wstring& in_key, const orska_wstring& in_given, Stored in_stored) {
        // Save reads the stored driver but always writes the driver of its request.
        if (in_key == DSN_CONFIG_KEY_DRIVER) return;
        m_values.push_back({in_key, in_given, std::move(in_stored)});
    }

    /// Returns the stored value that was last returned as this text, for any data source; null for
    /// a new text. Owned by this object.
    const Stored* Find(const orska_wstring& in_key, const orska_wstring& in_given) const {
        const auto value =
            std::find_if(m_values.rbegin(), m_values.rend(), [&](const Value& in_value) {
                return in_value.m_key == in_key && in_value.m_given == in_given;
            });
        return value == m_values.rend() ? nullptr : &value->m_stored;
    }

private:
    struct Value {
        orska_wstring m_key;
        orska_wstring m_given;
        Stored m_stored;
    };

    std::vector<Value> m_values;
};

}  // namespace Veltrane::ODBC

#endif
