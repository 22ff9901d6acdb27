#!/usr/bin/env bash
# The script ./dev: every verb explains itself, and a checkout that was moved or copied is built again.
# Usage: dev_test.sh SOURCE_FOLDER
# SPDX-License-Identifier: Apache-2.0
set -u
source=$1
failed=0
# check DESCRIPTION HAVE WANT
check() {
  [[ $2 == "$3" ]] || { echo "$1: have '$2', want '$3'"; failed=1; }
}

# ---- Help ----

verbs=$(sed -n 's/^verb_\([a-z]*\)() {.*/\1/p' "$source/dev" | sed '/^default$/d' | sort)
named=$("$source/dev" --help | sed -n 's/^  \([a-z][a-z]*\)\( .*\)\?$/\1/p' | sort)
check 'the verbs of --help' "$named" "$verbs"
for verb in $verbs; do
  help=$("$source/dev" "$verb" --help)
  check "the status of ./dev $verb --help" $? 0
  check "the first words of ./dev $verb --help" "$(head -n 1 <<< "$help" | cut -d ' ' -f 1-3)" \
    "Usage: ./dev $verb"
  # A verb's own text, and no other verb's: it begins with a lower-case letter after an empty line.
  [[ $(sed -n 2,3p <<< "$help") == $'\n  '[a-z]* ]] || { echo "$verb: no text: $help"; failed=1; }
  check "usage lines of ./dev $verb --help" "$(grep -c '^Usage' <<< "$help")" 1
done
check 'help among other arguments' "$("$source/dev" print x.pdf --help | head -n 1)" \
  'Usage: ./dev print FILE [-o option=value]... [--ppd FILE] [-n copies] [--out DIR]'
check 'an unknown verb' "$("$source/dev" prnt --help 2>&1)" 'dev: unknown verb prnt; see ./dev --help'

# ---- A checkout that was moved ----

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/first"
cp "$source/dev" "$work/first"
cat > "$work/first/CMakeLists.txt" <<'TEXT'
cmake_minimum_required(VERSION 3.25)
project(moved NONE)
add_custom_target(note ALL COMMAND pwd -P > note.txt VERBATIM WORKING_DIRECTORY ${CMAKE_SOURCE_DIR})
TEXT
cat > "$work/first/CMakePresets.json" <<'TEXT'
{"version": 6, "configurePresets": [
  {"name": "dev", "generator": "Ninja", "binaryDir": "${sourceDir}/build/dev"}]}
TEXT
# build_in FOLDER: what ./dev prints, without the counter, and where it has built.
build_in() {
  "$work/$1/dev" --step build dev 2>&1 | sed '/^Building [0-9]/d'
  cat "$work/$1/note.txt"
}
here=$(cd "$work" && pwd -P)
check 'a new checkout' "$(build_in first)" "$here/first"
touch "$work/first/build/dev/installed-files.txt" "$work/first/build/dev/left-over"
mv "$work/first" "$work/second"
check 'a moved checkout' "$(build_in second)" \
  "Building preset dev from the start, because this checkout was in $work/first"$'\n'"$here/second"
check 'what was installed is still known' "$(ls "$work/second/build/dev/installed-files.txt")" \
  "$work/second/build/dev/installed-files.txt"
check 'everything else is gone' "$(ls "$work/second/build/dev" | grep -c left-over)" 0
check 'the same place once more' "$(build_in second)" "$here/second"
cp -r "$work/second" "$work/third"
check 'a copied checkout' "$(build_in third)" \
  "Building preset dev from the start, because this checkout was in $work/second"$'\n'"$here/third"
ln -s third "$work/link"
check 'another name of the same place' "$(build_in link)" "$here/third"
exit "$failed"
