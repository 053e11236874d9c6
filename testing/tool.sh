# shellcheck shell=bash disable=SC2034
# Sourced by the tests of the tool, which go on in a new folder. Arguments: the tool, the folder of examples, and the
# emulator of a foreign tool.
set -u
tvmeta=$(realpath "$1")
examples=$(realpath "$2")
root=$(realpath "$(dirname "$0")/..")
dir=$(mktemp -d)
runner=$(mktemp)
errors=$(mktemp)
trap 'rm -rf "$dir" "$runner" "$errors"' EXIT
if [ $# -gt 2 ]; then
    printf '#!/bin/sh\nexec%s "$@"\n' "$(printf ' %q' "${@:3}" "$tvmeta")" >"$runner"
    chmod +x "$runner"
    tvmeta=$runner
fi
failed=0
cd "$dir" || exit 1

fail() {
    echo "FAILED: $*" >&2
    failed=1
    [ -z "${FAIL_FAST-}" ] || exit 1
}
# run STATUS COMMAND...: runs the command, which exits with the status. Sets "output" and "messages", its two streams.
run() {
    local expected=$1 status
    shift
    output=$("$@" 2>"$errors")
    status=$?
    messages=$(cat "$errors")
    [ "$status" -eq "$expected" ] || fail "$* exits with $status: $messages"
}
# contains WHAT TEXT FOUND
contains() { [[ $3 == *"$2"* ]] || fail "$1 does not print '$2' but: $3"; }
# expect TEXT COMMAND...: the command succeeds, prints the text, and no message.
expect() {
    run 0 "${@:2}"
    contains "${*:2}" "$1" "$output"
    [ -z "$messages" ] || fail "${*:2} complains: $messages"
}
# warn TEXT COMMAND...: the command succeeds with the text as a message. refuse: it fails with status 1 and that message.
# misuse: the same with status 2.
warn() { complain 0 "$@"; }
refuse() { complain 1 "$@"; }
misuse() { complain 2 "$@"; }
complain() {
    run "$1" "${@:3}"
    contains "messages of ${*:3}" "$2" "$messages"
}
# same EXPECTED FOUND
same() { [ "$1" = "$2" ] || fail "expected: $1"$'\n'"found: $2"; }
# samples TIFF: the bytes of its strip.
samples() {
    tail -c +9 "$1" | head -c "$(tiffinfo -s "$1" 2>/dev/null | sed -n 's/.*0: \[ *8, *\([0-9]*\)\]/\1/p')"
}
# refuse_cuts PICTURE...: none of their first quarters are read.
refuse_cuts() {
    local picture quarters
    for picture in "$@"; do
        for quarters in 0 1 2 3; do
            head -c $(($(stat -c %s "$picture") * quarters / 4)) "$picture" >cut.file
            refuse "cut.file: " "$tvmeta" tiff --force cut.file out.tif
        done
    done
}
# raf JPEG: a RAF file with this preview. Its header has the place and the size.
raf() {
    local size
    size=$(stat -c %s "$1")
    printf '%-84s\0\0\0\x94' "FUJIFILMCCD-RAW 0201"
    printf '%b' "$(printf '\\x%02x' $((size >> 24)) $((size >> 16 & 255)) $((size >> 8 & 255)) $((size & 255)))"
    head -c 56 /dev/zero
    cat "$1"
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
