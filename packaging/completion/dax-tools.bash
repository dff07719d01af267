# bash completion of daxctl and kovanctl. Both are asked: their --help tells of commands, options and values, so that
# nothing of it stands here and can grow old.

# The names in one part of a help, such as "Subcommands:", one a line.
_dax_tool_names() {
    local line inside=
    while IFS= read -r line; do
        case $line in
        "$2") inside=yes ;;
        [![:space:]]*) inside= ;;
        '  '[![:space:]]*)
            [[ $inside ]] && printf '%s\n' "$line"
            ;;
        esac
    done <<<"$1" | sed -E 's/^  (-h,)?([^ {]+).*/\2/'
}

# What the help says behind the name of an option or a positional argument: "TEXT=daxctl", or nothing for a flag.
_dax_tool_kind() {
    sed -nE "s/^  (-h,)?$2 ([A-Z][^ ]*|[^ ]*\|[^ ]*).*/\2/p" <<<"$1" | head -n 1
}

# The words that a kind names: those of "OTA|OTN=OTN" and of "TEXT:{bool,int}".
_dax_tool_values() {
    case $1 in
    *'{'*) sed -E 's/.*\{(.*)\}.*/\1/' <<<"$1" | tr ',' '\n' ;;
    *'|'*) sed -E 's/=.*//' <<<"$1" | tr '|' '\n' ;;
    esac
}

# The keys that the device has now, for "setting get" and the like.
_dax_tool_keys() {
    case ${*:2} in
    'setting get' | 'setting set' | 'setting unset') "$1" setting list 2>/dev/null | cut -d ' ' -f 1 ;;
    'info get' | 'info set') "$1" info list 2>/dev/null | cut -d ' ' -f 1 ;;
    esac
}

_dax_tool() {
    local current=${COMP_WORDS[COMP_CWORD]} command=("$1") position=0 awaited= help word words= kind index
    COMPREPLY=()
    [[ $current != = ]] || current=
    help=$("$1" --help 2>/dev/null) || return
    for ((index = 1; index < COMP_CWORD; index++)); do
        word=${COMP_WORDS[index]}
        if [[ $word == = ]]; then # bash makes a word of it in "--type=OTN"
            continue
        elif [[ $awaited ]]; then # it is the value of the option before it
            awaited=
        elif [[ $word == -- ]]; then # behind it stands another command, with its own words
            ((index + 1 < COMP_CWORD)) || mapfile -t COMPREPLY < <(compgen -c -- "$current")
            compopt -o default 2>/dev/null
            return
        elif [[ $word == -* ]]; then
            awaited=$(_dax_tool_kind "$help" "$word")
        elif grep -qxF -- "$word" < <(_dax_tool_names "$help" Subcommands:); then
            command+=("$word")
            help=$("${command[@]}" --help 2>/dev/null) || return
        else
            ((++position))
        fi
    done
    if [[ $awaited ]]; then
        kind=$awaited
    elif [[ $current == -* ]]; then
        words=$(_dax_tool_names "$help" Options:)
    else
        words=$(_dax_tool_names "$help" Subcommands:)
        if [[ ! $words ]]; then
            word=$(_dax_tool_names "$help" Positionals: | sed -n "$((position + 1))p")
            [[ $word ]] && kind=$(_dax_tool_kind "$help" "$word")
            [[ $word == KEY ]] && words=$(_dax_tool_keys "${command[@]}")
        fi
    fi
    [[ $words ]] || words=$(_dax_tool_values "$kind")
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    # Only for a text can a file's name be meant.
    if [[ ! $words && $kind == TEXT* ]]; then
        compopt -o default 2>/dev/null
    fi
}

complete -F _dax_tool daxctl kovanctl
