#include "cli/dsn/ChangeLock_Windows.h"
#include "cli/dsn/DsnStore.h"
#include "cli/dsn/RegistryRoot_Windows.h"
#include "cli/system/CommandError.h"

namespace Veltrane::Cli {

namespace {

constexpr char DATA_SOURCES[] = "ODBC Data Sources";

RegistryRoot RootOf(Scope in_scope) {
    return in_scope == Scope::System ? RegistryRoot::OfSystemDsns() : RegistryRoot::OfUserDsns();
}

/// The value with which a DSN cannot be carried by the text of a file; empty when there is none.
std::string FindUncarriable(const RegistryRoot::Section& in_section) {
    for (const auto& [key, value] : in_section.m_entries) {
        if (!ODBC::OdbcIniText::IsCarriableLine(key, value)) return key;
    }
    return in_section.m_foreignValue;
}

bool IsSet(unsigned long in_error) { return in_error == 0; }

}  // namespace

DsnStore::DsnStore(Scope in_scope) : m_scope(in_scope), m_path(RootOf(in_scope).GetName()) {}

ODBC::OdbcIniText DsnStore::Load() const {
    const RegistryRoot root = RootOf(m_scope);
    std::string text;
    for (const std::string& name : root.GetSectionNames()) {
        RegistryRoot::Section section;
        if (!ODBC::OdbcIniText::IsCarriableSection(name) || !root.Read(name, section)) continue;
        text += "[" + name + "]\n";
        for (const auto& [key, value] : section.m_entries) {
            // What a line cannot hold shows as far as it can; Read refuses it.
            text += key + "=" + value.substr(0, value.find_first_of("\r\n")) + "\n";
        }
    }
    return ODBC::OdbcIniText(std::move(text));
}

std::optional<Entries> DsnStore::Read(const std::string& in_dsn) const {
    RegistryRoot::Section section;
    if (in_dsn.empty() || in_dsn.find('\\') != std::string::npos || ODBC::IsReservedName(in_dsn)) {
        return std::nullopt;
    }
    if (!RootOf(m_scope).Read(in_dsn, section)) return std::nullopt;
    const std::string uncarriable = FindUncarriable(section);
    if (!uncarriable.empty()) {
        throw CommandError(EXIT_FAILED, m_path + "\\" + in_dsn + ": the value " + uncarriable +
                                            " is no line of text; nothing here could write it "
                                            "back unchanged");
    }
    return Entries(section.m_entries);
}

std::optional<Entries> DsnStore::ReadSettled(const std::string& in_dsn) const {
    const ChangeLock lock(m_scope, m_path);
    return Read(in_dsn);
}

bool DsnStore::PutBack(const std::string& in_dsn, const Entries& in_entries) const {
    const RegistryRoot root = RootOf(m_scope);
    RegistryRoot::Section section;
    // Gone meanwhile: nothing to put a key into.
    if (!root.Read(in_dsn, section)) return false;
    for (const auto& [key, value] : in_entries) {
        if (!IsSet(root.Write(in_dsn, key, value))) return false;
    }
    return true;
}

bool DsnStore::Restore(const std::string& in_dsn, const Entries& in_entries) const {
    const RegistryRoot root = RootOf(m_scope);
    if (!IsSet(root.RemoveSection(in_dsn))) return false;
    if (in_entries.IsEmpty()) return IsSet(root.RemoveValue(DATA_SOURCES, in_dsn));
    for (const auto& [key, value] : in_entries) {
        if (!IsSet(root.Write(in_dsn, key, value))) return false;
    }
    return IsSet(root.Write(DATA_SOURCES, in_dsn, in_entries.Get("Driver")));
}

std::string DsnStore::WhyNotWritable() const { return RootOf(m_scope).WhyNotWritable(); }

}  // namespace Veltrane::Cli
