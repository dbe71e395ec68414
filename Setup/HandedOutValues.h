/// What a request has read from the profile, so that a value that it has not changed is written as
/// it was stored: whole where the record got its beginning, in its bytes where they are no text.
#ifndef SETUP_HANDEDOUTVALUES_H
#define SETUP_HANDEDOUTVALUES_H

#include <algorithm>
#include <utility>
#include <vector>

#include "Setup/VeltraneDSNConfiguration.h"

namespace Veltrane::ODBC {

/// @tparam Stored  how the profile keeps a value
template <typename Stored>
class HandedOutValues {
public:
    using orska_wstring = Orska::Support::orska_wstring;

    /// @param in_given  the text that the reader got
    void Remember(const orska_wstring& in_key, const orska_wstring& in_given, Stored in_stored) {
        // A Save looks at the stored driver but always writes the one of its request.
        if (in_key == DSN_CONFIG_KEY_DRIVER) return;
        m_values.push_back({in_key, in_given, std::move(in_stored)});
    }

    /// The stored value whose reader got this text, under whatever name of a data source; null when
    /// the text is a new one. The last reader counts.
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
