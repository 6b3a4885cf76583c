# Completion of spcore's commands, options and values, for bash. The command itself knows them.
_spcore() {
    local word=${COMP_WORDS[COMP_CWORD]} line
    [[ $word != = ]] || word=
    COMPREPLY=()
    while IFS= read -r line; do
        case $line in
        :files)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -f -- "$word")
            ;;
        :folders)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -d -- "$word")
            ;;
        *) COMPREPLY+=("${line%%$'\t'*}") ;;
        esac
    done < <("${COMP_WORDS[0]}" --complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}
complete -F _spcore spcore
