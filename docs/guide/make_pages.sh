#!/bin/sh
# Converts the guide's Markdown to a static site in several languages: navigation, a table of
# contents per page, links between neighbouring pages and editions, and a search index per edition
# that works without a server.
# Usage: make_pages.sh CMARK_GFM WEASYPRINT SOURCE TARGET VERSION
# SOURCE/pages.txt lists the pages, SOURCE/po/LINGUAS the translations, which are in a folder each.
# The pictures must already be in TARGET.
# SPDX-License-Identifier: Apache-2.0
set -eu
cmark=$1 weasyprint=$2 source=$3 target=$4 version=$5
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

# The Markdown of a page in an edition: the English one when the translation is not complete.
markdown() {
  if [ -f "$work/$1/$2.md" ]; then echo "$work/$1/$2.md"; else echo "$source/$2.md"; fi
}

# "page|group|title|language" per line, in reading order.
list_pages() {
  grep -v '^#' "$source/pages.txt" | while read -r page group; do
    file=$(markdown "$1" "$page")
    case $file in "$work"/*) language=$1 ;; *) language=en ;; esac
    echo "$page|$group|$(sed -n '1s/^# //p' "$file")|$language"
  done
}

# The folder of an edition below the target.
folder() {
  if [ "$1" = en ]; then echo .; else echo "$1"; fi
}

make_edition() {
  edition=$1
  mkdir -p "$(folder "$edition")"
  rm -f "$(folder "$edition")"/*.html "$work/index"
  while IFS='|' read -r page group title language; do
    "$cmark" --extension table --to html "$(markdown "$edition" "$page")" > "$work/body"
    LC_ALL=C awk -f "$source/page.awk" -v page="$page" -v edition="$edition" -v editions="$editions" \
      -v version="$version" -v work="$work" -v frame="$source/frame.txt" "$work/body" \
      > "$(folder "$edition")/$page.html"
  done < "$work/pages.$edition"
  {
    echo 'window.guideIndex = ['
    cat "$work/index"
    echo '];'
  } > "$(folder "$edition")/search-index.js"
}

# The date is part of the fonts in the file. Warnings name properties that only browsers know.
make_card() {
  card=$(folder "$1")/quick-card
  [ -f "$card.html" ] || return 0
  # Without links: on paper they lead nowhere, and in the file they would name this build's folder.
  sed 's/ href="[^"#]*\.\(html\|pdf\)[^"]*"//g; s/\(<a [^>]*\)href="#[^"]*"/\1/g' "$card.html" |
    SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-0} "$weasyprint" --quiet --base-url "$card.html" - "$card.pdf"
}

languages=$(cat "$source/po/LINGUAS")
editions=$(echo en $languages)
"$source/translate.sh" "$source" "$work"
for edition in $editions; do list_pages "$edition" > "$work/pages.$edition"; done

mkdir -p "$target/drawings" "$target/screens"
cp "$source"/drawings/*.svg "$target/drawings"
cp "$source"/screens/*.png "$target/screens"
cp "$source/style.css" "$source/guide.js" "$source/favicon.svg" "$target"

cd "$target"
for file in pictures/*.png screens/*.png; do echo "$file $(png_size "$file")"; done > "$work/sizes"
for file in drawings/*.svg; do echo "$file $(svg_size "$file")"; done >> "$work/sizes"
mkdir "$work/ids"
for edition in $editions; do
  make_edition "$edition"
  make_card "$edition"
done
