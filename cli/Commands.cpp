#include "cli/Commands.h"

#include <iostream>

#include "cli/Profile.h"

namespace Veltrane::Cli {

namespace {

/// The section of a DSN that has to exist.
const Values& FindDsn(const Profile& in_profile, const std::string& in_dsn) {
    const Values* section = in_profile.Find(in_dsn);
    if (section == nullptr) {
        throw CommandError(EXIT_NOT_FOUND, "There is no DSN \"" + in_dsn + "\".");
    }
    return *section;
}

/// Takes a value from the command line, where others can read it.
void SetOpenly(Values& io_values, const std::string& in_key, const std::string& in_value) {
    if (IsSecret(in_key)) {
        throw CommandError(EXIT_USAGE,
                           "A password on the command line can be read by other users. Use "
                           "--pwd-stdin,\n--pwd-file, --pwd-env or --pwd-prompt instead.");
    }
    if (IsSameKey(in_key, "DSN") || IsSameKey(in_key, "Driver")) {
        throw CommandError(EXIT_USAGE, in_key +
                                           " is not a value: name the DSN as the argument and "
                                           "the driver with --driver.");
    }
    io_values.Set(in_key, in_value);
}

Wish MakeWish(const Options& in_options) {
    Wish wish{in_options.m_dsn, in_options.m_driver, {}, in_options.m_unset, false};
    for (const auto& [key, value] : ParseConnectionString(in_options.m_connectionString)) {
        SetOpenly(wish.m_values, key, value);
    }
    for (const auto& [key, value] : in_options.m_fields) {
        SetOpenly(wish.m_values, key, value);
    }
    for (const std::string& assignment : in_options.m_assignments) {
        const auto [key, value] = ParseAssignment(assignment);
        SetOpenly(wish.m_values, key, value);
    }
    for (const std::string& key : wish.m_unset) {
        if (IsSameKey(key, "Driver") || wish.m_values.Find(key) != nullptr) {
            throw CommandError(EXIT_USAGE, key + " cannot be unset here.");
        }
    }
    if (in_options.m_password.IsGiven()) {
        std::string password = ReadPassword(in_options.m_password);
        wish.m_values.Set("PWD", password);
        Wipe(password);
    }
    return wish;
}

void Finish(const Options& in_options, const Change& in_change) {
    if (!in_options.m_output.m_isDryRun) {
        Execute(DriverManager(in_options.m_scope), in_change);
    }
    PrintChange(in_options.m_output, in_change);
}

}  // namespace

void AddDsn(const Options& in_options) {
    const Profile profile(in_options.m_scope);
    const Values* const section = profile.Find(in_options.m_dsn);
    if (section != nullptr && in_options.m_isIfMissing) {
        Finish(in_options, PlanChange({in_options.m_dsn, {}, {}, {}, false}, section));
        return;
    }
    if (section != nullptr && !in_options.m_isReplace) {
        throw CommandError(EXIT_EXISTS, "There is a DSN \"" + in_options.m_dsn + "\" already.");
    }
    Wish wish = MakeWish(in_options);
    wish.m_isWhole = true;
    if (wish.m_driver.empty()) {
        wish.m_driver = DEFAULT_DRIVER;
    }
    Finish(in_options, PlanChange(wish, section));
}

void SetDsn(const Options& in_options) {
    const Profile profile(in_options.m_scope);
    const Values& section = FindDsn(profile, in_options.m_dsn);
    Finish(in_options, PlanChange(MakeWish(in_options), &section));
}

void RemoveDsn(const Options& in_options) {
    const Profile profile(in_options.m_scope);
    const Values& section = FindDsn(profile, in_options.m_dsn);
    Finish(in_options,
           PlanRemoval({in_options.m_dsn, in_options.m_driver, {}, {}, false}, section));
}

void ShowDsn(const Options& in_options) {
    const Profile profile(in_options.m_scope);
    const Values& section = FindDsn(profile, in_options.m_dsn);
    Json values = Json::object();
    std::string text = "DSN=" + in_options.m_dsn + "\n";
    for (const auto& [key, value] : section) {
        const std::string shown = Shown(in_options.m_output, key, value);
        values[key] = shown;
        text += key + "=" + shown + "\n";
    }
    if (in_options.m_output.m_isJson) {
        PrintJson({{"name", in_options.m_dsn}, {"values", values}});
    } else {
        std::cout << text;
    }
}

void ListDsns(const Options& in_options) {
    const Profile profile(in_options.m_scope);
    const std::string driver = in_options.m_driver.empty() ? DEFAULT_DRIVER : in_options.m_driver;
    Json names = Json::array();
    for (const std::string& name : profile.Names()) {
        const std::string* const stored = profile.Find(name)->Find("Driver");
        if (stored == nullptr || !IsSameKey(*stored, driver)) {
            continue;
        }
        names.push_back(name);
        if (!in_options.m_output.m_isJson) {
            std::cout << name << "\n";
        }
    }
    if (in_options.m_output.m_isJson) {
        PrintJson(names);
    }
}

}  // namespace Veltrane::Cli
