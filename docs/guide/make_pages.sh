#!/bin/sh
# Converts the guide's Markdown to a static site: navigation, a table of contents per page, links
# between neighbouring pages, and a search index that works without a server.
# Usage: make_pages.sh CMARK_GFM SOURCE TARGET VERSION
# SOURCE/pages.txt lists the pages. The pictures must already be in TARGET.
# SPDX-License-Identifier: Apache-2.0
set -eu
cmark=$1 source=$2 target=$3 version=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The width and height of a PNG are two 4-byte numbers at offset 16.
png_size() {
  od -An -N8 -j16 -tu1 "$1" | awk '{
    print ($1 * 16777216 + $2 * 65536 + $3 * 256 + $4) " " ($5 * 16777216 + $6 * 65536 + $7 * 256 + $8)
  }'
}

svg_size() {
  sed -n '1,5s/.*<svg[^>]* width="\([0-9]*\)" height="\([0-9]*\)".*/\1 \2/p' "$1"
}

# pages: "page|group|title" per line, in reading order. A page that is marked optional and has no
# source is listed as missing.
grep -v '^#' "$source/pages.txt" > "$work/listed"
while read -r page group option; do
  if [ -f "$source/$page.md" ]; then
    echo "$page|$(echo "$group" | tr _ ' ')|$(sed -n '1s/^# //p' "$source/$page.md")" >> "$work/pages"
  elif [ "$option" = optional ]; then
    echo "$page||" >> "$work/pages"
  else
    echo "make_pages.sh: $source/$page.md does not exist" >&2
    exit 1
  fi
done < "$work/listed"

mkdir -p "$target/drawings"
cp "$source"/drawings/*.svg "$target/drawings"
cp "$source/style.css" "$source/guide.js" "$source/favicon.svg" "$target"

cd "$target"
for file in pictures/*.png; do echo "$file $(png_size "$file")"; done > "$work/sizes"
for file in drawings/*.svg; do echo "$file $(svg_size "$file")"; done >> "$work/sizes"

rm -f ./*.html
echo 'window.guideIndex = [' > search-index.js
while IFS='|' read -r page group title; do
  [ -n "$title" ] || continue
  "$cmark" --extension table --to html "$source/$page.md" > "$work/body"
  LC_ALL=C awk -f "$source/page.awk" -v page="$page" -v version="$version" -v pages="$work/pages" \
    -v sizes="$work/sizes" -v index_file="$work/index" "$work/body" > "$page.html"
done < "$work/pages"
cat "$work/index" >> search-index.js
echo '];' >> search-index.js
