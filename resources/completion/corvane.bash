# bash completion of corvane(1)

_corvane() {
    local cur prev words cword split
    _init_completion -s || return

    if [[ $prev == --defaults ]]; then
        _filedir
        return
    fi
    $split && return

    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W '--help --version --defaults' -- "$cur"))
    else
        _filedir -d
    fi
} && complete -F _corvane corvane
