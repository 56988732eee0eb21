#!/usr/bin/env bash
# scripts/lib/run_tests.sh must name the tests that passed only when they were tried again, and no
# others, also when another test failed for good.
#
#   run_tests_test.sh CTEST
set -euo pipefail

ctest=$1
cd "$(dirname "$0")/../.."
# shellcheck source=scripts/lib/run_tests.sh
. scripts/lib/run_tests.sh
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
failed=0

# expect STATUS TEXT: what is said about a run of the tests in the folder.
expect() {
    local said status=0
    "$ctest" --test-dir "$folder" --repeat until-pass:2 --output-log "$folder/log" &>/dev/null ||
        status=$?
    said=$(passed_when_repeated "$folder/log")
    if [[ $((status > 0)) != "$1" || $said != "$2" ]]; then
        printf 'expected %d:\n%s\nsaid %d:\n%s\n' "$1" "$2" "$status" "$said" >&2
        failed=1
    fi
    rm -f "$folder/tried"
}

printf '#!/bin/sh\n[ -e "%s/tried" ] || { touch "%s/tried"; exit 1; }\n' "$folder" "$folder" \
    >"$folder/flaky"
chmod +x "$folder/flaky"

echo 'add_test(debug/good /bin/true)' >"$folder/CTestTestfile.cmake"
expect 0 ''

echo "add_test(debug/flaky \"$folder/flaky\")" >>"$folder/CTestTestfile.cmake"
expect 0 'Passed only when tried again: debug/flaky'

echo 'add_test(debug/bad /bin/false)' >>"$folder/CTestTestfile.cmake"
expect 1 'Passed only when tried again: debug/flaky'

exit "$failed"
