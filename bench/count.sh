#!/usr/bin/env bash
# Instructions per pixel of each halftone, counted by callgrind, so that other load has no influence.
# Usage: count.sh KORVEL_COUNT TARGET COUNTS_FILE [--write]; fails when a halftone takes over 5 %
# more than the file states, or when the file does not list it. Counts hold for the compiler that
# the file names; with another one they are reported and nothing fails.
#        count.sh --compiler KORVEL_COUNT: the line that names the compiler.
# SPDX-License-Identifier: Apache-2.0
set -euo pipefail

compiler() { readelf -p .comment "$1" | sed -n 's/.*\(GCC\): ([^)]*) \([0-9]*\)\..*/compiler \1 \2/p' | head -n 1; }
if [[ $1 == --compiler ]]; then
  compiler "$2"
  exit
fi

if [[ $2 == avx2 ]] && ! grep -qw avx2 /proc/cpuinfo; then
  echo "left out: this processor has no AVX2"
  exit 77
fi

program=$1 target=$2 counts=$3 write=${4:-}
pixels=$((812 * 1218))

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# instructions METHOD TIMES
instructions() {
  KORVEL_TARGET=$target valgrind --tool=callgrind --callgrind-out-file="$work/out" \
    "$program" "$1" "$2" > "$work/log" 2>&1 || { cat "$work/log" >&2; exit 1; }
  sed -n 's/^summary: //p;s/^totals: //p' "$work/out" | head -n 1
}

status=0
for method in 0 1 2 3 4 5 6 7 8 9; do
  # The second page alone: start-up and the first page's tables do not count.
  once=$(instructions "$method" 1)
  twice=$(instructions "$method" 2)
  cost=$(awk -v n="$((twice - once))" -v p="$pixels" 'BEGIN { printf "%.3f", n / p }')
  if [[ -n $write ]]; then
    echo "$target $method $cost"
    continue
  fi
  known=$(awk -v t="$target" -v m="$method" '$1 == t && $2 == m { print $3 }' "$counts")
  if ! awk -v have="$cost" -v want="${known:-0}" 'BEGIN { exit !(have <= want * 1.05) }'; then
    echo "$target, method $method: have $cost instructions per pixel, want at most ${known:-none} + 5 %"
    status=1
  fi
done
if ((status)) && [[ $(compiler "$program") != "$(grep '^compiler ' "$counts")" ]]; then
  echo "not held against these counts: they are of another $(grep '^compiler ' "$counts")"
  exit 0
fi
exit "$status"
