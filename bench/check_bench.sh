#!/bin/sh
# Runs translator_bench on the small workload: it must succeed, print one JSON line for every
# measure its --help offers and nothing it does not offer, and refuse a mistyped option.
#   check_bench.sh PATH_TO_TRANSLATOR_BENCH
set -eu
bench=$1
out=$(mktemp)
trap 'rm -f "$out"' EXIT
"$bench" --workload small >"$out"
measures=$("$bench" --help | sed -n 's/^measures: //p')
[ -n "$measures" ] || { echo "--help names no measures"; exit 1; }
for m in $measures; do
  grep -q "\"measure\":\"$m\"" "$out" || { echo "no line for $m"; exit 1; }
done
for m in $(sed -n 's/.*"measure":"\([a-z_]*\)".*/\1/p' "$out" | sort -u); do
  case " $measures " in *" $m "*) ;; *) echo "$m is printed but --help does not offer it"; exit 1 ;; esac
done
lines=$(wc -l <"$out")
json=$(grep -c '^{.*}$' "$out")
[ "$lines" -eq "$json" ] || { echo "$((lines - json)) lines are not JSON objects"; exit 1; }
if "$bench" --repeats 3 >/dev/null 2>&1; then echo "a mistyped option was accepted"; exit 1; fi
echo "translator_bench: $(echo $measures | wc -w) measures, $lines lines"
