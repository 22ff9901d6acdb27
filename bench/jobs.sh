#!/usr/bin/env bash
# Whole processes side by side: our filter on grey pages, the spooler's label filter on the same
# pages already in 1 bit, and two picture tools that halftone one such page.
# Usage: jobs.sh FILTER KORVEL_BENCH_JOB DIVERTED_LIBRARY; prints a table, processor seconds.
# SPDX-License-Identifier: Apache-2.0
set -euo pipefail

filter=$1 make_job=$2 diverted=$3
rounds=9

work=$(mktemp -d /dev/shm/korvel-jobs-XXXXXX)
trap 'rm -rf "$work"' EXIT
mkdir "$work/dumps"

# Descriptions with no more than each filter needs.
cat > "$work/label.ppd" <<'PPD'
*PPD-Adobe: "4.3"
*FormatVersion: "4.3"
*cupsModelNumber: 18
*DefaultPageSize: label
*PageSize label: ""
*PaperDimension label: "288 432"
*ImageableArea label: "0 0 288 432"
*OpenUI *HalftoneType/Halftone: PickOne
*DefaultHalftoneType: Stucki
*HalftoneType Stucki: ""
*CloseUI: *HalftoneType
PPD

"$make_job" grey label 100 > "$work/grey.ras"
"$make_job" dots label 100 > "$work/dots.ras"
"$make_job" grey a4 1 > "$work/a4.ras"
tail -c $((2480 * 3508)) "$work/a4.ras" > "$work/a4.grey"
{ printf 'P5\n2480 3508\n255\n'; cat "$work/a4.grey"; } > "$work/a4.pgm"

ours() {
  env PPD="$work/label.ppd" KORVEL_SANDBOX="$work" LD_PRELOAD="$diverted" \
    "$filter" 1 user title 1 "" < "$1" > "$work/out" 2> "$work/log"
  rm -f "$work"/dumps/*
}
spooler_filter=${KORVEL_CUPS_SERVERBIN:-/usr/lib/cups}/filter/rastertolabel
theirs() {
  env PPD="$work/label.ppd" "$spooler_filter" 1 user title 1 "" < "$work/dots.ras" \
    > "$work/out" 2> "$work/log"
}
netpbm() { pamditherbw -fs "$work/a4.pgm" > "$work/out"; }
magick() { convert "$work/a4.pgm" -dither FloydSteinberg -monochrome "pbm:$work/out"; }

# Processor seconds of one run, user and system.
TIMEFORMAT='%U %S'
seconds() {
  { time "$@"; } 2>&1 | awk 'END { printf "%.4f", $1 + $2 }'
}

declare -A times=()
names=("100 labels, ours" "100 labels, the spooler's label filter" "A4, ours"
  "A4, pamditherbw" "A4, convert")
run() {
  case $1 in
    "100 labels, ours") seconds ours "$work/grey.ras" ;;
    "100 labels, the"*) seconds theirs ;;
    "A4, ours") seconds ours "$work/a4.ras" ;;
    "A4, pamditherbw") seconds netpbm ;;
    "A4, convert") seconds magick ;;
  esac
}
for ((round = 0; round < rounds; ++round)); do
  for name in "${names[@]}"; do times[$name]+=" $(run "$name")"; done
done

echo "| job, whole process | least s | median s |"
echo "|---|---|---|"
for name in "${names[@]}"; do
  tr ' ' '\n' <<< "${times[$name]# }" | sort -n | awk -v name="$name" '
    { t[NR] = $1 } END { printf "| %s | %.3f | %.3f |\n", name, t[1], t[int((NR + 1) / 2)] }'
done
