# shellcheck shell=bash
# For scripts that build presets and test them. Sourced, not run, in the project's folder.

# shellcheck source=scripts/lib/progress.sh
. scripts/lib/progress.sh

# build_presets PRESET...: configures and builds each, and stops at the first that fails.
build_presets() {
    local preset
    for preset; do
        progress "Configuring $preset" cmake --preset "$preset"
        progress "Building $preset" cmake --build --preset "$preset"
    done
}

# passed_when_repeated LOG: names the tests that failed at first and then passed, as they may with
# ctest --repeat.
passed_when_repeated() {
    awk 'match($0, / Test *#[0-9]+: /) {
            split(substr($0, RSTART + RLENGTH), words, " ")
            name = words[1]
            if (/\*\*\*[FTE]/) failed[name] = 1
            else if (/ Passed /) passed[name] = 1
        }
        END {
            for (name in failed)
                if (name in passed) print "Passed only when tried again: " name
        }' "$1" | sort
}

# run_tests FOLDER PRESETS CTEST_ARGUMENT...: one CTest run over all of these builds, separated by
# blanks; the prefix of a test's name tells its build. Fails when a test does, and when one was left
# out that could run here.
run_tests() {
    local folder=build/$1 status=0 presets
    read -ra presets <<<"$2"
    shift 2
    mkdir -p "$folder"
    rm -f "$folder/results.xml"
    scripts/capabilities >"$folder/capabilities"
    echo "What this machine allows:"
    sed 's/^/  /' "$folder/capabilities"
    # What the tests do, and with it the demo: a mount namespace or redirected paths.
    "build/${presets[0]}/sim/utm_sandbox" --which 2>/dev/null || true
    printf 'subdirs("../%s")\n' "${presets[@]}" >"$folder/CTestTestfile.cmake"
    # One more than there are processors: some tests wait most of their time.
    ctest --test-dir "$folder" --no-tests=error --output-on-failure --parallel $(($(nproc) + 1)) \
        --output-junit "$PWD/$folder/results.xml" --test-output-size-passed 100000000 \
        --test-output-size-failed 100000000 --output-log "$folder/ctest.log" "$@" || status=$?
    # Such as ctest -N.
    [[ -e $folder/results.xml ]] || return "$status"
    scripts/lib/outcome "$folder/capabilities" "$folder/results.xml" || status=1
    passed_when_repeated "$folder/ctest.log"
    return "$status"
}
