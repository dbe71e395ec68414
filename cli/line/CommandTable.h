/// Every command and option of veltrane-dsn with its texts: the one source of the parser, --help,
/// the man page, docs and the shells' completion. Read-only.
#ifndef CLI_COMMANDTABLE_H
#define CLI_COMMANDTABLE_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

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

/// What an argument is, for the shells' completion.
enum class ValueKind { None, Text, File, Variable, Dsn, Driver, Format };

struct OptionInfo {
    std::string_view m_names;  ///< "-p,--property"
    std::uint32_t m_commands;  ///< one bit a command
    std::string_view m_help;
    std::string_view m_argument = {};  ///< "KEY=VALUE"; empty for a switch
    ValueKind m_kind = ValueKind::None;
    bool m_isRepeatable = false;
    bool m_isHidden = false;  ///< understood, but not shown; to be refused with a hint, for example
};

struct CommandInfo {
    CommandId m_id;
    std::string_view m_name;       ///< "driver register"
    std::string_view m_arguments;  ///< "NAME", "FILE", "[NAME...]" or empty
    ValueKind m_kind;              ///< of the arguments
    std::string_view m_summary;    ///< half a sentence
    std::string_view m_text;       ///< paragraphs, one a line
    std::string_view m_examples;   ///< one a line
};

constexpr std::uint32_t Bit(CommandId in_id) { return 1U << static_cast<unsigned>(in_id); }

std::span<const CommandInfo> GetCommands();
/// The words that begin commands, each once, or the second words of a group such as "driver".
std::vector<std::string_view> GetWords(std::string_view in_group = {});
/// The options of a command that are shown.
std::vector<const OptionInfo*> GetOptionsOf(CommandId in_id);
/// "-p" and "--property" of "-p,--property"
std::vector<std::string> SplitNames(const OptionInfo& in_option);

/// Sections of the manual that belong to no command; a heading and paragraphs, one a line. A line
/// "TERM<tab>text" is an item of a list.
struct ManualSection {
    std::string_view m_heading;
    std::string_view m_text;
};

/// The driver that commands work for unless --driver says otherwise.
inline constexpr char DEFAULT_DRIVER[] = "Veltrane";

inline constexpr std::string_view PROGRAM_SUMMARY = "manage the DSNs of the Veltrane ODBC driver";
std::span<const ManualSection> GetManualSections();

}  // namespace Veltrane::Cli

#endif
