# shellcheck shell=bash disable=SC2034
# Sourced by the tests of the tool. Arguments: the tool, the folder of examples, and the emulator of a foreign tool.
set -u
tvmeta=$(realpath "$1")
examples=$(realpath "$2")
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
# profile FILE NAME: writes a small ICC version 2 profile (ICC.1:2001-04) with a name of up to 31 characters.
profile() {
    {
        printf '\0\0\0\xDCtvtm\2\x40\0\0mntrRGB XYZ \7\xEA\0\1\0\1\0\0\0\0\0\0acsp'
        head -c 88 /dev/zero
        printf '\0\0\0\1desc\0\0\0\x90\0\0\0\x4Cdesc\0\0\0\0\0\0\0\x20%-31s\0' "$2"
        head -c 64 /dev/zero
    } >"$1"
}
