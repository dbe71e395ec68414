#include "cli/line/CommandTable.h"

namespace Veltrane::Cli {

namespace {

using C = CommandId;
using K = ValueKind;

constexpr CommandInfo COMMANDS[] = {
    {C::Add, "add", "NAME", K::None, "add a DSN",
     "Adds a DSN. A server and a database have to be given.\n"
     "If a DSN of that name exists, nothing is changed and the exit code is 4, unless "
     "--if-missing or --replace says otherwise.",
     "veltrane-dsn add sales --server db.example.org --database sales\n"
     "veltrane-dsn add sales --server db --database d --uid anna --pwd-prompt\n"
     "veltrane-dsn add sales --connection-string 'Server=db;Database={a;b}'\n"
     "pass show db | veltrane-dsn add sales --server db --database d \\\n"
     "    --uid anna --pwd-stdin --replace"},
    {C::Set, "set", "NAME", K::Dsn, "change values of a DSN, keep the others",
     "Changes the given values of a DSN and keeps all others.",
     "veltrane-dsn set sales --database archive\n"
     "veltrane-dsn set sales -p Trace=1 --unset Namespace\n"
     "veltrane-dsn set sales --server new.example.org --dry-run"},
    {C::Edit, "edit", "[NAME]", K::Dsn, "change a DSN, or make a new one, in the editor",
     "Shows the editor for a DSN, or for a new one if no name is given: a window if there is a "
     "display, else a form in the terminal. Cancel changes nothing.\n"
     "After OK the values are written as by set and add: keys that the form does not show stay. "
     "If the name was changed, the DSN of the old name is removed, after a question. An existing "
     "DSN of the new name is not replaced. Refused values can be changed in the form.",
     "veltrane-dsn edit\n"
     "veltrane-dsn edit sales\n"
     "veltrane-dsn edit --copy sales\n"
     "veltrane-dsn edit --system sales"},
    {C::Remove, "remove", "NAME...", K::Dsn, "remove DSNs", "Removes DSNs.",
     "veltrane-dsn remove sales\n"
     "veltrane-dsn remove --system --if-exists sales archive"},
    {C::Show, "show", "NAME", K::Dsn, "show the values of a DSN",
     "Shows the keys and values of a DSN, passwords masked.",
     "veltrane-dsn show sales\n"
     "veltrane-dsn show sales --json --show-secrets"},
    {C::List, "list", "", K::None, "list DSNs",
     "Lists the names of the driver's DSNs in the order of the file.",
     "veltrane-dsn list\n"
     "veltrane-dsn list --long --both\n"
     "veltrane-dsn list --system --all --json"},
    {C::Apply, "apply", "FILE", K::File, "bring many DSNs to a described state",
     "Reads a description of DSNs from a file, or from standard input if FILE is -, and adds, "
     "changes and removes DSNs to match it. A second run changes nothing. Keys that the "
     "description does not name stay as they are, unless --replace is given; DSNs that it does "
     "not name stay, unless --prune is given.\n"
     "All changes are written at once. A DSN that is refused does not stop the others, unless "
     "--fail-fast is given; the exit code is then 1.",
     "veltrane-dsn apply dsns.json\n"
     "veltrane-dsn apply --system --dry-run dsns.ini\n"
     "ssh other veltrane-dsn export | veltrane-dsn apply -"},
    {C::Export, "export", "[NAME...]", K::Dsn, "write DSNs as a description for apply",
     "Writes DSNs in a form that apply reads: the named ones, else all of the driver. Passwords "
     "are left out unless --show-secrets is given.",
     "veltrane-dsn export > dsns.json\n"
     "veltrane-dsn export --format ini sales"},
    {C::Import, "import", "FILE", K::File, "read the DSNs of another machine from a file",
     "Makes a description for apply from an odbc.ini, a file DSN, an export of ODBC.INI from the "
     "registry (.reg), or the JSON of PowerShell's Get-OdbcDsn; FILE can be - for standard input. "
     "It reads the DSNs that name the driver, in their section or in the file's list of data "
     "sources, and reports everything that it leaves out. Passwords are left out unless "
     "--show-secrets is given.\n"
     "A user's DSN has precedence over the system's one of the same name. With --apply, all DSNs "
     "are added or changed in the scope of the command, as by apply.",
     "veltrane-dsn import old/odbc.ini > dsns.json\n"
     "veltrane-dsn import odbc.reg --apply --system --dry-run\n"
     "veltrane-dsn import --from-driver 'Veltrane 2' dsns.json --apply\n"
     "veltrane-dsn import Sales.dsn --encoding cp932 --apply"},
    {C::Check, "check", "[NAME...]", K::Dsn, "check whether DSNs are complete and sound",
     "Checks the stored values of DSNs: the named ones, else all of the driver. The exit code is "
     "1 if a DSN has an error.",
     "veltrane-dsn check\n"
     "veltrane-dsn check --system sales"},
    {C::DriverRegister, "driver register", "", K::None, "register the driver",
     "Registers the driver in odbcinst.ini, so that the ODBC installer finds its setup library. "
     "Comments and other entries of the file stay. If the driver is registered with other values, "
     "nothing is changed and the exit code is 4, unless --replace is given, which changes the "
     "given values.",
     "veltrane-dsn driver register --setup " VELTRANE_EXAMPLE_SETUP "\n"
     "veltrane-dsn driver register --replace --library " VELTRANE_EXAMPLE_LIBRARY},
    {C::DriverUnregister, "driver unregister", "", K::None, "remove the driver's registration",
     "Removes the driver from odbcinst.ini. Its DSNs stay.",
     "veltrane-dsn driver unregister\n"
     "veltrane-dsn driver unregister --driver 'Veltrane test'\n"
     "veltrane-dsn driver unregister --setup " VELTRANE_EXAMPLE_SETUP},
    {C::DriverList, "driver list", "", K::None, "list the registered drivers",
     "Lists the drivers of odbcinst.ini with their setup libraries.",
     "veltrane-dsn driver list\n"
     "veltrane-dsn driver list --json"},
    {C::Where, "where", "", K::None, "show which files and libraries are in use",
     "Shows which files the driver manager uses for this user in this environment.",
     "veltrane-dsn where\n"
     "veltrane-dsn where --json"},
    {C::Doctor, "doctor", "", K::None, "find what is wrong and how to repair it",
     "Examines the driver's registration and libraries, sends its setup library a request that "
     "changes nothing, and examines the files of DSNs, their rights and their contents, and the "
     "driver manager. If nothing is wrong, it prints one line. Each finding comes with a repair. "
     "Nothing is changed. The exit code is 1 if there is an error.",
     "veltrane-dsn doctor\n"
     "veltrane-dsn doctor --json"},
    {C::Test, "test", "NAME", K::Dsn, "connect to a DSN and show the result",
     "Connects to a DSN of any driver through the driver manager, as programs do, and prints the "
     "time and the server, or SQLSTATE, native code and text of each error. If the driver cannot "
     "be found or loaded, it prints the reason and a repair. A given user name and password are "
     "used only for this attempt. Nothing is changed.\n"
     "The driver runs in a separate process, which is stopped at the time limit; the exit code is "
     "then 5. It is 1 if the connection fails, and 3 if there is no such DSN.\n"
     "If NAME is -, a connection string is read from standard input instead, to try values that "
     "are not stored.",
     "veltrane-dsn test sales\n"
     "veltrane-dsn test sales --uid anna --pwd-prompt --timeout 5\n"
     "veltrane-dsn test sales --json\n"
     "veltrane-dsn test - < connection.txt"},
};

constexpr ManualSection SECTIONS[] = {
    {"DESCRIPTIONS OF DSNS",
     "apply reads JSON or INI, in UTF-8 or in UTF-16 with a byte order mark; export writes "
     "UTF-8.\n"
     "JSON: an object with the list \"data_sources\". Each has a \"name\" and \"values\", the "
     "keys with their texts; null removes a key. It can have a \"driver\", the \"state\" "
     "\"present\" or \"absent\", and \"pwd_env\" or \"pwd_file\", which name the source of the "
     "password.\n"
     "INI: a section for each DSN with its name and its keys. The keys Driver, State, pwd_env and "
     "pwd_file have the meaning above. Lines that begin with # or ; are comments. The driver "
     "manager's own sections of an odbc.ini, and a PWD without a value, are ignored."},
    {"PASSWORDS",
     "A password is not accepted on the command line, where every user of the machine could read "
     "it and the shell would store it. It is stored in odbc.ini in clear text, because "
     "the driver reads it from there; a new file can be read by its owner only. Left empty, "
     "programs ask for it.\n"
     "An empty line, file or variable is no password and is refused. set --unset PWD removes one."},
    {"EXIT CODES",
     "0\tDone.\n"
     "1\tFailed; the reason is on standard error.\n"
     "2\tThe command line is wrong.\n"
     "3\tThere is no such DSN or driver.\n"
     "4\tThere is such a DSN or driver already.\n"
     "5\tThe driver did not answer test within the time limit.\n"
     "130\tInterrupted by Ctrl-C, at the question for a password or in apply."},
    {"ENVIRONMENT",
     "ODBCINI\tThe user's file of DSNs; otherwise ~/.odbc.ini.\n"
     "ODBCSYSINI\tThe directory of the system's files; otherwise that of the driver manager.\n"
     "ODBCINSTINI\tThe name of the file of drivers there; otherwise odbcinst.ini.\n"
     "VELTRANE_DSN_EDITOR\tThe editor that edit shows: desktop, terminal or the path of a "
     "program.\n"
     "NO_COLOR\tIf it is set and not empty, nothing is coloured.\n"
     "TR4CE\tA trace of the setup library, for example 1:/tmp/trace.log."},
    {"FILES",
     "~/.odbc.ini\tThe DSNs of the user.\n"
     "/etc/odbc.ini\tThe DSNs of all users.\n"
     "/etc/odbcinst.ini\tThe drivers."},
};

}  // namespace

std::span<const CommandInfo> GetCommands() { return COMMANDS; }

std::span<const ManualSection> GetManualSections() { return SECTIONS; }

std::vector<std::string_view> GetWords(std::string_view in_group) {
    std::vector<std::string_view> words;
    for (const CommandInfo& command : COMMANDS) {
        const std::size_t end = std::min(command.m_name.find(' '), command.m_name.size());
        const std::string_view word = command.m_name.substr(0, end);
        if (in_group.empty()) {
            if (words.empty() || words.back() != word) words.push_back(word);
        } else if (word == in_group && word != command.m_name) {
            words.push_back(command.m_name.substr(end + 1));
        }
    }
    return words;
}

std::vector<const OptionInfo*> GetOptionsOf(CommandId in_id) {
    std::vector<const OptionInfo*> options;
    for (const OptionInfo& option : OPTIONS) {
        if ((option.m_commands & Bit(in_id)) != 0 && !option.m_isHidden) options.push_back(&option);
    }
    return options;
}

std::vector<std::string> SplitNames(const OptionInfo& in_option) {
    const std::string names(in_option.m_names);
    const std::size_t comma = names.find(',');
    if (comma == std::string::npos) return {names};
    return {names.substr(0, comma), names.substr(comma + 1)};
}

}  // namespace Veltrane::Cli
