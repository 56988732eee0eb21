#!/usr/bin/env bash
# Runs one transcript: what a person types, and what they see.
#
#   run_transcript.sh FOLDER mounts|redirection|any BUILD CRAM FILE.t
#
# household: it is typed in a sandbox, beside a daemon, with the sandbox's commands on the PATH.
# client, commands, order: the same, but nobody is online, and it is noon on Tuesday, 2030-01-01.
# machine:   it is typed on the machine; utm_sandbox and the build's programs are on the PATH, and
#            $SANDBOX_WAY, $BUILD and $SOURCE are set.
#
# Ends with 0 when it reads as written, 1 with the difference when not, 77 when the machine lacks
# what the way needs. What was seen instead stays in the build tree, named FILE.t.err, and may be
# copied over the transcript.
set -euo pipefail

where=$1 way=$2 build=$(realpath "$3") cram=$4 transcript=$5
here=$(dirname "$(realpath "$0")")
source=$(realpath "$here/../..")

# Cram puts what it saw beside the transcript, and the source tree may be another's.
name=$(basename "$transcript" .t)
work=$build/tests/cram/$where.$way.$name
rm -rf "$work"
mkdir -p "$work/tmp"
cp "$transcript" "$work/$name.t"
cd "$work"

sandbox=$build/sim/utm_sandbox
environment=(
    PATH="$build/sim:$build/sim/commands:$build/sim/bin:$build/tests:$build:/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin"
    HOME="$work"
    TMPDIR="$work/tmp"
    LC_ALL=C
    # Central European time, written out: the machine may have no time zone files.
    TZ="CET-1CEST,M3.5.0,M10.5.0/3"
    COLUMNS=80
    SANDBOX_WAY="$way"
    BUILD="$build"
    SOURCE="$source"
)
for variable in ASAN_OPTIONS LSAN_OPTIONS UBSAN_OPTIONS TSAN_OPTIONS G_SLICE; do
    [[ -z ${!variable:-} ]] || environment+=("$variable=${!variable}")
done
[[ $way == any ]] || environment+=(UTM_SANDBOX="$way")

in_environment() { env -i "${environment[@]}" "$@"; }

if [[ $way == mounts ]] && ! why=$(in_environment "$sandbox" --which 2>&1); then
    echo "needs mount-namespaces: $why"
    exit 77
fi

# A line of a transcript may name programs that not every machine has.
# shellcheck disable=SC2013 # words are what is wanted
for program in $(sed -n 's/^Needs: //p' "$transcript"); do
    if ! PATH=$PATH:/usr/sbin command -v "$program" >/dev/null; then
        echo "needs $program: it is not installed"
        exit 77
    fi
done

# In a sandbox the last daemon ends with status 0 (or by "daemon kill"), and the router has refused
# nothing.
in_sandbox() {
    # shellcheck disable=SC2016 # for the inner shell
    command=("$sandbox" "$@" sh -c '
        "$@"
        status=$?
        ! daemon pid >/dev/null 2>&1 || daemon stop || status=1
        if ! grep -qsx -e "exit status 0" -e "signal 9" /tmp/router/daemon.exit; then
            cat /tmp/router/daemon.exit
            status=1
        fi
        ! journal --all | grep refused || status=1
        exit $status' sh "${command[@]}")
}

# Cram's own fixed environment has another time zone than the sandbox.
command=("$cram" --preserve-env "$name.t")
case $where in
household) in_sandbox ;;
client | commands | order | apply) in_sandbox --scenario none --start '2030-01-01 12:00' ;;
esac
status=0
in_environment "${command[@]}" || status=$?
if [[ -e $name.t.err ]]; then
    echo "If that is as it should be: cp '$work/$name.t.err' '$transcript'"
fi
exit "$status"
