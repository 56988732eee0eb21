#!/usr/bin/env bash
# Fails when a program is larger than it may be.
#
#   size_test.sh PROGRAM STRIP LIMIT      LIMIT: bytes of the program stripped
set -euo pipefail

stripped=$(mktemp)
trap 'rm -f "$stripped"' EXIT
"$2" --strip-all -o "$stripped" "$1"
size=$(stat --format=%s "$stripped")
echo "$1, stripped: $size of at most $3 bytes"
[ "$size" -le "$3" ]
