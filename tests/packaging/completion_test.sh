#!/usr/bin/env bash
# Bash completion: a table of incomplete command lines and the completions that are offered. The
# answers of the CUPS commands are written here, so no cupsd is needed.
# Usage: completion_test.sh COMPLETION_FILE FOLDER_OF_PROGRAMS
# SPDX-License-Identifier: Apache-2.0
set -u
export LC_ALL=C PATH=$2:$PATH
. /usr/share/bash-completion/bash_completion
. "$1"

lpstat() { printf 'labels\noffice\n'; }
lpinfo() {
  case $1 in
    -m) printf '%s\n' 'lsb/usr/korvel/korvel-k220-203.ppd Korvel K220 203 dpi, 1.0' \
      'lsb/usr/korvel/korvel-m6.ppd Korvel M6 300 dpi, 1.0' 'drv:///sample.drv/other.ppd Other' ;;
    -v) printf '%s\n' 'direct usb://Korvel/K220?serial=1' 'network socket' ;;
  esac
}
lpoptions() {
  [[ $1 != -p || $2 == labels ]] || return
  printf '%s\n' 'PageSize/Media Size: 4x4 *4x6' 'PostAction/After Printing: *None TearOff'
}

failed=0
# check DESCRIPTION LINE WANT: completing the end of LINE offers WANT. Bash splits at blanks and
# treats : and = as separate words.
check() {
  local line=$2 want=$3
  read -ra COMP_WORDS <<< "$(sed 's/[:=]/ & /g' <<< "$line")"
  [[ $line != *' ' ]] || COMP_WORDS+=('')
  COMP_CWORD=$((${#COMP_WORDS[@]} - 1)) COMP_LINE=$line COMP_POINT=${#line} COMPREPLY=()
  _korvel "${COMP_WORDS[0]}" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
  if [[ ${COMPREPLY[*]} != "$want" ]]; then
    echo "$1: have '${COMPREPLY[*]}', want '$want'"
    failed=1
  fi
}

check 'options by prefix' 'korvel-decode --p' '--png --pbm'
check '--version' 'korvel-setup --ver' '--version'
check 'the options of --help' 'korvel-printer --s' '--stdin --speed --scenario'
check 'the halftone comparison' 'korvel-preview --ha' '--halftones'
check 'queues to preview' 'korvel-preview -P l' 'labels'
check 'drivers by their full names' 'korvel-preview -p korvel-m' 'korvel-m6'
check 'drivers by their short names' 'korvel-preview -p m' 'm6'
check 'drivers to preview, as in set-up' 'korvel-preview -m k2' 'k220-203'
check 'options of the previewed queue' 'korvel-preview -P labels -o Post' \
  'PostAction=None PostAction=TearOff'
check 'kinds of media' 'korvel-printer --media g' 'gap'
check 'queues to change' 'korvel-setup -p l' 'labels'
check 'queues to check' 'korvel-setup --check ' 'labels office'
check 'nothing where no queue name is allowed' 'korvel-setup ' ''
check 'Korvel drivers only' 'korvel-setup -m ' 'k220-203 m6'
check 'a short name' 'korvel-setup -m k' 'k220-203'
check 'a full name' 'korvel-setup -m ko' 'korvel-k220-203 korvel-m6'
check 'devices, after a colon' 'korvel-setup -v usb:' '//Korvel/K220?serial=1'
check 'options of the named queue' 'korvel-setup -p labels -o Page' 'PageSize=4x4 PageSize=4x6'
check 'choices after an equals sign' 'korvel-setup -p labels -o PageSize=4' '4x4 4x6'
check 'no options of a queue of another driver' 'korvel-setup -p office -o ' ''
check 'nothing for a free text' 'korvel-setup -D ' ''
exit "$failed"
