# Completion of veltrane-dsn for bash. The words go through standard input: no word of the line gets
# into an argument list.
_veltrane_dsn() {
  local cur=${COMP_WORDS[COMP_CWORD]} word
  COMPREPLY=()
  while IFS=$'\t' read -r word _; do
    case $word in
      :files) mapfile -t COMPREPLY < <(compgen -f -- "$cur") ;;
      :variables) mapfile -t COMPREPLY < <(compgen -e -- "$cur") ;;
      "$cur"*) COMPREPLY+=("$(printf %q "$word")") ;;
    esac
  done < <(printf '%s\n' "${COMP_WORDS[@]:1:COMP_CWORD}" | veltrane-dsn --complete 2>/dev/null)
}
complete -F _veltrane_dsn veltrane-dsn
