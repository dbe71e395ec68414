/// One change of one DSN: planned from what there is, shown, and done through the installer.
#ifndef CLI_CHANGE_H
#define CLI_CHANGE_H

#include <string>
#include <vector>

#include "cli/DriverManager.h"
#include "cli/Values.h"

namespace Veltrane::Cli {

/// What is asked for.
struct Wish {
    std::string m_dsn;
    std::string m_driver;              ///< empty: the one that the DSN has
    Values m_values;                   ///< to be set
    std::vector<std::string> m_unset;  ///< keys to be removed
    bool m_isWhole = false;            ///< keys that are not mentioned go
};

/// The section as it is and as it is to be.
struct Change {
    std::string m_dsn;
    std::string m_driver;
    bool m_exists = false;
    bool m_isRemoval = false;
    Values m_before;
    Values m_after;

    /// The keys whose values differ.
    std::vector<std::string> DifferentKeys() const;
    /// Keys of the section that the setup component does not know and that stay.
    std::vector<std::string> KeptKeys() const;
    bool IsNeeded() const { return m_isRemoval || !m_exists || !DifferentKeys().empty(); }
    /// "added", "changed", "removed" or "unchanged".
    const char* ResultName() const;
};

/// @param in_section  the section as it is; null when there is none
/// @throws CommandError when a value, or the name of a new DSN, could not be stored
Change PlanChange(const Wish& in_wish, const Values* in_section);

/// The removal of a DSN; the driver is the one that it has unless the wish names one.
Change PlanRemoval(const Wish& in_wish, const Values& in_section);

/// Does nothing when nothing differs.
/// @throws InstallerError with code and text, and with path and reason where the file is at fault
void Execute(const DriverManager& in_manager, const Change& in_change);

}  // namespace Veltrane::Cli

#endif
