#include "cli/CommandLine.h"

#include <CLI/CLI.hpp>
#include <functional>

#include "cli/Commands.h"
#include "cli/Doctor.h"
#include "cli/DriverCommands.h"
#include "cli/FleetCommands.h"

namespace Veltrane::Cli {

namespace {

using Action = void (*)(const Options&);

/// Builds the commands; the options and the chosen action outlive the parsing.
class CommandLine {
public:
    CommandLine();
    int Run(int in_count, char** in_arguments);

private:
    CLI::App* Add(const char* in_name, const char* in_help, Action in_action);
    CLI::App* Add(CLI::App& io_parent, const char* in_name, const char* in_help, Action in_action);
    void AddDriverCommands();
    CLI::App* AddNamed(const char* in_name, const char* in_help, Action in_action);
    void AddDriver(CLI::App& io_command);
    void AddValues(CLI::App& io_command);
    void AddPassword(CLI::App& io_command);
    void AddField(CLI::App& io_command, const char* in_option, const char* in_key,
                  const char* in_help);
    void AddFlag(CLI::App& io_command, const char* in_option, bool& out_flag, const char* in_help);

    CLI::App m_app{"Manages the DSNs of the Veltrane ODBC driver through the ODBC installer.",
                   "veltrane-dsn"};
    Options m_options;
    Action m_action = nullptr;
    bool m_isUser = true;  ///< only there to be said
};

void CommandLine::AddFlag(CLI::App& io_command, const char* in_option, bool& out_flag,
                          const char* in_help) {
    io_command.add_flag(in_option, out_flag, in_help);
}

CLI::App* CommandLine::Add(const char* in_name, const char* in_help, Action in_action) {
    return Add(m_app, in_name, in_help, in_action);
}

CLI::App* CommandLine::Add(CLI::App& io_parent, const char* in_name, const char* in_help,
                           Action in_action) {
    CLI::App* command = io_parent.add_subcommand(in_name, in_help);
    command->callback([this, in_action] { m_action = in_action; });
    CLI::Option* user = command->add_flag("--user", m_isUser, "Work on the user's DSNs (default)");
    command
        ->add_flag_callback(
            "--system", [this] { m_options.m_scope = Scope::System; }, "Work on system DSNs")
        ->excludes(user);
    AddFlag(*command, "--json", m_options.m_output.m_isJson, "Print JSON");
    return command;
}

CLI::App* CommandLine::AddNamed(const char* in_name, const char* in_help, Action in_action) {
    CLI::App* command = Add(in_name, in_help, in_action);
    command->add_option("name", m_options.m_dsn, "Name of the DSN")->required();
    AddFlag(*command, "--show-secrets", m_options.m_output.m_hasSecrets,
            "Show passwords, not ********");
    return command;
}

void CommandLine::AddDriver(CLI::App& io_command) {
    io_command.add_option("--driver", m_options.m_driver, "The driver's name in odbcinst.ini");
}

void CommandLine::AddField(CLI::App& io_command, const char* in_option, const char* in_key,
                           const char* in_help) {
    io_command.add_option_function<std::string>(
        in_option,
        [this, in_key](const std::string& in_value) {
            m_options.m_fields.emplace_back(in_key, in_value);
        },
        in_help);
}

void CommandLine::AddPassword(CLI::App& io_command) {
    PasswordSource& source = m_options.m_password;
    CLI::Option_group* group = io_command.add_option_group("Password");
    group->add_flag("--pwd-stdin", source.m_isInput, "Password: first line of standard input");
    group->add_flag("--pwd-prompt", source.m_isPrompt, "Password: asked for on the terminal");
    group->add_option("--pwd-file", source.m_file, "Password: first line of this file");
    group->add_option("--pwd-env", source.m_variable, "Password: this environment variable");
    group->require_option(0, 1);
}

void CommandLine::AddValues(CLI::App& io_command) {
    AddDriver(io_command);
    AddField(io_command, "--server", "Server", "Server");
    AddField(io_command, "--database", "Database", "Database");
    AddField(io_command, "--namespace", "Namespace", "Cognos namespace");
    AddField(io_command, "--login-mode", "LoginMode", "MicroStrategy login mode");
    AddField(io_command, "--uid", "UID", "User id");
    io_command.add_option("-p", m_options.m_assignments, "KEY=VALUE; may be repeated")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    io_command.add_option("--unset", m_options.m_unset, "Remove this key; may be repeated")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    io_command.add_option("--connection-string", m_options.m_connectionString,
                          "KEY=VALUE;KEY={VALUE}");
    AddPassword(io_command);
}

void CommandLine::AddDriverCommands() {
    CLI::App* driver = m_app.add_subcommand("driver", "Register drivers and list them");
    driver->require_subcommand(1);
    CLI::App* add = Add(*driver, "register", "Register the driver", RegisterTheDriver);
    add->add_option("--setup", m_options.m_setupLibrary, "Path of the setup library")->required();
    add->add_option("--library", m_options.m_driverLibrary, "Path of the driver itself");
    AddFlag(*add, "--replace", m_options.m_isReplace, "Change a registration that exists");
    CLI::App* remove =
        Add(*driver, "unregister", "Take the registration back", UnregisterTheDriver);
    Add(*driver, "list", "List the registered drivers", PrintDrivers);
    CLI::App* where = Add("where", "Print the files in use", PrintPlaces);
    CLI::App* doctor = Add("doctor", "Find what is wrong and say how to repair it", Examine);
    for (CLI::App* command : {add, remove, where, doctor}) {
        AddDriver(*command);
    }
}

CommandLine::CommandLine() {
    m_app.require_subcommand(1);
    m_app.set_help_flag("-h,--help", "Print this help");
    CLI::App* add = AddNamed("add", "Add a DSN", AddDsn);
    AddValues(*add);
    CLI::Option* ifMissing =
        add->add_flag("--if-missing", m_options.m_isIfMissing, "Leave a DSN that exists as it is");
    add->add_flag("--replace", m_options.m_isReplace, "Replace a DSN that exists, all keys of it")
        ->excludes(ifMissing);
    CLI::App* set = AddNamed("set", "Change values of a DSN, keep the others", SetDsn);
    AddValues(*set);
    CLI::App* remove = AddNamed("remove", "Remove a DSN", RemoveDsn);
    AddDriver(*remove);
    AddNamed("show", "Show the values of a DSN", ShowDsn);
    AddDriver(*Add("list", "List the driver's DSNs", ListDsns));
    CLI::App* apply = Add("apply", "Make DSNs what a description says", ApplyDescription);
    apply->add_option("file", m_options.m_file, "JSON or INI; - for standard input")->required();
    AddFlag(*apply, "--replace", m_options.m_isReplace, "Drop keys that are not described");
    CLI::App* exported = Add("export", "Print a description of the driver's DSNs", ExportDsns);
    for (CLI::App* command : {apply, exported}) {
        AddFlag(*command, "--show-secrets", m_options.m_output.m_hasSecrets,
                "Show passwords, not ********");
    }
    CLI::App* check = Add("check", "Say what is wrong with DSNs", CheckDsns);
    check->add_option("name", m_options.m_dsn, "Name of the DSN; all of the driver without it");
    for (CLI::App* command : {exported, check}) {
        AddDriver(*command);
    }
    AddDriverCommands();
    for (CLI::App* command : {add, set, remove, apply}) {
        AddFlag(*command, "--dry-run", m_options.m_output.m_isDryRun,
                "Show the difference, do nothing");
        AddFlag(*command, "-q,--quiet", m_options.m_output.m_isQuiet, "Print nothing but errors");
    }
}

int CommandLine::Run(int in_count, char** in_arguments) {
    try {
        m_app.parse(in_count, in_arguments);
    } catch (const CLI::ParseError& error) {
        return m_app.exit(error) == 0 ? EXIT_DONE : EXIT_USAGE;
    }
    m_action(m_options);
    return EXIT_DONE;
}

}  // namespace

int RunCommandLine(int in_count, char** in_arguments) {
    return CommandLine().Run(in_count, in_arguments);
}

}  // namespace Veltrane::Cli
