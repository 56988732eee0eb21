#!/usr/bin/env bash
# scripts/lib/outcome must notice a run that left out what it could have run. Small test programs
# run under CTest, on machines that have this and lack that.
#
#   outcome_test.sh CTEST
set -euo pipefail

ctest=$1
root=$(cd "$(dirname "$0")/../.." && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
failed=0

# script NAME LINE...: a test program that prints these lines. It ends with the status EXIT names.
script() {
    local name=$1
    shift
    printf '%s\n' "$@" >"$folder/$name.output"
    printf '#!/bin/sh\ncat "%s"\nexit %d\n' "$folder/$name.output" "${EXIT:-0}" >"$folder/$name"
    chmod +x "$folder/$name"
    printf 'add_test(%s "%s")\nset_tests_properties(%s PROPERTIES SKIP_RETURN_CODE 77)\n' \
        "$name" "$folder/$name" "$name" >>"$folder/CTestTestfile.cmake"
}

# What GoogleTest prints about a suite with one case that runs and one that is left out, for REASON.
suite() {
    script "$1" '[==========] Running 2 tests from 1 test suite.' \
        '[ RUN      ] Suite.Runs' '[       OK ] Suite.Runs (0 ms)' \
        '[ RUN      ] Suite.MayBeLeftOut' 'some_test.cpp:7: Skipped' "$2" '' \
        '[  SKIPPED ] Suite.MayBeLeftOut (0 ms)' \
        '[==========] 2 tests from 1 test suite ran. (0 ms total)' '[  PASSED  ] 1 test.' \
        '[  SKIPPED ] 1 test, listed below:' '[  SKIPPED ] Suite.MayBeLeftOut'
}

# expect WHAT STATUS TEXT: runs what was scripted on a machine with a browser and without terminals.
expect() {
    local said status=0
    printf 'browser yes\nterminals no (there are none)\n' >"$folder/capabilities"
    "$ctest" --test-dir "$folder" --output-junit "$folder/results.xml" >/dev/null 2>&1 || true
    said=$("$root/scripts/lib/outcome" "$folder/capabilities" "$folder/results.xml") || status=$?
    if [[ $status != "$2" || $said != "$3" ]]; then
        printf '%s\nexpected %d:\n%s\nsaid %d:\n%s\n' "$1" "$2" "$3" "$status" "$said" >&2
        failed=1
    fi
    rm "$folder/CTestTestfile.cmake"
}

suite one 'needs terminals: is_open(7) is false'
expect "a case that needs what is missing" 0 "1 tests ran, 1 were left out:
  1 need terminals (there are none)"

suite one 'needs browser: why not?'
expect "a case that needs what is there" 1 "1 tests ran, 0 were left out.
This is no good run:
  one: Suite.MayBeLeftOut was left out, and this machine has browser"

suite one 'not today'
expect "a case without a reason" 1 "1 tests ran, 0 were left out.
This is no good run:
  one: Suite.MayBeLeftOut was left out and does not say which capability it needs"

suite one 'needs fortune: none'
expect "a capability that nobody knows" 1 "1 tests ran, 0 were left out.
This is no good run:
  one: Suite.MayBeLeftOut needs fortune, which nothing probes for"

script runs 'needs browser: a text that a test prints and that means nothing'
EXIT=77 script left_out 'needs terminals: none'
expect "a script that needs what is missing" 0 "1 tests ran, 1 were left out:
  1 need terminals (there are none)"

script runs
EXIT=77 script left_out 'needs browser: none'
expect "a script that needs what is there" 1 "1 tests ran, 0 were left out.
This is no good run:
  left_out was left out, and this machine has browser"

EXIT=77 script left_out 'needs terminals: none'
expect "nothing that runs" 1 "0 tests ran, 1 were left out:
  1 need terminals (there are none)
This is no good run:
  not one test ran"

script runs
script empty '[==========] Running 0 tests from 0 test suites.'
expect "a suite that runs none of its cases" 1 "1 tests ran, 0 were left out.
This is no good run:
  empty ran none of its tests"

EXIT=1 script fails '[==========] Running 1 test from 1 test suite.' '[ RUN      ] Suite.Fails' \
    '[  FAILED  ] Suite.Fails (3 ms)' '[  FAILED  ] 1 test, listed below:' '[  FAILED  ] Suite.Fails'
expect "a case that fails is named; the failure is ctest's to report" 0 "These failed:
  fails: Suite.Fails
1 tests ran, 0 were left out."
exit $failed
