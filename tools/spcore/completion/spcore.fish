# Completion of spcore's commands, options and values, for fish. The command itself knows them.
function __spcore_complete
    set -l words (commandline -opc)
    set -l word (commandline -ct)
    for line in ($words[1] --complete $words[2..-1] "$word" 2>/dev/null)
        switch $line
            case ':files'
                __fish_complete_path $word
            case ':folders'
                __fish_complete_directories $word
            case '*'
                echo $line
        end
    end
end
complete -c spcore -f -a '(__spcore_complete)'
