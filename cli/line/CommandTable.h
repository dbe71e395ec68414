/// Every command and option of veltrane-dsn with its texts, for the parser, --help, the man page,
/// docs and the shells' completion. Read-only.
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
