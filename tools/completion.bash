# Bash completion for tilepress(1). Commands, options and their words are read from
# the program's own --help: nothing to be kept up to date here.

_tilepress() {
    local word=$2 before=$3 tool=${COMP_WORDS[0]} words command
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        words=$("$tool" --help 2>/dev/null | awk '/^Subcommands:/ { on = 1; next } /^$/ { on = 0 } on { print $1 }')
        mapfile -t COMPREPLY < <(compgen -W "$words --help --version" -- "$word")
        return
    fi
    command=${COMP_WORDS[1]}
    case $before in
        -?*)    # the words that an option takes stand behind it, with bars between
            words=$("$tool" "$command" --help 2>/dev/null | awk -v option="$before" '
                /^  -/ { n = split($1, names, ","); for (i = 1; i <= n; i++)
                         if (names[i] == option && $2 ~ /^[a-z]+([|][a-z]+)+$/) { gsub(/[|]/, " ", $2); print $2 } }')
            if [ -n "$words" ]; then
                mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
                return
            fi ;;
    esac
    case $word in
        -*) words=$("$tool" "$command" --help 2>/dev/null | awk '/^  -/ { gsub(/,/, " ", $1); print $1 }')
            mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word") ;;
    esac
}
# Files where the function offers nothing.
complete -o default -F _tilepress tilepress
