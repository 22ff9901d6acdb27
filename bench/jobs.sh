#!/usr/bin/env bash
# Whole processes side by side: our filter on grey pages, the least that such a job costs
# (korvel_floor), the spooler's label filter on the same pages at 1 bit per pixel, and two picture
# tools that halftone one such page.
# Usage: jobs.sh FILTER KORVEL_BENCH_JOB KORVEL_FLOOR DIVERTED_LIBRARY; prints tables of processor
# seconds, and how many times the floor our filter takes.
# SPDX-License-Identifier: Apache-2.0
set -euo pipefail

filter=$1 make_job=$2 floor=$3 diverted=$4
rounds=9

work=$(mktemp -d /dev/shm/korvel-jobs-XXXXXX)
trap 'rm -rf "$work"' EXIT
mkdir "$work/dumps"

# A PPD with no more than each filter needs.
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
*HalftoneType FloydSteinberg: ""
*HalftoneType Tattoo: ""
*HalftoneType Tattoo_Z4: ""
*CloseUI: *HalftoneType
PPD

"$make_job" grey label 100 > "$work/grey.ras"
"$make_job" dots label 100 > "$work/dots.ras"
"$make_job" grey a4 1 > "$work/a4.ras"
"$make_job" grey a4 10 > "$work/a4x10.ras"
tail -c $((2480 * 3508)) "$work/a4.ras" > "$work/a4.grey"
{ printf 'P5\n2480 3508\n255\n'; cat "$work/a4.grey"; } > "$work/a4.pgm"

# ours RASTER [OPTIONS]
ours() {
  env PPD="$work/label.ppd" KORVEL_SANDBOX="$work" LD_PRELOAD="$diverted" \
    "$filter" 1 user title 1 "${2-}" < "$1" > "$work/out" 2> "$work/log"
}
least() { "$floor" "$work/dumps" < "$1" > "$work/out"; }
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
peers=("100 labels, ours" "100 labels, the spooler's label filter" "A4, ours"
  "A4, pamditherbw" "A4, convert")
ten=("10 x A4, floor" "10 x A4, ordered 4x4" "10 x A4, Stucki" "10 x A4, Tattoo" "10 x A4, Tattoo_Z4")
run() {
  case $1 in
    "100 labels, ours") seconds ours "$work/grey.ras" ;;
    "100 labels, the"*) seconds theirs ;;
    "A4, ours") seconds ours "$work/a4.ras" ;;
    "A4, pamditherbw") seconds netpbm ;;
    "A4, convert") seconds magick ;;
    "10 x A4, floor") seconds least "$work/a4x10.ras" ;;
    "10 x A4, ordered 4x4") seconds ours "$work/a4x10.ras" HalftoneType=FloydSteinberg ;;
    "10 x A4, "*) seconds ours "$work/a4x10.ras" "HalftoneType=${1#*, }" ;;
  esac
}
for ((round = 0; round < rounds; ++round)); do
  for name in "${peers[@]}" "${ten[@]}"; do
    times[$name]+=" $(run "$name")"
    rm -f "$work"/dumps/*
  done
done

# least_and_median NAME
least_and_median() {
  tr ' ' '\n' <<< "${times[$1]# }" | sort -n | awk '
    { t[NR] = $1 } END { printf "%.3f %.3f", t[1], t[int((NR + 1) / 2)] }'
}

echo "| job, whole process | least s | median s |"
echo "|---|---|---|"
for name in "${peers[@]}"; do
  read -r lowest middle <<< "$(least_and_median "$name")"
  echo "| $name | $lowest | $middle |"
done

# What no job can do without: reading the pages, two dumps, an eighth of the bytes passed on.
echo
echo "| ten pages, whole process | least s | median s | median against the floor | promised |"
echo "|---|---|---|---|---|"
read -r _ floor_seconds <<< "$(least_and_median "${ten[0]}")"
for name in "${ten[@]}"; do
  read -r lowest middle <<< "$(least_and_median "$name")"
  ratio=$(awk -v a="$middle" -v b="$floor_seconds" 'BEGIN { printf "%.2f", a / b }')
  case $name in
    *floor | *Stucki) promised="" ;;
    *Tattoo*) promised=3.5 ;;
    *) promised=1.5 ;;
  esac
  missed=$(awk -v a="$ratio" -v b="${promised:-9}" 'BEGIN { if (a > b) print " MISSED" }')
  echo "| $name | $lowest | $middle | $ratio | $promised$missed |"
done
