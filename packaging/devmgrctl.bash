# Completion of devmgrctl: words, document names from the cache, levels, files.
_devmgrctl() {
    local word=${COMP_WORDS[COMP_CWORD]} verb= at root=()
    for ((at = 1; at < COMP_CWORD; at++)); do
        case ${COMP_WORDS[at]} in
        --root) root=(--root "${COMP_WORDS[++at]}") ;;
        --*) ;;
        *)
            verb=${COMP_WORDS[at]}
            break
            ;;
        esac
    done
    local choices=
    case $verb in
    "") choices="status list get watch diff rebuild commands metrics log fibre --root --help --version" ;;
    status | get | watch | rebuild)
        choices=$(devmgrctl "${root[@]}" list 2>/dev/null)
        [[ $verb == watch ]] && choices+=" --fields"
        ;;
    log) choices="error warn info debug" ;;
    diff)
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        return
        ;;
    esac
    [[ ${COMP_WORDS[COMP_CWORD - 1]} == --root ]] && {
        mapfile -t COMPREPLY < <(compgen -d -- "$word")
        return
    }
    mapfile -t COMPREPLY < <(compgen -W "$choices --help" -- "$word")
}
complete -F _devmgrctl devmgrctl
