#include "cli/dsn/DsnPlan.h"

#include "Setup/OdbcIniText.h"
#include "Setup/OdbcInstaller.h"
#include "VeltraneDialog/FieldRules.h"
#include "cli/dsn/DsnStore.h"
#include "cli/system/CommandError.h"

namespace Veltrane::Cli {

namespace {

using ODBC::OdbcIniText;

[[noreturn]] void Refuse(const std::string& in_key, const std::string& in_reason) {
    throw CommandError(EXIT_FAILED, in_key + ": " + in_reason);
}

Orska::Support::orska_wstring Utf8Text(const std::string& in_text) {
    Orska::Support::orska_wstring text;
    text.SetFromUtf8(in_text);
    return text;
}

void CheckField(const ODBC::DialogField& in_field, const std::string& in_value) {
    if (const char* const reason = ODBC::WhyRefused(in_field, in_value)) {
        Refuse(std::string(in_field.m_key), reason);
    }
}

/// What is new has to be what the setup library takes and what reads back as it is. What is stored
/// already may stay.
void CheckSection(const DsnPlan& in_plan) {
    const auto isStored = [&](const std::string& in_key, const std::string& in_value) {
        const std::string* const before = in_plan.m_before.Find(in_key);
        return before != nullptr && !before->empty() && *before == in_value;
    };
    for (const ODBC::DialogField& field : ODBC::DIALOG_FIELDS) {
        const std::string key(field.m_key);
        const std::string value = key == "DSN" ? in_plan.m_name : in_plan.m_after.Get(key);
        if (!isStored(key, value)) CheckField(field, value);
    }
    if (!ODBC::OdbcInstaller::ValidDSN(Utf8Text(in_plan.m_name))) {
        Refuse("DSN", "The ODBC installer refuses this name.");
    }
    for (const auto& [key, value] : in_plan.m_after) {
        if (!isStored(key, value) && !OdbcIniText::IsCarriableLine(key, value)) {
            Refuse(key, "No line of odbc.ini can hold this key and value unchanged.");
        }
    }
}

/// The section as it will be; a new one in the order of the setup library.
Entries MakeSection(const DsnWish& in_wish, const Entries& in_current) {
    Entries merged = in_wish.m_isReplaced ? Entries() : in_current;
    for (const auto& [key, value] : in_wish.m_values) merged.Set(key, value);
    for (const std::string& key : in_wish.m_unset) merged.Remove(key);
    Entries section{{"Driver", in_wish.m_driver}};
    for (const std::string_view key : FIELD_KEYS) {
        const std::string value = merged.Get(key);
        if (IsRequiredKey(key) || !value.empty()) section.Set(key, value);
    }
    for (const auto& [key, value] : merged) {
        if (section.Find(key) == nullptr && !IsFieldKey(key)) section.Set(key, value);
    }
    return section;
}

/// Whether a key has the same value in both; an empty field is as good as none.
bool IsSame(const std::string& in_key, const std::string* in_left, const std::string* in_right) {
    if (in_left != nullptr && in_right != nullptr) {
        const bool isDriver = EqualsIgnoringCase(in_key, "Driver");
        return isDriver ? EqualsIgnoringCase(*in_left, *in_right) : *in_left == *in_right;
    }
    const std::string* const present = in_left != nullptr ? in_left : in_right;
    return present == nullptr || (IsFieldKey(in_key) && present->empty());
}

/// The setup library of one driver has no business with the DSNs of another one.
void CheckOwner(const DsnWish& in_wish, const Entries& in_current) {
    const std::string owner = in_current.Get("Driver");
    if (owner.empty() || EqualsIgnoringCase(owner, in_wish.m_driver)) return;
    throw CommandError(EXIT_FAILED, "The DSN \"" + in_wish.m_name + "\" is one of the driver \"" +
                                        owner + "\", not of \"" + in_wish.m_driver +
                                        "\". If that is meant, give --driver.");
}

}  // namespace

bool IsSameSection(const Entries& in_left, const Entries& in_right) {
    for (const auto& [key, value] : in_left) {
        if (!IsSame(key, &value, in_right.Find(key))) return false;
    }
    for (const auto& [key, value] : in_right) {
        if (!IsSame(key, &value, in_left.Find(key))) return false;
    }
    return true;
}

std::string WhyNoKey(std::string_view in_key) {
    if (EqualsIgnoringCase(in_key, "DSN")) return "the name of the DSN is the command's argument";
    if (EqualsIgnoringCase(in_key, "Driver")) return "the driver is given with --driver";
    return {};
}

DsnPlan MakePlan(const DsnWish& in_wish, const std::optional<Entries>& in_current) {
    if (in_current) CheckOwner(in_wish, *in_current);
    DsnPlan plan;
    plan.m_name = in_wish.m_name;
    plan.m_driver = in_wish.m_driver;
    plan.m_before = in_current.value_or(Entries());
    if (in_wish.m_isAbsent) {
        plan.m_action = in_current ? Action::Remove : Action::None;
        return plan;
    }
    plan.m_after = MakeSection(in_wish, plan.m_before);
    CheckSection(plan);
    if (!in_current) {
        plan.m_action = Action::Add;
    } else if (!IsSameSection(plan.m_before, plan.m_after)) {
        plan.m_action = Action::Change;
    }
    return plan;
}

std::vector<std::string> Difference(const DsnPlan& in_plan, bool in_areSecretsShown) {
    std::vector<std::string> lines;
    if (in_plan.m_action == Action::None) return lines;
    const auto add = [&](char in_sign, const Entry& in_entry, const Entries& in_others) {
        if (IsSame(in_entry.first, &in_entry.second, in_others.Find(in_entry.first))) return;
        lines.push_back(in_sign + in_entry.first + "=" + ShownValue(in_entry, in_areSecretsShown));
    };
    if (in_plan.m_action != Action::Change) {
        lines.push_back((in_plan.m_action == Action::Add ? "+[" : "-[") + in_plan.m_name + "]");
    }
    for (const Entry& entry : in_plan.m_before) {
        add('-', entry, in_plan.m_after);
        const std::string* const value = in_plan.m_after.Find(entry.first);
        if (value != nullptr) add('+', {entry.first, *value}, in_plan.m_before);
    }
    for (const Entry& entry : in_plan.m_after) {
        if (in_plan.m_before.Find(entry.first) == nullptr) add('+', entry, in_plan.m_before);
    }
    return lines;
}

std::string DescribeAction(Action in_action, bool in_isDryRun) {
    constexpr const char* NAMES[] = {"unchanged", "added", "changed", "removed"};
    const bool isWished = in_isDryRun && in_action != Action::None;
    return std::string(isWished ? "would be " : "") + NAMES[static_cast<std::size_t>(in_action)];
}

}  // namespace Veltrane::Cli
