# Completion of tov-schema for bash; the command itself says what may follow.
_tov_schema()
{
    local line
    COMPREPLY=()
    while IFS= read -r line; do
        if [[ $line == :files ]]; then
            compopt -o default
        else
            COMPREPLY+=("${line%%$'\t'*}")
        fi
    done < <("${COMP_WORDS[0]}" __complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}
complete -F _tov_schema tov-schema
