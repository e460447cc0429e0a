# bash completion of corvane-cli(1)

_corvane_cli_options() { # COMMAND: the options that it takes
    local common='--help --defaults --quiet'
    local library="$common --volume"
    local selection='--all --raw --id --roll --album --keyword --present'
    local settings='--quality --scale --long --short --albums --no-albums --tag --no-tag --trash
        --no-trash --originals --displayed'
    case $1 in
        scan) echo "$library --after-crash --dry-run --report $settings $selection" ;;
        list | check) echo "$library --json $selection" ;;
        info) echo "$library --json" ;;
        trash) echo "$library --after-crash --json --restore --empty --yes --id" ;;
        verify) echo "$library --after-crash --json --repair" ;;
        backup) echo "$library --after-crash --json --list --restore" ;;
        sample) echo "$common --photos --megapixels" ;;
        *) echo '--help --version' ;;
    esac
}

_corvane_cli() {
    local cur prev words cword split
    _init_completion -s || return

    local command='' word
    for word in "${words[@]:1:cword-1}"; do
        if [[ $word != -* ]]; then
            command=$word
            break
        fi
    done

    if [[ $command == backup && $prev == --restore ]]; then
        return
    fi
    case $prev in
        --defaults | --report)
            _filedir
            return
            ;;
        --scale)
            COMPREPLY=($(compgen -W '1 0.75 0.5 0.25' -- "$cur"))
            return
            ;;
        --id | --volume | --roll | --album | --keyword | --quality | --long | --short | --photos | --megapixels)
            return
            ;;
    esac
    $split && return

    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W "$(_corvane_cli_options "$command")" -- "$cur"))
    elif [[ -z $command ]]; then
        COMPREPLY=($(compgen -W 'scan list info check trash verify backup sample' -- "$cur"))
    else
        _filedir -d
    fi
} && complete -F _corvane_cli corvane-cli
