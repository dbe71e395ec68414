/// veltrane-dsn: adds, changes, removes and shows DSNs through the installed driver manager.
#include <CLI/CLI.hpp>
#include <exception>
#include <functional>
#include <iostream>

#include "cli/Commands.h"

namespace {

using namespace Veltrane::Cli;

/// What the command line says.
struct Options {
    std::string m_driver = "Veltrane";
    std::string m_dsn;
    bool m_isSystem = false;
    bool m_hasPasswordOnInput = false;
    GivenValues m_values;
};

void AddValueOption(CLI::App& io_command, Options& io_options, const char* in_option,
                    const char* in_key, const char* in_help) {
    io_command.add_option_function<std::string>(
        in_option,
        [&io_options, in_key](const std::string& in_value) {
            io_options.m_values[in_key] = in_value;
        },
        in_help);
}

void AddValueOptions(CLI::App& io_command, Options& io_options) {
    AddValueOption(io_command, io_options, "--server", "Server", "Server");
    AddValueOption(io_command, io_options, "--database", "Database", "Database");
    AddValueOption(io_command, io_options, "--namespace", "Namespace", "Cognos namespace");
    AddValueOption(io_command, io_options, "--login-mode", "LoginMode", "MicroStrategy login mode");
    AddValueOption(io_command, io_options, "--uid", "UID", "User id");
    io_command.add_flag("--pwd-stdin", io_options.m_hasPasswordOnInput,
                        "Read the password from the first line of standard input");
}

CLI::App* AddCommand(CLI::App& io_app, Options& io_options, const char* in_name,
                     const char* in_help) {
    CLI::App* command = io_app.add_subcommand(in_name, in_help);
    command->add_flag("--system", io_options.m_isSystem, "Work on system DSNs, not the user's");
    return command;
}

/// As AddCommand, for a command that names one DSN.
CLI::App* AddDsnCommand(CLI::App& io_app, Options& io_options, const char* in_name,
                        const char* in_help) {
    CLI::App* command = AddCommand(io_app, io_options, in_name, in_help);
    command->add_option("name", io_options.m_dsn, "Name of the DSN")->required();
    return command;
}

void ReadPassword(Options& io_options) {
    if (!io_options.m_hasPasswordOnInput) {
        return;
    }
    std::string password;
    if (!std::getline(std::cin, password)) {
        throw CommandError(EXIT_USAGE, "There is no password on standard input.");
    }
    io_options.m_values["PWD"] = password;
}

int Run(int in_count, char** in_arguments) {
    Options options;
    std::function<void(const DriverManager&)> action;
    CLI::App app("Manages the DSNs of the Veltrane ODBC driver through the ODBC installer.",
                 "veltrane-dsn");
    app.require_subcommand(1);

    CLI::App* add = AddDsnCommand(app, options, "add", "Add a DSN");
    CLI::App* list = AddCommand(app, options, "list", "List the driver's DSNs");
    for (CLI::App* command : {add, list}) {
        command->add_option("--driver", options.m_driver, "The driver's name in odbcinst.ini")
            ->capture_default_str();
    }
    AddValueOptions(*add, options);
    add->callback([&] {
        action = [&](const DriverManager& in_manager) {
            AddDsn(in_manager, options.m_driver, options.m_dsn, options.m_values);
        };
    });
    list->callback([&] {
        action = [&](const DriverManager& in_manager) { ListDsns(in_manager, options.m_driver); };
    });
    CLI::App* set = AddDsnCommand(app, options, "set", "Change values of a DSN, keep the others");
    AddValueOptions(*set, options);
    set->callback([&] {
        action = [&](const DriverManager& in_manager) {
            SetDsn(in_manager, options.m_dsn, options.m_values);
        };
    });
    AddDsnCommand(app, options, "remove", "Remove a DSN")->callback([&] {
        action = [&](const DriverManager& in_manager) { RemoveDsn(in_manager, options.m_dsn); };
    });
    AddDsnCommand(app, options, "show", "Show the values of a DSN")->callback([&] {
        action = [&](const DriverManager& in_manager) { ShowDsn(in_manager, options.m_dsn); };
    });

    try {
        app.parse(in_count, in_arguments);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? EXIT_DONE : EXIT_USAGE;
    }
    ReadPassword(options);
    action(DriverManager(options.m_isSystem ? Scope::System : Scope::User));
    return EXIT_DONE;
}

}  // namespace

int main(int in_count, char** in_arguments) {
    try {
        return Run(in_count, in_arguments);
    } catch (const CommandError& error) {
        std::cerr << "veltrane-dsn: " << error.what() << "\n";
        return error.GetExitCode();
    } catch (const std::exception& error) {
        std::cerr << "veltrane-dsn: " << error.what() << "\n";
        return EXIT_FAILED;
    }
}
