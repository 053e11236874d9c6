# shellcheck shell=bash
# Completion of tvmeta for bash. The tool lists its commands, options, fields, methods and settings.

# Offers the names of a list that begin with a text: _tvmeta_offer TEXT LIST WORD...
_tvmeta_offer() {
    local text=$1
    shift
    mapfile -t COMPREPLY < <(compgen -W "$("${COMP_WORDS[0]}" --list "$@" 2>/dev/null)" -- "$text")
}

# A word without shell quotes and backslashes.
_tvmeta_plain() {
    local word=${1//\\/}
    printf '%s' "${word//[\"\']/}"
}

# Method names, which contain blanks; escaped unless the word is quoted.
_tvmeta_methods() {
    local IFS=$'\n'
    _tvmeta_offer "$(_tvmeta_plain "$1")" methods
    [[ $1 == [\"\']* ]] || COMPREPLY=("${COMPREPLY[@]// /\\ }")
}

# The settings of the method on the command line.
_tvmeta_settings() {
    local method="" i
    for ((i = 1; i < COMP_CWORD; i++)); do
        [[ ${COMP_WORDS[i]} == --method ]] && method=${COMP_WORDS[i + 1]}
        [[ $method == = ]] && method=${COMP_WORDS[i + 2]}
    done
    _tvmeta_offer "$1" settings "$(_tvmeta_plain "$method")"
    COMPREPLY=("${COMPREPLY[@]/%/=}")
    compopt -o nospace 2>/dev/null
}

# The last name of a list with commas.
_tvmeta_fields() {
    local before=""
    [[ $1 == *,* ]] && before=${1%,*},
    _tvmeta_offer "${1##*,}" fields
    COMPREPLY=("${COMPREPLY[@]/#/$before}")
    compopt -o nospace 2>/dev/null
}

_tvmeta() {
    # An option and its value can be joined by "=", which bash splits into a separate word.
    local at=$COMP_CWORD current=${COMP_WORDS[COMP_CWORD]}
    if [[ $current == = ]]; then
        current=""
    elif [[ ${COMP_WORDS[at - 1]} == = ]]; then
        ((at--))
    fi
    local previous=${COMP_WORDS[at - 1]}

    COMPREPLY=()
    case $previous in
    --fields | --sort | --filter) _tvmeta_fields "$current" ;;
    --method) _tvmeta_methods "$current" ;;
    --set) _tvmeta_settings "$current" ;;
    --depth) mapfile -t COMPREPLY < <(compgen -W "8 16 32 16f" -- "$current") ;;
    --orientation) mapfile -t COMPREPLY < <(compgen -W "photo 1 2 3 4 5 6 7 8" -- "$current") ;;
    --resolution | --add-keyword | --keyword | --gap | --count | --name) ;;
    *)
        [[ ${COMP_WORDS[at]} == = && $previous != -* ]] && return # the value of a setting
        if [[ $current == -* ]]; then
            _tvmeta_offer "$current" options "${COMP_WORDS[@]:1:COMP_CWORD-1}"
        elif [[ -n $("${COMP_WORDS[0]}" --list commands "${COMP_WORDS[@]:1:COMP_CWORD-1}" 2>/dev/null) ]]; then
            _tvmeta_offer "$current" commands "${COMP_WORDS[@]:1:COMP_CWORD-1}"
        else
            compopt -o default 2>/dev/null # file names
        fi
        ;;
    esac
}
complete -F _tvmeta tvmeta
