# Completion of vantrel for bash: source it, or put it into /etc/bash_completion.d.

_vantrel() {
    local word=${COMP_WORDS[COMP_CWORD]}
    local before=${COMP_WORDS[COMP_CWORD - 1]}
    # bash takes --method=bilinear apart.
    if [[ $word == = ]]; then
        word=
    elif [[ $before == = ]]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    local IFS=$' \t\n'
    local options='--size --fit --method --format --type --fps --start --duration --as-is
        --no-sound --output-folder --overwrite --dry-run --json --log --graph --publish --quiet --play --pages
        --registered --module --cpu --list --help --version'
    local values=
    case $before in
        --method) values='auto nearest nearest-auto nearest-mmx nearest-sse bilinear bilinear-auto
            bilinear-mmx bilinear-sse' ;;
        --format) values='auto yv12 iyuv i420 yvu9 yuy2 yuyv yvyu uyvy rgb24 rgb555 rgb565' ;;
        --type) values='auto mpeg1 mpeg2' ;;
        --size | --fit | --fps | --start | --duration)
            COMPREPLY=()
            return 0
            ;;
        --output-folder)
            IFS=$'\n'
            COMPREPLY=($(compgen -d -- "$word"))
            return 0
            ;;
        --log | --module) ;;
        *) [[ $word != -* ]] || values=$options ;;
    esac
    if [[ -n $values ]]; then
        COMPREPLY=($(compgen -W "$values" -- "$word"))
    else
        IFS=$'\n'
        COMPREPLY=($(compgen -f -- "$word"))
    fi
    return 0
}

complete -o filenames -F _vantrel vantrel vantrel.exe
