#!/usr/bin/env bash
# The daily removal takes the filter's page images of more than a day, and nothing else.
# Usage: clean_dumps_test.sh CLEAN_DUMPS
# SPDX-License-Identifier: Apache-2.0
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
folder=$work/tmp
mkdir -p "$folder/origin_2026-1-2_3_4_5_6.bmp" "$folder/below"

gone=(origin_2026-1-2_3_4_5_0.bmp dithered_2026-11-12_13_14_15_1234.bmp)
kept=(.hidden.bmp origins.bmp origin_1.bmp xorigin_2026-1-2_3_4_5_0.bmp origin_2026-1-2_3_4_5_0.bmpx
  origin_2026-1-2_3_4_5_.bmp 'dithered_2026-1-2_3_4_5_0.bmp 1.bmp' dithered_2026-1-2_3_4_5_0.txt
  below/origin_2026-1-2_3_4_5_0.bmp ../origin_2026-1-2_3_4_5_0.bmp cups-dbus-notifier-lockfile)
for name in "${gone[@]}" "${kept[@]}"; do echo page > "$folder/$name"; done
ln -s ../origin_2026-1-2_3_4_5_0.bmp "$folder/origin_2026-1-2_3_4_5_7.bmp"
mkfifo "$folder/origin_2026-1-2_3_4_5_8.bmp"
find "$work" -exec touch -h -d '2 days ago' {} +
echo page > "$folder/origin_2026-1-2_3_4_5_9.bmp"  # of today
kept+=(origin_2026-1-2_3_4_5_{6,7,8,9}.bmp)

failed=0
"$1" "$folder"
for name in "${gone[@]}"; do
  [[ ! -e $folder/$name ]] || { echo "still there: $name"; failed=1; }
done
for name in "${kept[@]}"; do
  [[ -e $folder/$name || -L $folder/$name ]] || { echo "gone: $name"; failed=1; }
done

ln -s tmp "$work/link"
touch -d '2 days ago' "$folder/origin_2026-1-2_3_4_5_9.bmp"
"$1" "$work/link" || true
[[ -e $folder/origin_2026-1-2_3_4_5_9.bmp ]] || { echo "a linked folder was cleaned"; failed=1; }
"$1" "$work/none" || { echo "a missing folder is a fault"; failed=1; }
exit "$failed"
