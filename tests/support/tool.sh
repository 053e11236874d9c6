# shellcheck shell=bash disable=SC2034
# Sourced by the tests of the tool. Arguments: the tool, the folder of examples, and the emulator of a foreign tool.
set -u
tvmeta=$(realpath "$1")
examples=$(realpath "$2")
dir=$(mktemp -d)
runner=$(mktemp)
trap 'rm -rf "$dir" "$runner"' EXIT
if [ $# -gt 2 ]; then
    printf '#!/bin/sh\nexec%s "$@"\n' "$(printf ' %q' "${@:3}" "$tvmeta")" >"$runner"
    chmod +x "$runner"
    tvmeta=$runner
fi
failed=0

fail() {
    echo "FAILED: $*" >&2
    failed=1
}
# expect TEXT COMMAND...: the command succeeds and prints the text.
expect() {
    local text=$1 output
    shift
    output=$("$@" 2>&1) || fail "$* exits with $?: $output"
    [[ $output == *"$text"* ]] || fail "$* does not print '$text' but: $output"
}
# refuse TEXT COMMAND...: the command fails with status 1 and prints the text. misuse: the same with status 2.
refuse() { complain 1 "$@"; }
misuse() { complain 2 "$@"; }
complain() {
    local expected=$1 text=$2 output status
    shift 2
    output=$("$@" 2>&1)
    status=$?
    [ "$status" -eq "$expected" ] || fail "$* exits with $status"
    [[ $output == *"$text"* ]] || fail "$* does not print '$text' but: $output"
}
# profile FILE NAME: writes a small ICC version 2 profile (ICC.1:2001-04) with a name of up to 31 characters.
profile() {
    {
        printf '\0\0\0\xDCtvtm\2\x40\0\0mntrRGB XYZ \7\xEA\0\1\0\1\0\0\0\0\0\0acsp'
        head -c 88 /dev/zero
        printf '\0\0\0\1desc\0\0\0\x90\0\0\0\x4Cdesc\0\0\0\0\0\0\0\x20%-31s\0' "$2"
        head -c 64 /dev/zero
    } >"$1"
}
