#include "cli/Change.h"

#include <algorithm>

#include "Setup/OdbcIniText.h"
#include "Setup/OdbcIniUpdate.h"
#include "cli/CommandError.h"
#include "cli/InitialValuesFile.h"
#include "cli/ProfileFile.h"

namespace Veltrane::Cli {

namespace {

/// Keys that the setup component leaves out of the section when they are empty.
constexpr const char* OPTIONAL_KEYS[] = {"Namespace", "LoginMode", "UID", "PWD"};
constexpr mode_t NEW_FILE = 0600;

bool IsSame(const std::string* in_a, const std::string* in_b) {
    return in_a == nullptr || in_b == nullptr ? in_a == in_b : *in_a == *in_b;
}

void CheckValues(const Values& in_values) {
    for (const auto& [key, value] : in_values) {
        if (!ODBC::OdbcIniText::IsCarriableLine(key, value)) {
            throw CommandError(EXIT_USAGE, "The value of " + key +
                                               " cannot be stored: no line of odbc.ini can hold "
                                               "control characters, outer blanks or more than "
                                               "999 bytes.");
        }
    }
}

/// Writes the keys that the setup component dropped or does not write, in one locked step.
void WriteOtherKeys(const std::string& in_path, const Change& in_change) {
    ODBC::OdbcIniUpdate update(in_path, NEW_FILE);
    bool isDone = update.IsOpen();
    for (const auto& [key, value] : in_change.m_before) {
        if (!IsKnown(key) && in_change.m_after.Find(key) == nullptr) {
            isDone = isDone && update.RemoveKey(in_change.m_dsn, key);
        }
    }
    for (const auto& [key, value] : in_change.m_after) {
        if (!IsKnown(key)) {
            isDone = isDone && update.Set(in_change.m_dsn, key, value);
        }
    }
    if (!isDone || !update.Commit()) {
        const std::string problem = DescribeUnwritable(in_path);
        throw InstallerError(
            "The keys that the setup component does not know could not be "
            "written: " +
            (problem.empty() ? in_path : problem));
    }
}

std::string Explain(const std::string& in_path, const Change& in_change,
                    const InstallerError& in_error) {
    std::string text = in_error.what();
    const std::string problem = DescribeUnwritable(in_path);
    if (!problem.empty()) {
        text += "\n" + problem;
    }
    for (const char* key : {"Server", "Database"}) {
        const std::string* value = in_change.m_after.Find(key);
        if (!in_change.m_isRemoval && (value == nullptr || value->empty())) {
            text += std::string("\nA DSN needs a value for ") + key + ".";
        }
    }
    return text;
}

void Configure(const DriverManager& in_manager, const Change& in_change) {
    FieldValues fields{{"DSN", in_change.m_dsn}};
    fields.reserve(8);
    for (const auto& [key, value] : in_change.m_after) {
        if (IsKnown(key) && !IsSameKey(key, "Driver")) {
            fields.emplace_back(key, value);
        }
    }
    const InitialValuesFile values(fields);
    for (auto& [key, value] : fields) {
        if (IsSecret(key)) {
            Wipe(value);
        }
    }
    in_manager.Configure(in_change.m_exists ? Request::Configure : Request::Add, in_change.m_driver,
                         in_change.m_dsn);
}

}  // namespace

std::vector<std::string> Change::DifferentKeys() const {
    std::vector<std::string> keys;
    for (const auto& [key, value] : m_before) {
        if (!IsSame(&value, m_after.Find(key))) {
            keys.push_back(key);
        }
    }
    for (const auto& [key, value] : m_after) {
        if (m_before.Find(key) == nullptr) {
            keys.push_back(key);
        }
    }
    return keys;
}

std::vector<std::string> Change::KeptKeys() const {
    std::vector<std::string> keys;
    for (const auto& [key, value] : m_before) {
        if (!IsKnown(key) && IsSame(&value, m_after.Find(key))) {
            keys.push_back(key);
        }
    }
    return keys;
}

const char* Change::ResultName() const {
    if (m_isRemoval) {
        return "removed";
    }
    return !m_exists ? "added" : IsNeeded() ? "changed" : "unchanged";
}

Change PlanRemoval(const Wish& in_wish, const Values& in_section) {
    const std::string* const driver = in_section.Find("Driver");
    return {
        in_wish.m_dsn, in_wish.m_driver.empty() && driver != nullptr ? *driver : in_wish.m_driver,
        true,          true,
        in_section,    {}};
}

Change PlanChange(const Wish& in_wish, const Values* in_section) {
    if (in_section == nullptr && !DriverManager::IsValidName(in_wish.m_dsn)) {
        throw CommandError(EXIT_USAGE, "\"" + in_wish.m_dsn +
                                           "\" cannot be the name of a DSN: it has 1 to 32 bytes, "
                                           "none of []{}(),;?*=!@\\.");
    }
    CheckValues(in_wish.m_values);
    const Values before = in_section != nullptr ? *in_section : Values();
    const std::string* const stored = before.Find("Driver");
    const std::string driver =
        !in_wish.m_driver.empty() || stored == nullptr ? in_wish.m_driver : *stored;
    Change change{in_wish.m_dsn, driver, in_section != nullptr,
                  false,         before, in_wish.m_isWhole ? Values() : before};
    change.m_after.Set("Driver", driver);
    for (const auto& [key, value] : in_wish.m_values) {
        change.m_after.Set(key, value);
    }
    for (const std::string& key : in_wish.m_unset) {
        change.m_after.Remove(key);
    }
    for (const char* key : OPTIONAL_KEYS) {
        const std::string* value = change.m_after.Find(key);
        if (value != nullptr && value->empty()) {
            change.m_after.Remove(key);
        }
    }
    return change;
}

void Execute(const DriverManager& in_manager, const Change& in_change) {
    if (!in_change.IsNeeded()) {
        return;
    }
    const std::string path = ProfilePath(in_manager.GetScope());
    const std::vector<std::string> different = in_change.DifferentKeys();
    const bool isForSetup = !in_change.m_exists || in_change.m_isRemoval ||
                            std::any_of(different.begin(), different.end(), IsKnown);
    try {
        if (in_change.m_isRemoval) {
            in_manager.Configure(Request::Remove, in_change.m_driver, in_change.m_dsn);
        } else if (isForSetup) {
            Configure(in_manager, in_change);
        }
    } catch (const InstallerError& error) {
        throw InstallerError(Explain(path, in_change, error));
    }
    const bool hasOthers =
        std::any_of(in_change.m_after.begin(), in_change.m_after.end(),
                    [](const Values::Item& in_item) { return !IsKnown(in_item.first); });
    if (!in_change.m_isRemoval && (hasOthers || !isForSetup)) {
        WriteOtherKeys(path, in_change);
    }
}

}  // namespace Veltrane::Cli
