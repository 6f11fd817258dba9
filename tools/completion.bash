# Bash completion for tilepress(1). Commands, options and their words are read from
# the program's own --help: nothing to be kept up to date here.

_tilepress() {
    local word=$2 before=$3 tool=${COMP_WORDS[0]} i help commands words= command=
    COMPREPLY=()
    help=$("$tool" --help 2>/dev/null)
    commands=$(awk '/^Subcommands:/ { on = 1; next } /^$/ { on = 0 } on { print $1 }' <<<"$help")
    for ((i = 1; i < COMP_CWORD; ++i)); do
        if grep -qxF -e "${COMP_WORDS[i]}" <<<"$commands"; then
            command=${COMP_WORDS[i]}
            help=$("$tool" "$command" --help 2>/dev/null)
            break
        fi
    done
    case $before in
        -?*)    # the words that an option takes stand behind it, with bars between
            words=$(awk -v option="$before" '
                /^  -/ { n = split($1, names, ","); for (i = 1; i <= n; i++)
                         if (names[i] == option && $2 ~ /^[a-z]+([|][a-z]+)+$/) { gsub(/[|]/, " ", $2); print $2 } }' <<<"$help") ;;
    esac
    if [ -z "$words" ]; then
        case $word in
            -*) words=$(awk '/^  -/ { gsub(/,/, " ", $1); gsub(/[{][a-z]*[}]/, "", $1); print $1 }' <<<"$help") ;;
            *) [ -n "$command" ] || words=$commands ;;
        esac
    fi
    [ -z "$words" ] || mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
# Files where the function offers nothing.
complete -o default -F _tilepress tilepress
