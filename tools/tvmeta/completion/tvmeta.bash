# shellcheck shell=bash
# Completion of tvmeta for bash. The tool prints the candidates: tvmeta --complete WORD...

# A word without shell quotes and backslashes.
_tvmeta_plain() {
    local word=${1//\\/}
    printf '%s' "${word//[\"\']/}"
}

_tvmeta() {
    local words=() i word line
    for ((i = 1; i <= COMP_CWORD; i++)); do
        word=$(_tvmeta_plain "${COMP_WORDS[i]}")
        if [[ $word == = || ${COMP_WORDS[i - 1]} == = ]] && ((${#words[@]})); then
            words[-1]+=$word # bash splits words at "="
        else
            words+=("$word")
        fi
    done
    local current=${COMP_WORDS[COMP_CWORD]}
    word=$(_tvmeta_plain "$current")
    [[ $word != = ]] || word=""
    local before=${words[-1]%"$word"} # what bash does not replace

    COMPREPLY=()
    while IFS= read -r line; do
        case $line in
        :files) compopt -o default 2>/dev/null ;;
        :nospace) compopt -o nospace 2>/dev/null ;;
        *)
            line=${line#"$before"}
            [[ $current == [\"\']* ]] || line=${line// /\\ }
            COMPREPLY+=("$line")
            ;;
        esac
    done < <("${COMP_WORDS[0]}" --complete "${words[@]}" 2>/dev/null)
}
complete -F _tvmeta tvmeta
