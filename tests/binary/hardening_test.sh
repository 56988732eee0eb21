#!/usr/bin/env bash
# Reads off a program how it was hardened, and what it needs at run time. Works on cross-built
# programs too, with the target's readelf. Give it the installed program: in a build folder it has
# the folder's path to libraries.
#
#   hardening_test.sh PROGRAM [READELF [LIBRARY]...]
#
# LIBRARY: names of the libraries that the program may need besides libc. Checked for all programs:
# position independence, full RELRO, a stack without execution, no writable code, a stack protector,
# no path to libraries but one relative to the program. Checked for glibc also: fortified calls.
#
# Ends with 0 when all is well, 1 when something is not, 2 when it could not look.
set -euo pipefail

if [ $# -lt 1 ]; then
    echo "usage: ${0##*/} PROGRAM [READELF [LIBRARY]...]" >&2
    exit 2
fi
program=$1
readelf=${2:-readelf}
shift $(($# < 2 ? $# : 2))

elf=$(LC_ALL=C "$readelf" --wide --file-header --program-headers --dynamic "$program") || exit 2
imports=$(LC_ALL=C "$readelf" --wide --dyn-syms "$program") || exit 2
failed=0

# holds WHAT TEXT PATTERN, misses WHAT TEXT PATTERN
holds() {
    grep -Eq -- "$3" <<<"$2" && return
    echo "$program: $1" >&2
    failed=1
}
misses() {
    grep -Eq -- "$3" <<<"$2" || return 0
    echo "$program: $1" >&2
    failed=1
}

holds "is no position-independent file" "$elf" '^ *Type: +DYN '
holds "is not marked as position-independent executable" "$elf" '\(FLAGS_1\).* PIE( |$)'
holds "has no part that is read-only after relocation" "$elf" '^ *GNU_RELRO '
holds "resolves symbols late" "$elf" '\(FLAGS_1\).* NOW( |$)|\(FLAGS\).* BIND_NOW( |$)|\(BIND_NOW\)'
holds "does not say what its stack may do" "$elf" '^ *GNU_STACK '
misses "has an executable stack" "$elf" '^ *GNU_STACK .* RWE '
misses "has a segment that is writable code" "$elf" '^ *LOAD .* RWE '
misses "relocates its code" "$elf" '\(TEXTREL\)|\(FLAGS\).* TEXTREL( |$)'
holds "has no stack protector" "$imports" ' __stack_chk_fail(@|$| )'
misses "has an absolute path to libraries" "$elf" '\((RPATH|RUNPATH)\).*(\[|:)/'
misses "looks for libraries in the current directory" "$elf" '\((RPATH|RUNPATH)\).*(\[\]|\[:|::|:\])'

# glibc has the checked calls in the library, so they show. Elsewhere they are compiled in.
if grep -q 'Shared library: \[libc\.so\.6\]' <<<"$elf"; then
    holds "has no fortified calls" "$imports" ' UND __[a-z]+_chk(@|$| )'
fi

# A program may need libc in glibc's or musl's name, and what the caller named.
while read -r library; do
    for allowed in libc.so.6 libc.so "$@"; do
        [[ $library == "$allowed" ]] && continue 2
    done
    echo "$program: needs $library" >&2
    failed=1
done < <(sed -n 's/.*(NEEDED).*\[\(.*\)\]$/\1/p' <<<"$elf")
exit $failed
