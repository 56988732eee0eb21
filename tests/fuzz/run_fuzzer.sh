#!/usr/bin/env bash
# Runs one fuzzer: first all its seeds and regressions, then what it makes of them.
#
#   run_fuzzer.sh PROGRAM NAME SECONDS FOLDER fresh|on
#
# FOLDER keeps what it has learned, from which "on" goes on and "fresh" does not, and its findings in
# FOLDER/found. Ends with 1 when there is a finding, and says where it is.
set -euo pipefail
program=$1 name=$2 seconds=$3 folder=$4 start=$5
source=$(cd "$(dirname "$0")" && pwd)

[[ $start == on ]] || rm -rf "$folder/corpus"
mkdir -p "$folder/corpus" "$folder/found"
# Long inputs take long and meet little else: shorter ones come first. To name each function that is
# reached for the first time would take the first seconds.
options=(-max_len=2048 -len_control=100 -print_funcs=0 -max_total_time="$seconds" -timeout=10
    -rss_limit_mb=1024 -print_final_stats=1 -artifact_prefix="$folder/found/")
[[ $name != commands ]] || options+=(-max_len=512) # 64 steps
[[ ! -e $source/dictionaries/$name ]] || options+=(-dict="$source/dictionaries/$name")
inputs=("$folder/corpus")
for inherited in "$source/seeds/$name" "$source/regressions/$name"; do
    [[ ! -d $inherited ]] || inputs+=("$inherited")
done

status=0
"$program" "${options[@]}" "${inputs[@]}" >"$folder/log" 2>&1 || status=$?
grep -E '^stat::(number_of_executed_units|average_exec_per_sec)' "$folder/log" || true
((status == 0)) && exit 0
# What libFuzzer itself says comes in the end, the report of a sanitizer before it.
tail -n 100 "$folder/log"
echo "The fuzzer $name found something. The input is in $folder/found; run it alone with"
echo "  $program FILE"
exit 1
