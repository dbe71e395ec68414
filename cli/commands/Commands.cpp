#include "cli/commands/Commands.h"

#include "VeltraneDialog/FieldRules.h"

namespace Veltrane::Cli {

ExitCode RunCommand(const CommandLine& in_line) {
    switch (in_line.m_command) {
        case CommandId::Add:
            return AddDsn(in_line);
        case CommandId::Set:
            return SetDsn(in_line);
        case CommandId::Remove:
            return RemoveDsns(in_line);
        case CommandId::Show:
            return ShowDsn(in_line);
        case CommandId::List:
            return ListDsns(in_line);
        case CommandId::Apply:
            return ApplyDescriptions(in_line);
        case CommandId::Export:
            return ExportDsns(in_line);
        case CommandId::Check:
            return CheckDsns(in_line);
        case CommandId::DriverRegister:
            return RegisterDriver(in_line);
        case CommandId::DriverUnregister:
            return UnregisterDriver(in_line);
        case CommandId::DriverList:
            return ListDrivers(in_line);
        case CommandId::Where:
            return ShowPlaces(in_line);
        case CommandId::Doctor:
            return RunDoctor(in_line);
        case CommandId::Test:
            return TestDsn(in_line);
    }
    return EXIT_USAGE;
}

Scope GetScope(const CommandLine& in_line) {
    return in_line.Has(OptionId::System) ? Scope::System : Scope::User;
}

CommandError NoSuchDsn(const DsnStore& in_store, const std::string& in_dsn) {
    std::string text = "There is no DSN \"" + in_dsn + "\" in " + in_store.GetPath() + ".";
    const bool isSystem = in_store.GetScope() == Scope::System;
    const DsnStore other(isSystem ? Scope::User : Scope::System);
    try {
        if (other.Load().HasSection(in_dsn) && !ODBC::IsReservedName(in_dsn)) {
            text += " There is one in " + other.GetPath() + ": try " +
                    (isSystem ? "without --system." : "--system.");
        }
    } catch (const CommandError&) {
        // The other file has nothing to do with the command.
    }
    return {EXIT_NOT_FOUND, text};
}

}  // namespace Veltrane::Cli
