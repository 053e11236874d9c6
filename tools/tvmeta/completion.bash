# shellcheck shell=bash
# Completion of tvmeta for bash: commands, options, the names of fields, methods and settings, and files.

# A word as it is meant, without the quotes and backslashes that it is typed with.
_tvmeta_plain() {
    local word=${1//\\/}
    printf '%s' "${word//[\"\']/}"
}

# Methods, whose names hold blanks. Within quotes they are written as they are.
_tvmeta_methods() {
    mapfile -t COMPREPLY < <(compgen -W $'Details\\ Enhancer\nTone\\ Compressor\nContrast\\ Optimizer
Fusion/Adjust\nFusion/Intensive\nFusion/Real-Estate' -- "$(_tvmeta_plain "$1")")
    [[ $1 == [\"\']* ]] || COMPREPLY=("${COMPREPLY[@]// /\\ }")
}

# The settings of the method that the words before name.
_tvmeta_settings() {
    local settings="" method="" i
    for ((i = 1; i < COMP_CWORD; i++)); do
        [[ ${COMP_WORDS[i]} == --method ]] && method=${COMP_WORDS[i + 1]}
        [[ $method == = ]] && method=${COMP_WORDS[i + 2]}
    done
    case $(_tvmeta_plain "$method") in
    "Details Enhancer")
        settings="Strength ColorSaturation Luminosity WhiteClip BlackClip SmoothingMode Smoothing Microcontrast
            Microsmoothing Gamma HighlightsSmoothing ShadowsSmoothing ShadowsClipping ColorTemperature
            SaturationHighlights SaturationShadows IsPano360"
        ;;
    "Tone Compressor") settings="Brightness Compression Contrast WhiteClip BlackClip ColorTemperature Saturation" ;;
    "Contrast Optimizer")
        settings="Strength ToneCompression LightingEffect WhiteClip BlackClip Midtone ColorTemperature Saturation
            IsPano360"
        ;;
    Fusion/Adjust)
        settings="Accentuation BlendingPoint Shadows Saturation WhiteClip BlackClip MidtonesAdjustment IsPano360
            Sharpness"
        ;;
    Fusion/Intensive) settings="Strength Saturation Radius" ;;
    Fusion/Real-Estate) settings="DepthHighlights Highlights Shadows LocalContrast Saturation IsPano360" ;;
    esac
    mapfile -t COMPREPLY < <(compgen -S = -W "$settings" -- "$1")
    compopt -o nospace 2>/dev/null
}

# The last of the names with commas between them.
_tvmeta_fields() {
    local fields="file container model lens dateTimeOriginal exposureTime fNumber isoSpeed ev100 exposureSource
        focalLength focalLength35mm focalPlaneXResolution focalPlaneResolutionUnit orientation gpsPosition gpsLatitude gpsLongitude gpsAltitude
        gpsDate gpsTime thumbnailWidth thumbnailHeight thumbnailRowBytes thumbnailLength thumbnailOffset iptcLength
        iptcOffset xmpLength xmpOffset secondsSinceFirst"
    local before=""
    [[ $1 == *,* ]] && before=${1%,*},
    mapfile -t COMPREPLY < <(compgen -P "$before" -W "$fields" -- "${1##*,}")
    compopt -o nospace 2>/dev/null
}

_tvmeta() {
    # An option and its value may be joined by "=", which bash takes for a word of its own.
    local at=$COMP_CWORD current=${COMP_WORDS[COMP_CWORD]}
    if [[ $current == = ]]; then
        current=""
    elif [[ ${COMP_WORDS[at - 1]} == = ]]; then
        ((at--))
    fi
    local previous=${COMP_WORDS[at - 1]}
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
        [brackets]="-r --recursive --gap --count --json --csv --files0 --into --copy --dry-run"
        [report]="-r --recursive --gap --count -o --output"
        [stats]="--json"
    )
    local command=tvmeta words="info tiff settings exif iptc icc stats brackets report" word
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
    --method) _tvmeta_methods "$current" ;;
    --set) _tvmeta_settings "$current" ;;
    --depth) mapfile -t COMPREPLY < <(compgen -W "8 16 32 16f" -- "$current") ;;
    --resolution | --orientation | --add-keyword | --gap | --count) ;;
    *)
        [[ ${COMP_WORDS[at]} == = && $previous != -* ]] && return # the value of a setting
        if [[ $current == -* ]]; then
            words="-h --help ${options[$command]}"
        fi
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
        [[ -n $words ]] || compopt -o default 2>/dev/null # file names
        ;;
    esac
}
complete -F _tvmeta tvmeta
