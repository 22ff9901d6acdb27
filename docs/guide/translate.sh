#!/bin/sh
# Translates the guide's Markdown with the catalogues in po/, or brings these up to date.
# Usage: translate.sh SOURCE WORK           writes WORK/LANGUAGE/PAGE.md for each page that is completely translated
#        translate.sh SOURCE WORK --update  changes SOURCE/po/*.po
# WORK must exist. SPDX-License-Identifier: Apache-2.0
set -eu
source=$1 work=$2 mode=${3-}

cd "$source"
languages=$(tr '\n' ' ' < po/LINGUAS)
{
  echo "[po4a_langs] $languages"
  echo "[po4a_paths] $work/guide.pot \$lang:po/\$lang.po"
  echo '[options] opt:"--option markdown --option neverwrap --master-charset UTF-8 --localized-charset UTF-8"'
  sed -n 's/^\([a-z][^ ]*\).*/[type: text] \1.md $lang:$lang\/\1.md/p' pages.txt
} > "$work/po4a.cfg"
for language in $languages; do mkdir -p "$work/$language"; done

if [ "$mode" = --update ]; then
  po4a --quiet --no-translations --porefs file --wrap-po newlines --package-name korvel \
    --msgmerge-opt "--previous --no-wrap" "$work/po4a.cfg"
  exit
fi
# It reports each page that it leaves out.
po4a --quiet --no-update --keep 100 --destdir "$work" "$work/po4a.cfg" > "$work/left-out"

# po4a separates the items of a list by blank lines, which would make each item a paragraph.
for file in "$work"/*/*.md; do
  [ -f "$file" ] || continue
  awk '
    /^$/ { blank = blank "\n"; next }
    /^(- |[0-9]+\. )/ { if (in_list) blank = ""; in_list = 1 }
    /^[^ ]/ && !/^(- |[0-9]+\. )/ { in_list = 0 }
    { printf "%s%s\n", blank, $0; blank = "" }' "$file" > "$file.tight"
  mv "$file.tight" "$file"
done
