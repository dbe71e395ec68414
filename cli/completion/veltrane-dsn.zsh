#compdef veltrane-dsn
# The words go through standard input: no word of the line gets into an argument list.
local -a offered names shown
offered=(${(f)"$(print -rl -- "${(@)words[2,CURRENT]}" | veltrane-dsn --complete 2>/dev/null)"})
case ${offered[1]} in
  :files) compset -P '--*='; _files ;;
  :variables) compset -P '--*='; _parameters -g '*export*' ;;
  *)
    names=("${(@)offered%%$'\t'*}")
    shown=("${(@)offered/$'\t'/  }")
    compadd -l -d shown -a names
    ;;
esac
