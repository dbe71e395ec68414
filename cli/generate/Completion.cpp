#include <algorithm>

#include "cli/generate/Generate.h"
#include "cli/line/CommandTable.h"

namespace Veltrane::Cli {

namespace {

/// In single quotes for a shell.
std::string Quote(std::string_view in_text) {
    std::string text = "'";
    for (const char c : in_text) text += c == '\'' ? "'\\''" : std::string(1, c);
    return text + "'";
}

/// Options that are understood and shown.
std::vector<const OptionInfo*> ShownOptions(CommandId in_command) {
    std::vector<const OptionInfo*> options = GetOptionsOf(in_command);
    std::erase_if(options, [](const OptionInfo* in_option) { return in_option->m_isHidden; });
    return options;
}

/// The first words of commands, and the second ones of a group such as "driver".
std::vector<std::string_view> Words(std::string_view in_group) {
    std::vector<std::string_view> words;
    for (const CommandInfo& command : GetCommands()) {
        std::string_view name = command.m_name;
        if (!in_group.empty()) {
            if (!name.starts_with(in_group) || name.size() == in_group.size()) continue;
            name.remove_prefix(in_group.size() + 1);
        }
        name = name.substr(0, name.find(' '));
        if (words.empty() || words.back() != name) words.push_back(name);
    }
    return words;
}

std::string Join(const std::vector<std::string_view>& in_words) {
    std::string text;
    for (const std::string_view word : in_words) {
        text += text.empty() ? "" : " ";
        text += word;
    }
    return text;
}

/// What a shell completes a value with. The names of DSNs are those of the line's scope that begin
/// with what has been typed.
struct Action {
    ValueKind m_kind;
    const char* m_bash;
    const char* m_zsh;
    const char* m_fish;
};

#define VELTRANE_LIST_DRIVERS "veltrane-dsn driver list 2>/dev/null | sed \"s/  .*//\""
constexpr Action ACTIONS[] = {
    {ValueKind::Text, "COMPREPLY=()", " ", " -x"},
    {ValueKind::File, "COMPREPLY=($(compgen -f -- \"$cur\"))", "_files", " -rF"},
    {ValueKind::Variable, "COMPREPLY=($(compgen -e -- \"$cur\"))", "_parameters -g \"*export*\"",
     " -xa '(set -nx)'"},
    {ValueKind::Dsn,
     "_veltrane_dsn_lines \"$(veltrane-dsn list --all $scope --prefix=\"$cur\" 2>/dev/null)\"",
     "_veltrane_dsn_names",
     " -xa '(veltrane-dsn list --all (string match -- --system (commandline -opc)) "
     "--prefix=(commandline -ct) 2>/dev/null)'"},
    {ValueKind::Driver, "_veltrane_dsn_lines \"$(" VELTRANE_LIST_DRIVERS ")\"",
     "_veltrane_dsn_drivers", " -xa '(" VELTRANE_LIST_DRIVERS ")'"},
    {ValueKind::Format, "COMPREPLY=($(compgen -W 'json ini' -- \"$cur\"))", "(json ini)",
     " -xa 'json ini'"},
};

const Action& ActionOf(ValueKind in_kind) {
    const Action* const found =
        std::find_if(std::begin(ACTIONS), std::end(ACTIONS),
                     [in_kind](const Action& in_action) { return in_action.m_kind == in_kind; });
    return found == std::end(ACTIONS) ? ACTIONS[0] : *found;
}

/// Text in the brackets of a zsh option.
std::string ZshText(std::string_view in_text) {
    std::string text;
    for (const char c : in_text) {
        if (c == '[' || c == ']' || c == ':' || c == '\\') text += '\\';
        text += c;
    }
    return text;
}

std::string BashCommand(const CommandInfo& in_command) {
    std::string text = "    " + Quote(in_command.m_name) + ")\n      case $prev in\n";
    std::string names;
    for (const OptionInfo* option : ShownOptions(in_command.m_id)) {
        std::string pattern;
        for (const std::string& name : SplitNames(*option)) {
            names += name + " ";
            pattern += (pattern.empty() ? "" : "|") + name;
        }
        if (option->m_argument.empty()) continue;
        text += "        " + pattern + ") " + ActionOf(option->m_kind).m_bash + "; return ;;\n";
    }
    text += "      esac\n      case $cur in\n        -*) COMPREPLY=($(compgen -W " +
            Quote(names + "--help") + " -- \"$cur\")) ;;\n        *) " +
            ActionOf(in_command.m_kind).m_bash + " ;;\n      esac\n      ;;\n";
    return text;
}

}  // namespace

std::string MakeBashCompletion() {
    std::string text =
        "# Completion of veltrane-dsn for bash.\n"
        "_veltrane_dsn_lines() {\n"
        "  local line\n"
        "  COMPREPLY=()\n"
        "  while IFS= read -r line; do\n"
        "    [[ -n $line && $line == \"$cur\"* ]] && COMPREPLY+=(\"$(printf %q \"$line\")\")\n"
        "  done <<<\"$1\"\n"
        "}\n"
        "_veltrane_dsn() {\n"
        "  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}\n"
        "  local command=${COMP_WORDS[1]} scope=\n"
        "  [[ \" ${COMP_WORDS[*]} \" == *' --system '* ]] && scope=--system\n"
        "  COMPREPLY=()\n"
        "  if ((COMP_CWORD == 1)); then\n"
        "    COMPREPLY=($(compgen -W " +
        Quote(Join(Words("")) + " --help --version") +
        " -- \"$cur\"))\n"
        "    return\n"
        "  fi\n"
        "  if [[ $command == driver ]]; then\n"
        "    if ((COMP_CWORD == 2)); then\n"
        "      COMPREPLY=($(compgen -W " +
        Quote(Join(Words("driver"))) +
        " -- \"$cur\"))\n"
        "      return\n"
        "    fi\n"
        "    command=\"driver ${COMP_WORDS[2]}\"\n"
        "  fi\n"
        "  case $command in\n";
    for (const CommandInfo& command : GetCommands()) text += BashCommand(command);
    return text + "  esac\n}\ncomplete -F _veltrane_dsn veltrane-dsn\n";
}

std::string MakeZshCompletion() {
    std::string text =
        "#compdef veltrane-dsn\n"
        "_veltrane_dsn_names() {\n"
        "  local -a names scope; (( ${words[(I)--system]} )) && scope=(--system)\n"
        "  names=(${(f)\"$(veltrane-dsn list --all $scope --prefix=\"$PREFIX\" 2>/dev/null)\"})\n"
        "  compadd -a names\n}\n"
        "_veltrane_dsn_drivers() {\n"
        "  local -a names; names=(${(f)\"$(" VELTRANE_LIST_DRIVERS
        ")\"}); compadd -a names\n}\n"
        "_veltrane_dsn() {\n"
        "  local command=$words[2]\n"
        "  if (( CURRENT == 2 )); then\n"
        "    compadd " +
        Join(Words("")) +
        "; return\n  fi\n"
        "  if [[ $command == driver ]]; then\n"
        "    if (( CURRENT == 3 )); then compadd " +
        Join(Words("driver")) +
        "; return; fi\n"
        "    command=\"driver $words[3]\"; shift words; (( CURRENT-- ))\n  fi\n"
        "  shift words; (( CURRENT-- ))\n"
        "  case $command in\n";
    for (const CommandInfo& command : GetCommands()) {
        text += "    (" + Quote(command.m_name) + ") _arguments";
        for (const OptionInfo* option : ShownOptions(command.m_id)) {
            for (const std::string& name : SplitNames(*option)) {
                std::string spec = (option->m_isRepeatable ? "*" : "") + name + "[" +
                                   ZshText(option->m_help) + "]";
                if (!option->m_argument.empty()) {
                    spec +=
                        ":" + ZshText(option->m_argument) + ":" + ActionOf(option->m_kind).m_zsh;
                }
                text += " \\\n      " + Quote(spec);
            }
        }
        if (command.m_kind != ValueKind::None) {
            text += " \\\n      " + Quote(std::string("*:name:") + ActionOf(command.m_kind).m_zsh);
        }
        text += " ;;\n";
    }
    return text + "  esac\n}\n_veltrane_dsn \"$@\"\n";
}

std::string MakeFishCompletion() {
    std::string text = "# Completion of veltrane-dsn for fish.\ncomplete -c veltrane-dsn -f\n";
    const std::string seen = "__fish_seen_subcommand_from ";
    for (const std::string_view word : Words("")) {
        text +=
            "complete -c veltrane-dsn -n '__fish_use_subcommand' -a " + std::string(word) + "\n";
    }
    for (const std::string_view word : Words("driver")) {
        text += "complete -c veltrane-dsn -n '" + seen + "driver; and not " + seen +
                Join(Words("driver")) + "' -a " + std::string(word) + "\n";
    }
    for (const CommandInfo& command : GetCommands()) {
        const std::string_view name = command.m_name;
        const std::size_t blank = name.find(' ');
        const std::string condition =
            blank == std::string_view::npos
                ? seen + std::string(name) + "; and not " + seen + "driver"
                : seen + "driver; and " + seen + std::string(name.substr(blank + 1));
        const std::string begin = "complete -c veltrane-dsn -n '" + condition + "'";
        if (command.m_kind != ValueKind::None)
            text += begin + ActionOf(command.m_kind).m_fish + "\n";
        for (const OptionInfo* option : ShownOptions(command.m_id)) {
            text += begin;
            for (const std::string& option_name : SplitNames(*option)) {
                const bool isLong = option_name.starts_with("--");
                text += isLong ? " -l " + option_name.substr(2) : " -s " + option_name.substr(1);
            }
            if (!option->m_argument.empty()) text += ActionOf(option->m_kind).m_fish;
            text += " -d " + Quote(option->m_help) + "\n";
        }
    }
    return text;
}

}  // namespace Veltrane::Cli
