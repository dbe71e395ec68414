# Completion of veltrane-dsn for bash. The words go through standard input: no word of the line gets
# into an argument list.
_veltrane_dsn() {
  local rest=${COMP_LINE#*"${COMP_WORDS[0]}"} cur=${COMP_WORDS[COMP_CWORD]} words=() word quoted i
  COMPREPLY=()
  # bash also divides words at ":" and "=".
  for ((i = 1; i <= COMP_CWORD; ++i)); do
    [[ $i == 1 || $rest == [[:space:]]* ]] && words+=("")
    words[-1]+=${COMP_WORDS[i]}
    rest=${rest#*"${COMP_WORDS[i]}"}
  done
  local typed=${words[-1]}
  [[ $cur == [:=]* ]] && cur=
  while IFS=$'\t' read -r word _; do
    case $word in
      :files) compopt -o default ;;
      :variables) mapfile -t COMPREPLY < <(compgen -e -- "$cur") ;;
      *)
        printf -v quoted %q "$word"
        [[ $cur == [\"\']* ]] && quoted=$word
        # Only what is after the last ":" or "=" is replaced.
        [[ ${word//[\"\'\\]/} == "${typed//[\"\'\\]/}"* ]] && COMPREPLY+=("${quoted#"${typed%"$cur"}"}")
        ;;
    esac
  done < <(printf '%s\n' "${words[@]}" | veltrane-dsn --complete 2>/dev/null)
}
complete -F _veltrane_dsn veltrane-dsn
