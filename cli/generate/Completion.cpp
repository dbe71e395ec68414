#include "cli/generate/Generate.h"
#include "cli/line/CommandTable.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

/// Quotes a text for a shell, in single quotes.
std::string ShellText(std::string_view in_text) {
    std::string text = "'";
    for (const char c : in_text) text += c == '\'' ? "'\\''" : std::string(1, c);
    return text + "'";
}

/// Inserts the first words of the commands, and those of the group "driver", into a script.
std::string WithWords(std::string in_script) {
    const std::string group = Join(GetWords("driver"), " ");
    for (const auto& [mark, words] :
         {std::pair("@COMMANDS@", Join(GetWords(), " ")), std::pair("@DRIVER@", group)}) {
        for (std::size_t at; (at = in_script.find(mark)) != std::string::npos;) {
            in_script.replace(at, std::string_view(mark).size(), words);
        }
    }
    return in_script;
}

/// How a shell completes a value. Names of DSNs are those of the line's scope that begin with the
/// typed text.
struct Action {
    const char* m_bash;
    const char* m_zsh;
    const char* m_fish;
};

#define VELTRANE_LIST_DRIVERS "veltrane-dsn driver list 2>/dev/null | sed \"s/  .*//\""
// In the order of ValueKind, after None.
constexpr Action ACTIONS[] = {
    {"COMPREPLY=()", " ", " -x"},
    {"COMPREPLY=($(compgen -f -- \"$cur\"))", "_files", " -rF"},
    {"COMPREPLY=($(compgen -e -- \"$cur\"))", "_parameters -g \"*export*\"", " -xa '(set -nx)'"},
    {"_veltrane_dsn_lines \"$(veltrane-dsn list --all $scope --prefix=\"$cur\" 2>/dev/null)\"",
     "_veltrane_dsn_names",
     " -xa '(veltrane-dsn list --all (string match -- --system (commandline -opc)) "
     "--prefix=(commandline -ct) 2>/dev/null)'"},
    {"_veltrane_dsn_lines \"$(" VELTRANE_LIST_DRIVERS ")\"", "_veltrane_dsn_drivers",
     " -xa '(" VELTRANE_LIST_DRIVERS ")'"},
    {"COMPREPLY=($(compgen -W 'json ini' -- \"$cur\"))", "(json ini)", " -xa 'json ini'"},
};

const Action& ActionOf(ValueKind in_kind) {
    const auto at = static_cast<std::size_t>(in_kind);
    return ACTIONS[at == 0 ? 0 : at - 1];
}

/// Escapes text for the brackets of a zsh option.
std::string ZshText(std::string_view in_text) {
    std::string text;
    for (const char c : in_text) {
        if (c == '[' || c == ']' || c == ':' || c == '\\') text += '\\';
        text += c;
    }
    return text;
}

std::string BashCommand(const CommandInfo& in_command) {
    std::string text = "    " + ShellText(in_command.m_name) + ")\n      case $prev in\n";
    std::string names;
    for (const OptionInfo* option : GetOptionsOf(in_command.m_id)) {
        names += Join(SplitNames(*option), " ") + " ";
        if (option->m_argument.empty()) continue;
        text += "        " + Join(SplitNames(*option), "|") + ") " +
                ActionOf(option->m_kind).m_bash + "; return ;;\n";
    }
    text += "      esac\n      case $cur in\n        -*) COMPREPLY=($(compgen -W " +
            ShellText(names + "--help") + " -- \"$cur\")) ;;\n        *) " +
            ActionOf(in_command.m_kind).m_bash + " ;;\n      esac\n      ;;\n";
    return text;
}

const std::string FISH_SEEN = "__fish_seen_subcommand_from ";

/// Returns the condition that the line has this command.
std::string FishCondition(const std::string& in_command) {
    const std::size_t blank = in_command.find(' ');
    if (blank == std::string::npos) {
        return FISH_SEEN + in_command + "; and not " + FISH_SEEN + "driver";
    }
    return FISH_SEEN + "driver; and " + FISH_SEEN + in_command.substr(blank + 1);
}

}  // namespace

std::string MakeBashCompletion() {
    std::string text = WithWords(R"script(# Completion of veltrane-dsn for bash.
_veltrane_dsn_lines() {
  local line
  COMPREPLY=()
  while IFS= read -r line; do
    [[ -n $line && $line == "$cur"* ]] && COMPREPLY+=("$(printf %q "$line")")
  done <<<"$1"
}
_veltrane_dsn() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}
  local command=${COMP_WORDS[1]} scope=
  [[ " ${COMP_WORDS[*]} " == *' --system '* ]] && scope=--system
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    COMPREPLY=($(compgen -W '@COMMANDS@ --help --version' -- "$cur"))
    return
  fi
  if [[ $command == driver ]]; then
    if ((COMP_CWORD == 2)); then
      COMPREPLY=($(compgen -W '@DRIVER@' -- "$cur"))
      return
    fi
    command="driver ${COMP_WORDS[2]}"
  fi
  case $command in
)script");
    for (const CommandInfo& command : GetCommands()) text += BashCommand(command);
    return text + "  esac\n}\ncomplete -F _veltrane_dsn veltrane-dsn\n";
}

std::string MakeZshCompletion() {
    std::string text = WithWords(R"script(#compdef veltrane-dsn
_veltrane_dsn_names() {
  local -a names scope; (( ${words[(I)--system]} )) && scope=(--system)
  names=(${(f)"$(veltrane-dsn list --all $scope --prefix="$PREFIX" 2>/dev/null)"})
  compadd -a names
}
_veltrane_dsn_drivers() {
  local -a names; names=(${(f)"$()script" VELTRANE_LIST_DRIVERS R"script()"}); compadd -a names
}
_veltrane_dsn() {
  local command=$words[2]
  if (( CURRENT == 2 )); then
    compadd @COMMANDS@; return
  fi
  if [[ $command == driver ]]; then
    if (( CURRENT == 3 )); then compadd @DRIVER@; return; fi
    command="driver $words[3]"; shift words; (( CURRENT-- ))
  fi
  shift words; (( CURRENT-- ))
  case $command in
)script");
    for (const CommandInfo& command : GetCommands()) {
        text += "    (" + ShellText(command.m_name) + ") _arguments";
        for (const OptionInfo* option : GetOptionsOf(command.m_id)) {
            for (const std::string& name : SplitNames(*option)) {
                std::string spec = (option->m_isRepeatable ? "*" : "") + name + "[" +
                                   ZshText(option->m_help) + "]";
                if (!option->m_argument.empty()) {
                    spec +=
                        ":" + ZshText(option->m_argument) + ":" + ActionOf(option->m_kind).m_zsh;
                }
                text += " \\\n      " + ShellText(spec);
            }
        }
        if (command.m_kind != ValueKind::None) {
            text +=
                " \\\n      " + ShellText(std::string("*:name:") + ActionOf(command.m_kind).m_zsh);
        }
        text += " ;;\n";
    }
    return text + "  esac\n}\n_veltrane_dsn \"$@\"\n";
}

std::string MakeFishCompletion() {
    std::string text = "# Completion of veltrane-dsn for fish.\ncomplete -c veltrane-dsn -f\n";
    const auto addWords = [&](const std::string& in_condition, std::string_view in_group) {
        for (const std::string_view word : GetWords(in_group)) {
            text += "complete -c veltrane-dsn -n '" + in_condition + "' -a " + std::string(word);
            text += "\n";
        }
    };
    addWords("__fish_use_subcommand", "");
    addWords(WithWords(FISH_SEEN + "driver; and not " + FISH_SEEN + "@DRIVER@"), "driver");
    for (const CommandInfo& command : GetCommands()) {
        const std::string begin =
            "complete -c veltrane-dsn -n '" + FishCondition(std::string(command.m_name)) + "'";
        if (command.m_kind != ValueKind::None) {
            text += begin + ActionOf(command.m_kind).m_fish + "\n";
        }
        for (const OptionInfo* option : GetOptionsOf(command.m_id)) {
            text += begin;
            for (const std::string& option_name : SplitNames(*option)) {
                const bool isLong = option_name.starts_with("--");
                text += isLong ? " -l " + option_name.substr(2) : " -s " + option_name.substr(1);
            }
            if (!option->m_argument.empty()) text += ActionOf(option->m_kind).m_fish;
            text += " -d " + ShellText(option->m_help) + "\n";
        }
    }
    return text;
}

}  // namespace Veltrane::Cli
