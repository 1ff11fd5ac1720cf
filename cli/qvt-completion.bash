# Bash completion of qvt: its commands, their options, and the names of the
# installed encoders and effects (which hold blanks and parentheses, so
# each is completed as one word, escaped for the shell).

# Completes the current word from names given one a line.
_qvt_names() {
    local cur=$1 names=$2 IFS=$'\n'
    # What was typed, without the shell's escapes and an opening quote.
    cur=${cur//\\/}
    cur=${cur#[\"\']}
    local name
    COMPREPLY=()
    while read -r name; do
        [[ -n $name && $name == "$cur"* ]] && COMPREPLY+=("$(printf '%q' "$name")")
    done <<<"$names"
}

_qvt() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]}
    local qvt=${COMP_WORDS[0]}
    local commands="convert plugins name settings profile help"
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        COMPREPLY=($(compgen -W "$commands --version --help" -- "$cur"))
        return
    fi
    local command=${COMP_WORDS[1]}
    case $prev in
        --to)
            _qvt_names "$cur" "$("$qvt" plugins --encoders 2>/dev/null)"
            return ;;
        --effect)
            # An effect is written NAME=SETTINGS: the name comes with its "=".
            _qvt_names "$cur" "$("$qvt" plugins --effects 2>/dev/null | sed 's/$/=/')"
            compopt -o nospace 2>/dev/null
            return ;;
        --overwrite)
            COMPREPLY=($(compgen -W "ask skip always" -- "$cur"))
            return ;;
        --folder)
            compopt -o filenames 2>/dev/null
            COMPREPLY=($(compgen -d -- "$cur"))
            return ;;
        --options | --naming | --cores)
            return ;;
    esac
    case $command in
        help)
            ((COMP_CWORD == 2)) && COMPREPLY=($(compgen -W "${commands% help}" -- "$cur"))
            return ;;
        convert)
            if [[ $cur == -* ]]; then
                COMPREPLY=($(compgen -W "--to --options --folder --naming --effect --cores --overwrite
                    --recursive --quiet --verbose --window --help" -- "$cur"))
                return
            fi ;;
        plugins)
            COMPREPLY=($(compgen -W "--encoders --effects --help" -- "$cur"))
            return ;;
        name)
            if [[ $cur == -* ]]; then
                COMPREPLY=($(compgen -W "--folder --to --help" -- "$cur"))
                return
            fi ;;
        settings)
            ((COMP_CWORD == 2)) && COMPREPLY=($(compgen -W "get set list delete --help" -- "$cur"))
            return ;;
        profile)
            ((COMP_CWORD == 2)) && COMPREPLY=($(compgen -W "list create delete --help" -- "$cur"))
            return ;;
    esac
    # Files and folders to convert or name.
    compopt -o filenames 2>/dev/null
    COMPREPLY=($(compgen -f -- "$cur"))
}

complete -F _qvt qvt
