# Completion of tov-schema for fish; the command itself says what may follow.
function __tov_schema_complete
    set -l words (commandline -opc) (commandline -ct)
    for line in ($words[1] __complete $words[2..] 2>/dev/null)
        if test "$line" = :files
            __fish_complete_path (commandline -ct)
        else
            echo $line
        end
    end
end
complete -c tov-schema -f -a '(__tov_schema_complete)'
