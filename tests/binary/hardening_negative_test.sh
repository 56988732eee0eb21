#!/usr/bin/env bash
# The hardening test must notice each protection that is missing: a small program is linked with all
# of them, then with one left out at a time.
#
#   hardening_negative_test.sh CC
set -euo pipefail

compiler=$1
here=$(cd "$(dirname "$0")" && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
failed=0

cat >"$folder/program.c" <<'C'
#include <stdio.h>
#include <string.h>
#ifdef RELOCATE_CODE
__asm__(".pushsection .text\n.dc.a main\n.popsection");
#endif
int main(int count, char **words) {
    char text[16];
    strcpy(text, words[count - 1]);
    return puts(text) < 0;
}
C

all=(-O2 -fPIE -pie -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2
    "-Wl,-z,relro" "-Wl,-z,now" "-Wl,-z,noexecstack")

# expect WHAT FLAGS...: the complaint about a program built with all flags and these ("" for none).
expect() {
    local wanted=$1 said
    shift
    "$compiler" "${all[@]}" "$@" "$folder/program.c" -o "$folder/program" 2>"$folder/log" ||
        { cat "$folder/log" >&2 && exit 2; }
    said=$("$here/hardening_test.sh" "$folder/program" 2>&1 || true)
    if [[ ${said//"$folder/program: "/} != "$wanted" ]]; then
        printf 'with %s\nexpected: %s\nsaid: %s\n' "$*" "$wanted" "$said" >&2
        failed=1
    fi
}

expect ""
expect $'is no position-independent file\nis not marked as position-independent executable' \
    -fno-pie -no-pie
expect "has no part that is read-only after relocation" -Wl,-z,norelro
expect "resolves symbols late" -Wl,-z,lazy
expect $'has an executable stack' -Wl,-z,execstack
expect "relocates its code" -DRELOCATE_CODE -Wl,-z,notext
expect "has no stack protector" -fno-stack-protector
expect "has no fortified calls" -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=0
expect "has an absolute path to libraries" -Wl,-rpath,/opt/lib
expect "has an absolute path to libraries" "-Wl,-rpath,\$ORIGIN/../lib:/opt/lib"
expect "looks for libraries in the current directory" "-Wl,-rpath,\$ORIGIN:"
expect "" "-Wl,-rpath,\$ORIGIN/../lib"
expect "needs libm.so.6" -Wl,--no-as-needed -lm
exit $failed
