#include "cli/commands/Commands.h"

#include "VeltraneDialog/FieldRules.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

ExitCode RunCommand(const CommandLine& in_line) {
    // In the order of CommandId.
    constexpr ExitCode (*COMMANDS[])(const CommandLine&) = {
        AddDsn,      SetDsn,     EditDsn,           RemoveDsns,
        ShowDsn,     ListDsns,   ApplyDescriptions, ExportDsns,
        ImportFile,  CheckDsns,  RegisterDriver,    UnregisterDriver,
        ListDrivers, ShowPlaces, RunDoctor,         TestDsn};
    static_assert(std::size(COMMANDS) == static_cast<std::size_t>(CommandId::Test) + 1);
    return COMMANDS[static_cast<std::size_t>(in_line.m_command)](in_line);
}

std::string GetDriver(const CommandLine& in_line) {
    return in_line.Get("--driver", DEFAULT_DRIVER);
}

Scope GetScope(const CommandLine& in_line) {
    return in_line.Has("--system") ? Scope::System : Scope::User;
}

std::string GetFile(const CommandLine& in_line) {
    const std::string& file = in_line.m_arguments.front();
    return file == "-" ? std::string() : file;
}

DescriptionFormat GetFormat(const CommandLine& in_line, DescriptionFormat in_default) {
    if (!in_line.Has("--format")) return in_default;
    const std::string name = in_line.Get("--format");
    if (name == "ini") return DescriptionFormat::INI;
    if (name == "json") return DescriptionFormat::JSON;
    Refuse("--format is json or ini.");
}

CommandError DsnExists(const DsnStore& in_store, const std::string& in_dsn) {
    return {EXIT_EXISTS,
            "There is a DSN " + Quote(in_dsn) + " already in " + in_store.GetPath() + "."};
}

CommandError NoSuchDsn(const DsnStore& in_store, const std::string& in_dsn) {
    std::string text = "There is no DSN " + Quote(in_dsn) + " in " + in_store.GetPath() + ".";
    const bool isSystem = in_store.GetScope() == Scope::System;
    const DsnStore other(isSystem ? Scope::User : Scope::System);
    try {
        if (other.Read().HasSection(in_dsn) && !ODBC::IsReservedName(in_dsn)) {
            text += " There is one in " + other.GetPath() + ": try " +
                    (isSystem ? "without --system." : "--system.");
        }
    } catch (const std::exception&) {
        // The other file is only for a hint.
    }
    return {EXIT_NOT_FOUND, text};
}

}  // namespace Veltrane::Cli
