/// Every command and option of veltrane-dsn with its texts, for the parser, --help, the man page,
/// docs and the shells' completion. Read-only.
#ifndef CLI_COMMANDTABLE_H
#define CLI_COMMANDTABLE_H

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "VeltraneDialog/DialogFields.h"

namespace Veltrane::Cli {

enum class CommandId : unsigned {
    Add,
    Set,
    Edit,
    Remove,
    Show,
    List,
    Apply,
    Export,
    Import,
    Check,
    DriverRegister,
    DriverUnregister,
    DriverList,
    Where,
    Doctor,
    Test,
};

/// The kind of an argument, for the shells' completion.
enum class ValueKind { None, Text, File, Variable, Dsn, Driver, Format };

struct OptionInfo {
    std::string_view m_names;  ///< "-p,--property"
    std::uint32_t m_commands;  ///< one bit per command
    std::string_view m_help;
    std::string_view m_argument = {};  ///< "KEY=VALUE"; empty for a switch
    ValueKind m_kind = ValueKind::None;
    bool m_isRepeatable = false;
    bool m_isHidden = false;  ///< accepted but not shown, for example to be refused with a hint
};

struct CommandInfo {
    CommandId m_id;
    std::string_view m_name;       ///< "driver register"
    std::string_view m_arguments;  ///< "NAME", "FILE", "[NAME...]" or empty
    ValueKind m_kind;              ///< of the arguments
    std::string_view m_summary;    ///< half a sentence
    std::string_view m_text;       ///< paragraphs, one per line
    std::string_view m_examples;   ///< one per line
};

constexpr std::uint32_t Bit(CommandId in_id) { return 1U << static_cast<unsigned>(in_id); }

/// Every option.
inline constexpr auto OPTIONS = [] {
    using C = CommandId;
    using K = ValueKind;
    constexpr std::uint32_t CHANGE = Bit(C::Add) | Bit(C::Set);
    constexpr std::uint32_t LOGIN = CHANGE | Bit(C::Test);
    constexpr std::uint32_t WRITES =
        CHANGE | Bit(C::Edit) | Bit(C::Remove) | Bit(C::Apply) | Bit(C::Import);
    constexpr std::uint32_t READS = Bit(C::Show) | Bit(C::List) | Bit(C::Export) | Bit(C::Check);
    constexpr std::uint32_t DRIVER = Bit(C::DriverRegister) | Bit(C::DriverUnregister);
    constexpr std::uint32_t ALL = (1U << (static_cast<unsigned>(C::Test) + 1)) - 1;
    // The editors' hint for a field.
    constexpr auto hint = [](std::string_view in_key) consteval {
        return ODBC::DIALOG_FIELDS[ODBC::FieldIndex(in_key)].m_hint;
    };
    return std::to_array<OptionInfo>({
        {"--user", WRITES | READS, "Work on the DSNs of this user. This is the default."},
        {"--system", WRITES | READS, "Work on the DSNs of all users."},
        {"--driver",
         WRITES | Bit(C::List) | Bit(C::Export) | Bit(C::Check) | DRIVER | Bit(C::Where) |
             Bit(C::Doctor),
         "The driver's name in odbcinst.ini. The default is Veltrane.", "NAME", K::Driver},
        {"--server", CHANGE, hint("Server"), "HOST", K::Text},
        {"--database", CHANGE, hint("Database"), "NAME", K::Text},
        {"--namespace", CHANGE, hint("Namespace"), "NAME", K::Text},
        {"--login-mode", CHANGE, hint("LoginMode"), "MODE", K::Text},
        {"--uid", LOGIN, "The user name.", "NAME", K::Text},
        {"-p,--property", CHANGE,
         "Any key with its value, which can be empty. Can be given several times.", "KEY=VALUE",
         K::Text, true},
        {"--unset", Bit(C::Set), "Remove a key. Can be given several times.", "KEY", K::Text, true},
        {"--connection-string", CHANGE,
         "Take keys and values from a connection string, for example "
         "\"Server=db;Database={a;b}\". Other options have precedence.",
         "TEXT", K::Text},
        {"--pwd-stdin", LOGIN,
         "Read the password from the first line of standard input; on a terminal, ask for it."},
        {"--pwd-file", LOGIN, "Read the password from the first line of a file.", "FILE", K::File},
        {"--pwd-env", LOGIN, "Take the password from an environment variable.", "VARIABLE",
         K::Variable},
        {"--pwd-prompt", LOGIN, "Ask for the password on the terminal; for a new one twice."},
        {"--pwd,--password", LOGIN, "", "TEXT", K::Text, false, true},
        {"--show-secrets", WRITES | Bit(C::Show) | Bit(C::Export),
         "Show passwords in clear text instead of masking them or leaving them out."},
        {"--all", Bit(C::List) | Bit(C::Export) | Bit(C::Import), "The DSNs of all drivers."},
        {"--both", Bit(C::List),
         "The DSNs of this user and those of all users, and which hides which. Implies --long."},
        {"--long", Bit(C::List), "Show scope, server and database as well."},
        {"--prefix", Bit(C::List), "Only the DSNs whose names begin with this text.", "TEXT",
         K::Text},
        {"--if-missing", Bit(C::Add), "Do nothing, successfully, if the DSN exists already."},
        {"--replace", Bit(C::Add) | Bit(C::Apply) | Bit(C::Import) | Bit(C::DriverRegister),
         "Replace what exists: keys that are not given are removed."},
        {"--if-exists", Bit(C::Remove), "Do nothing, successfully, if there is no such DSN."},
        {"--prune", Bit(C::Apply), "Remove the driver's DSNs that are not described."},
        {"--fail-fast", Bit(C::Apply) | Bit(C::Import),
         "Write nothing if one of the DSNs is refused."},
        {"-n,--dry-run", WRITES | DRIVER, "Write nothing; show the exact difference."},
        {"--copy", Bit(C::Edit), "Begin a new DSN with the values of the named one."},
        {"-y,--yes", Bit(C::Edit),
         "After a change of its name, remove the DSN of the old name without a question."},
        {"--format", Bit(C::Apply) | Bit(C::Export),
         "The format. The default of export is json; apply detects the format.", "json|ini",
         K::Format},
        {"--apply", Bit(C::Import), "Apply the description instead of writing it."},
        {"--from-driver", Bit(C::Import),
         "The driver's name in the file, if it is another name or the path of a library.", "NAME",
         K::Text},
        {"--name", Bit(C::Import), "The name for a file DSN; otherwise that of its file.", "NAME",
         K::Text},
        {"--encoding", Bit(C::Import),
         "The encoding of a file that is not in Unicode, such as cp932; otherwise windows-1252.",
         "NAME", K::Text},
        {"--setup", DRIVER,
         "The driver's setup library, " VELTRANE_SETUP_LIBRARY
         ". With driver unregister: remove the driver only if it has this one.",
         "PATH", K::File},
        {"--library", Bit(C::DriverRegister), "The driver's library, with which programs connect.",
         "PATH", K::File},
        {"--description", Bit(C::DriverRegister),
         "The text that other tools show with the driver's name.", "TEXT", K::Text},
        {"--json", ALL, "Write the result as JSON."},
        {"-q,--quiet", WRITES | DRIVER | Bit(C::Check) | Bit(C::Test), "Write errors only."},
        {"-v,--verbose", Bit(C::Doctor), "Show the notes even if nothing is wrong."},
        {"--timeout", Bit(C::Test),
         "Stop the driver if it has not answered by then. The default is 15.", "SECONDS", K::Text},
        {"--driver-manager", Bit(C::Test),
         "The driver manager to connect with. The default is the system's; on Linux unixODBC or, "
         "if that is not installed, iODBC.",
         "LIBRARY", K::File},
        {"--apart", Bit(C::Test), "", "", K::None, false, true},
        {"-h,--help", ALL, "Show this text."},
    });
}();

/// Returns "--property" for "-p,--property".
constexpr std::string_view GetLongName(const OptionInfo& in_option) {
    const std::string_view names = in_option.m_names;
    const std::size_t begin = names.find("--");
    return names.substr(begin, names.substr(begin).find(','));
}

/// The long name of an option; another text does not compile.
class OptionName {
public:
    consteval OptionName(const char* in_name) {
        while (GetLongName(OPTIONS[m_index]) != in_name) ++m_index;
    }
    constexpr bool operator==(const OptionName&) const = default;
    std::string_view Get() const { return GetLongName(OPTIONS[m_index]); }

private:
    std::size_t m_index = 0;
};

/// The option that sets a key.
struct KeyOption {
    OptionName m_option;
    const char* m_key;
};

std::span<const CommandInfo> GetCommands();
/// Returns the first words of the commands, each once, or the second words of a group ("driver").
std::vector<std::string_view> GetWords(std::string_view in_group = {});
/// Returns the visible options of a command.
std::vector<const OptionInfo*> GetOptionsOf(CommandId in_id);
/// Returns "-p" and "--property" for "-p,--property".
std::vector<std::string> SplitNames(const OptionInfo& in_option);

/// A section of the manual for no single command: a heading, and paragraphs, one per line. A line
/// "TERM<tab>text" is a list item.
struct ManualSection {
    std::string_view m_heading;
    std::string_view m_text;
};

/// The driver of all commands unless --driver names another one.
inline constexpr char DEFAULT_DRIVER[] = "Veltrane";

inline constexpr std::string_view PROGRAM_SUMMARY = "manage the DSNs of the Veltrane ODBC driver";
std::span<const ManualSection> GetManualSections();

}  // namespace Veltrane::Cli

#endif
