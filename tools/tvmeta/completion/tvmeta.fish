# Completion of tvmeta for fish. The tool prints the candidates: tvmeta --complete WORD...
function __tvmeta_complete
    set -l words (commandline -opc)
    set -l found ($words[1] --complete $words[2..-1] "$(commandline -ct)" 2>/dev/null)
    if contains -- :files $found
        __fish_complete_path (commandline -ct)
    else
        string match --invert ':*' -- $found
    end
end
complete -c tvmeta -f -a '(__tvmeta_complete)'
