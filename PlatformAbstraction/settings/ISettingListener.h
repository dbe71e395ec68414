/// Callbacks for changed settings. The setting reader calls them with its lock held: they may use
/// the reader, but must not wait for another thread that needs it.
#ifndef PLATFORMABSTRACTION_ISETTINGLISTENER_H
#define PLATFORMABSTRACTION_ISETTINGLISTENER_H

#include <string>

#include "../../tools/RequireCpp20.h"

namespace Orska::Support {

class ISettingListener {
public:
    virtual ~ISettingListener() = default;

    /// Called before the new value is stored; an exception leaves the old value in place.
    /// @param in_key       as the caller of SetSetting spelled it
    /// @param in_oldValue  the stored value itself, valid during the call; empty for a new key
    virtual void OnSettingChanged(const std::string& in_key, const std::string& in_oldValue,
                                  const std::string& in_newValue) = 0;
};

/// Called when the INI path or the name of the registry key was replaced.
class ISettingChangeObserver {
public:
    virtual ~ISettingChangeObserver() = default;

    virtual void OnSettingSourceChanged() = 0;
};

}  // namespace Orska::Support

#endif
