#include "cli/commands/Commands.h"

#include "VeltraneDialog/FieldRules.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

ExitCode RunCommand(const CommandLine& in_line) {
    constexpr std::pair<CommandId, ExitCode (*)(const CommandLine&)> COMMANDS[] = {
        {CommandId::Add, AddDsn},
        {CommandId::Set, SetDsn},
        {CommandId::Edit, EditDsn},
        {CommandId::Remove, RemoveDsns},
        {CommandId::Show, ShowDsn},
        {CommandId::List, ListDsns},
        {CommandId::Apply, ApplyDescriptions},
        {CommandId::Export, ExportDsns},
        {CommandId::Import, ImportFile},
        {CommandId::Check, CheckDsns},
        {CommandId::DriverRegister, RegisterDriver},
        {CommandId::DriverUnregister, UnregisterDriver},
        {CommandId::DriverList, ListDrivers},
        {CommandId::Where, ShowPlaces},
        {CommandId::Doctor, RunDoctor},
        {CommandId::Test, TestDsn}};
    for (const auto& [id, run] : COMMANDS) {
        if (id == in_line.m_command) return run(in_line);
    }
    return EXIT_USAGE;
}

std::string GetDriver(const CommandLine& in_line) {
    return in_line.Get("--driver", DEFAULT_DRIVER);
}

Scope GetScope(const CommandLine& in_line) {
    return in_line.Has("--system") ? Scope::System : Scope::User;
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
        if (other.Load().HasSection(in_dsn) && !ODBC::IsReservedName(in_dsn)) {
            text += " There is one in " + other.GetPath() + ": try " +
                    (isSystem ? "without --system." : "--system.");
        }
    } catch (const std::exception&) {
        // The other file is only for a hint.
    }
    return {EXIT_NOT_FOUND, text};
}

}  // namespace Veltrane::Cli
