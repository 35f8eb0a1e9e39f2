# Completion of tov-schema for fish; the command itself says what may follow.
function __tov_schema_complete
    set -l words (commandline -opc) (commandline -ct)
    set -l command (string replace -r '^~/' "$HOME/" -- $words[1]) # as it was typed, without its quotes
    type -q -- $command; or set command tov-schema
    for line in ($command __complete $words[2..] 2>/dev/null)
        if test "$line" = :files
            __fish_complete_path (commandline -ct)
        else
            echo $line
        end
    end
end
complete -c tov-schema -f -a '(__tov_schema_complete)'
