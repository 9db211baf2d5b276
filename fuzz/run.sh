#!/usr/bin/env bash
# Runs one fuzz target for a bounded time on a copy of its corpus.
#   fuzz/run.sh BUILD_DIR NAME SECONDS
# Longer runs by hand: fuzz/run.sh build-fuzz xml_reader 3600
set -euo pipefail
build=$1 name=$2 seconds=$3
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/corpus" "$work/artifacts"
"$build/fuzz/fuzz_$name" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=4096 \
  -artifact_prefix="$work/artifacts/" -print_final_stats=1 \
  "$work/corpus" "$here/corpus/$name" 2>"$work/log" || {
    tail -n 60 "$work/log"
    echo "fuzz_$name failed; the input that broke it:"
    ls -l "$work/artifacts"
    # Whole, so that it can be rebuilt from the log: base64 -d | gunzip > input
    for f in "$work/artifacts"/*; do [ -f "$f" ] && gzip -9c "$f" | base64; done
    exit 1
  }
runs=$(grep -E '^stat::number_of_executed_units' "$work/log" | awk '{print $2}')
echo "fuzz_$name: $runs executions in $seconds s, no failure"
