#!/usr/bin/env bash
# Includes run downwards only, from folder to folder of src.
set -euo pipefail

cd "$(dirname "$0")/../../src"

# allowed FOLDER: the folders that its files may include from, itself left out
allowed() {
    case $1 in
        .) echo "control persist usage store notify format core" ;;
        control) echo "persist usage store notify format core" ;;
        persist) echo "usage store notify format core" ;;
        usage) echo "store notify format core" ;;
        store) echo "notify format core" ;;
        client) echo "format core" ;;
        notify | format) echo "core" ;;
        core) ;;
        *) return 1 ;;
    esac
}

failed=0
seen=0
while IFS=: read -r file line; do
    folder=$(dirname "${file#./}")
    included=${line#*\"}
    included=$(dirname "${included%%\"*}")
    seen=$((seen + 1))
    [[ $included == "$folder" || " $(allowed "$folder") " == *" $included "* ]] && continue
    echo "$file: $line" >&2
    failed=1
done < <(grep -r --include='*.cpp' --include='*.h' '^#include "' .)

[[ $seen -gt 100 ]] || {
    echo "only $seen includes were found" >&2
    failed=1
}
exit "$failed"
