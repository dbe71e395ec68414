# Completion of veltrane-dsn for fish. The words go through standard input: no word of the line gets
# into an argument list.
function __veltrane_dsn
    set -l words (commandline -opc)
    set -e words[1]
    set -l typed (commandline -ct)
    set -l offered (printf '%s\n' $words "$typed" | veltrane-dsn --complete 2>/dev/null)
    switch "$offered[1]"
        case :files
            complete -C "__fish_command_without_completions $typed"
        case :variables
            printf '%s\n' (string match -r -- '^--[^=]*=|' "$typed")(set -nx)
        case '*'
            printf '%s\n' $offered
    end
end
complete -c veltrane-dsn -f -a '(__veltrane_dsn)'
