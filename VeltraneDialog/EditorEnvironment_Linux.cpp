#include <sys/auxv.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

#include "VeltraneDialog/EditorEnvironment.h"

namespace Veltrane::ODBC {

namespace {

/// A host that brings libraries of its own points the loader and Qt at them.
constexpr std::string_view OF_THE_HOST[] = {"LD_LIBRARY_PATH", "LD_PRELOAD", "LD_AUDIT",
                                            "QT_PLUGIN_PATH", "QT_QPA_PLATFORM_PLUGIN_PATH"};

constexpr std::string_view HARMLESS[] = {"TERM",        "LANG",     "LC_ALL", "LC_CTYPE",
                                         "LC_MESSAGES", "LANGUAGE", "TZ"};

template <std::size_t COUNT>
bool Contains(const std::string_view (&in_names)[COUNT], std::string_view in_name) {
    return std::find(std::begin(in_names), std::end(in_names), in_name) != std::end(in_names);
}

bool IsPassedOn(std::string_view in_entry, bool in_isPrivileged) {
    const std::string_view name = in_entry.substr(0, in_entry.find('='));
    if (in_isPrivileged) {
        // No path to a file of the caller's choice.
        return Contains(HARMLESS, name) && in_entry.find('/') == std::string_view::npos;
    }
    return !Contains(OF_THE_HOST, name);
}

}  // namespace

std::vector<char*> EditorEnvironment() {
    const bool isPrivileged = getauxval(AT_SECURE) != 0;
    std::vector<char*> entries;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        if (IsPassedOn(*entry, isPrivileged)) {
            entries.push_back(*entry);
        }
    }
    entries.push_back(nullptr);
    return entries;
}

}  // namespace Veltrane::ODBC
