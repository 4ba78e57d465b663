# Completion of corvanectl for bash: commands and options as its help has them, and what lives in the box now: uids, names,
# methods, notifications.

_corvanectl_commands() { # [COMMAND]: the commands in the help of corvanectl, or of one of its commands
    corvanectl "$@" --help 2>/dev/null | awk '/^Commands:/ { on = 1; next } /^[^ ]/ { on = 0 } on && /^  [a-z]/ { print $1 }'
}

_corvanectl_options() { # COMMAND...
    corvanectl "$@" --help 2>/dev/null | grep -o '^ *\(-h,\)\?--[a-z-]*' | grep -o -- '--.*'
}

_corvanectl_applications() { # uids, and names that were given at a launch
    corvanectl --json --timeout 1 list 2>/dev/null | grep -o '"uid":"[^"]*"' | cut -d '"' -f 4
    corvanectl --json --timeout 1 ps 2>/dev/null | grep -o '"name":"[^"]\+"' | cut -d '"' -f 4
}

_corvanectl_methods() { # UID
    corvanectl --json --timeout 1 describe "$1" 2>/dev/null | grep -o '"name":"[A-Za-z.]*::[A-Za-z]*"' | cut -d '"' -f 4 | grep -v '::on[A-Z]'
}

_corvanectl_values() { # COMMAND, what is behind its UID
    case $1 in
    state) echo LOADING RUNNING SUSPENDING SUSPENDED RESUMING TERMINATING TERMINATED ABORTED RUNAWAY ;;
    focus | visibility) echo on off ;;
    key) sed -n 's/^#define \(KEY_[A-Z0-9_]*\).*/\1/p' /usr/include/linux/input-event-codes.h 2>/dev/null ;;
    esac
}

_corvanectl() {
    local line=${COMP_LINE:0:COMP_POINT} current="" previous all word words=() index
    COMPREPLY=()
    # COMP_WORDS has the methods' colons as words of their own.
    read -ra all <<<"$line"
    if [[ $line != *[[:space:]] ]]; then
        current=${all[-1]}
        unset 'all[-1]'
    fi
    previous=${all[-1]}
    # The words that are neither options nor the values of options.
    for ((index = 1; index < ${#all[@]}; ++index)); do
        word=${all[index]}
        case $word in
        --json | --fresh | --press | --release | --watch) ;;
        --*=*) ;;
        --*) ((++index)) ;;
        *) words+=("$word") ;;
        esac
    done

    local candidates=""
    case $previous in
    --restart) candidates="never on-failure always" ;;
    --visibility) candidates="on off" ;;
    --directory) compopt -o dirnames && return ;;
    *)
        if [[ $current == -* ]]; then
            candidates=$(_corvanectl_options "${words[@]:0:1}")
        elif ((${#words[@]} == 0)); then
            candidates=$(_corvanectl_commands)
        else
            case ${words[0]} in
            launch) ((${#words[@]} > 1)) || mapfile -t COMPREPLY < <(compgen -c -- "$current"); compopt -o default; return ;;
            screenshot) compopt -o default && return ;;
            list | ps | windows) ;;
            token | input)
                case ${#words[@]} in
                1) candidates=$(_corvanectl_commands "${words[0]}") ;;
                2) candidates=$(_corvanectl_applications) ;;
                *) compopt -o default && return ;;
                esac
                ;;
            monitor) candidates=$(_corvanectl_applications) ;;
            *)
                case ${#words[@]} in
                1) candidates=$(_corvanectl_applications) ;;
                2)
                    if [[ ${words[0]} == call ]]; then
                        candidates=$(_corvanectl_methods "${words[1]}")
                    else
                        candidates=$(_corvanectl_values "${words[0]}")
                    fi
                    ;;
                esac
                ;;
            esac
        fi
        ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$candidates" -- "$current")
    # A colon breaks words, so bash replaces what is behind the last one only.
    if [[ $current == *:* && $COMP_WORDBREAKS == *:* ]]; then
        COMPREPLY=("${COMPREPLY[@]#"${current%:*}:"}")
    fi
}

complete -F _corvanectl corvanectl
