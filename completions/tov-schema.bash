# Completion of tov-schema for bash; the command itself says what may follow.
_tov_schema()
{
    local line command=${COMP_WORDS[0]//[\\\"\']/} # as it was typed, without its quotes
    [[ ${COMP_WORDS[0]} == \~/* ]] && command=$HOME/${command#\~/}
    type -P -- "$command" >/dev/null || command=tov-schema
    COMPREPLY=()
    while IFS= read -r line; do
        if [[ $line == :files ]]; then
            compopt -o default
        else
            COMPREPLY+=("${line%%$'\t'*}")
        fi
    done < <("$command" __complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}
complete -F _tov_schema tov-schema
