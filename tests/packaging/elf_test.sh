#!/usr/bin/env bash
# Every program that ships is hardened: position-independent, its tables read-only, no executable stack,
# stack and libc calls guarded, and control flow protected where the processor can do that.
# A program can be marked for branch tracking only when the C library's start file is, too.
# Usage: elf_test.sh START_FILE PROGRAM...
# SPDX-License-Identifier: Apache-2.0
set -euo pipefail
export LC_ALL=C
failed=0
features=$(readelf -nW "$1" 2> /dev/null | sed -n 's/.*\(x86\|AArch64\) feature: //p' | head -n 1)
shift
# check PROGRAM SENTENCE PATTERN READELF_OPTION
check() {
  readelf -W "$4" "$1" 2> /dev/null | grep -E "$3" > /dev/null || { echo "${1##*/}: $2"; failed=1; }
}
for program; do
  check "$program" 'position-independent' '^ *Type: +DYN' -h
  check "$program" 'read-only after relocation' '^ *GNU_RELRO ' -l
  check "$program" 'everything bound at start' '\(FLAGS(_1)?\).*NOW' -d
  check "$program" 'no executable stack' '^ *GNU_STACK .* RW +0x' -l
  check "$program" 'stack protector' '__stack_chk_(fail|guard)' --dyn-syms
  check "$program" 'fortified libc calls' '__[a-z]+_chk\b' --dyn-syms
  case $(readelf -h "$program" | sed -n 's/^ *Machine: *//p') in
    *X86-64*) check "$program" 'marked for a shadow stack' 'x86 feature: .*SHSTK' -n ;;
  esac
  check "$program" "marked as the start file is: $features" "$features" -n
done
exit "$failed"
