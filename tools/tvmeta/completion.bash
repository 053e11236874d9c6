# shellcheck shell=bash
# Completion of tvmeta for bash: commands, options, field and method names, and files.

# Names that hold blanks are quoted as file names are.
_tvmeta_names() {
    local IFS=$'\n'
    # shellcheck disable=SC2207 # one name per line
    COMPREPLY=($(compgen -W "$1" -- "$2"))
    compopt -o filenames 2>/dev/null
}

# The last of the names with commas between them.
_tvmeta_fields() {
    local fields="file container model lens dateTimeOriginal exposureTime fNumber isoSpeed exposureSource focalLength
        focalLength35mm focalPlaneXResolution focalPlaneResolutionUnit orientation gpsLatitude gpsLongitude gpsAltitude
        gpsDate gpsTime thumbnailWidth thumbnailHeight thumbnailRowBytes thumbnailLength thumbnailOffset iptcLength
        iptcOffset xmpLength xmpOffset secondsSinceFirst"
    local before=""
    [[ $1 == *,* ]] && before=${1%,*},
    mapfile -t COMPREPLY < <(compgen -P "$before" -W "$fields" -- "${1##*,}")
    compopt -o nospace 2>/dev/null
}

_tvmeta() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local -A options=(
        [tvmeta]="--version"
        [info]="-r --recursive --json --list --fields"
        [tiff]="--photo --method --set --icc --icc-from-photo --resolution --depth --orientation"
        [settings]=""
        [settings show]=""
        [settings write]="--method --set"
        [settings insert]="-o --output --method --set"
        [exif]="-o --output"
        [iptc]="-o --output --add-keyword"
        [icc]="--replace"
        [stats]="--json"
    )
    local command=tvmeta words="info tiff settings exif iptc icc stats" word
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        if [[ " $words " == *" $word "* ]]; then
            [[ $command == tvmeta ]] && command=$word || command+=" $word"
            words=""
            [[ $command == settings ]] && words="show write insert"
        fi
    done

    COMPREPLY=()
    case $previous in
    --fields) _tvmeta_fields "$current" ;;
    --method)
        _tvmeta_names $'Details Enhancer\nTone Compressor\nContrast Optimizer
Fusion/Adjust\nFusion/Intensive\nFusion/Real-Estate' "$current"
        ;;
    --depth) mapfile -t COMPREPLY < <(compgen -W "8 16 32 16f" -- "$current") ;;
    --set | --resolution | --orientation | --add-keyword) ;;
    *)
        if [[ $current == -* ]]; then
            words="-h --help ${options[$command]}"
        fi
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
        [[ -n $words ]] || compopt -o default 2>/dev/null # file names
        ;;
    esac
}
complete -F _tvmeta tvmeta
