/// Who is told of changed settings. Both are called with the setting reader's lock held: they may
/// use the reader again, and must not wait for another thread that needs it.
#ifndef PLATFORMABSTRACTION_ISETTINGLISTENER_H
#define PLATFORMABSTRACTION_ISETTINGLISTENER_H

#include <string>

#include "../../tools/RequireCpp20.h"

namespace Orska::Support {

class ISettingListener {
public:
    virtual ~ISettingListener() = default;

    /// Called before the new value is stored; an exception leaves the old value in place.
    /// @param in_key       as spelled by whoever sets the value
    /// @param in_oldValue  the stored value itself, valid during the call; empty for a new key
    virtual void OnSettingChanged(const std::string& in_key, const std::string& in_oldValue,
                                  const std::string& in_newValue) = 0;
};

/// Told that the INI path or the name of the registry key was replaced.
class ISettingChangeObserver {
public:
    virtual ~ISettingChangeObserver() = default;

    virtual void OnSettingSourceChanged() = 0;
};

}  // namespace Orska::Support

#endif
