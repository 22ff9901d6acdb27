#!/usr/bin/env bash
# What is done with the package, and looked at, inside the clean system: /tmp/old.deb is an older
# one, /tmp/new.deb the one under test. Started by test_in_chroot.sh only.
# SPDX-License-Identifier: Apache-2.0
set -euo pipefail
export DEBIAN_FRONTEND=noninteractive

description=/etc/cups/ppd/labels.ppd
dumps=/var/spool/cups/tmp
label=/usr/share/korvel/examples/label.pdf
sheet=/usr/share/korvel/sheets/calibration-4x4-203dpi.ras.gz

step() { echo "== $*"; }
fail() {
  echo "failed: $*" >&2
  tail -n 20 /var/log/cups/error_log >&2 || true
  exit 1
}
expect() {  # SENTENCE COMMAND...
  local sentence=$1
  shift
  "$@" > /tmp/said 2>&1 || { cat /tmp/said >&2; fail "$sentence"; }
  echo "ok: $sentence"
}
expect_not() {
  local sentence=$1
  shift
  ! "$@" > /tmp/output 2>&1 || { cat /tmp/output >&2; fail "$sentence"; }
  echo "ok: $sentence"
}
# Tries a command for half a minute.
within_time() {
  local try
  for ((try = 0; try < 150; ++try)); do
    ! "$@" > /dev/null 2>&1 || return 0
    sleep 0.2
  done
  return 1
}

start_spooler() {
  sed -i '/^Listen localhost/d; /^Port/d; s/^Browsing .*/Browsing No/' /etc/cups/cupsd.conf
  cupsd
  within_time lpstat -r || fail "the spooler starts"
}
# print_it FILE [OPTION]...: through the spooler to an emulated printer, /tmp/sheets/sheet-1.png.
print_it() {
  rm -rf /tmp/sheets
  korvel-printer --out /tmp/sheets --once --speed 1000 > /tmp/events &
  lp -d labels "${@:2}" "$1"
  within_time test -f /tmp/sheets/sheet-1.png && wait
}
as_anybody() { setpriv --reuid=nobody --clear-groups "$@"; }
# preview_it ARGUMENT...: as a user without rights, /tmp/shown/sheet-1.png.
preview_it() {
  rm -rf /tmp/shown
  mkdir -m 777 /tmp/shown
  as_anybody korvel-preview --out /tmp/shown "$@"
}
same_dots() { cmp /tmp/sheets/sheet-1.png /tmp/shown/sheet-1.png; }
# Files that the guide's pages lead to; fails on one that is not there.
follow_guide() {
  local target
  cd /usr/share/doc/printer-driver-korvel/guide
  for target in $(sed -n 's/.*\(href\|src\)="\([^"]*\)".*/\2/p' ./*.html | sort -u); do
    ls "$target" || return 1
  done
  for target in $(grep -ho '/usr/share/korvel/[A-Za-z0-9._/-]*' ./*.html | sort -u); do
    ls -d "$target" || return 1
  done
}
# Files that bear our name, without the spooler's notes and logs.
anything_left() {
  local found
  found=$(find / -xdev \( -path /tmp -o -path /proc -o -path /dev \) -prune -o \
    \( -iname '*korvel*' ! -path '/var/cache/cups/*' ! -path '/var/log/*' \) -print) ||
    fail "the search for what is left"
  [[ -n $found ]] && echo "$found"
}
age() { touch -d '2 days ago' "$@"; }

step "install an older package and make a queue"
expect "it installs" dpkg -i /tmp/old.deb
expect "the filter may be started by others only, nobody may change it" \
  test "$(stat -c '%A %U' /usr/lib/cups/filter/rastertokorvel)" = '-rwxr-xr-x root'
start_spooler
expect "the spooler lists all descriptions" \
  test "$(lpinfo -m | grep -c ' Korvel ')" = "$(find /usr/share/ppd/korvel -name '*.ppd' | wc -l)"
expect "a queue is made" \
  korvel-setup -v socket://127.0.0.1 -m k220-203 -p labels -o PageSize=4x4 -o Darkness=Dark
expect "it has the old description" grep -q '^\*Darkness Middle/Medium' "$description"

step "upgrade over the queue"
expect "the new package installs" dpkg -i /tmp/new.deb
expect "the description is refreshed" grep -q '^\*Darkness Middle/Middle' "$description"
expect_not "nothing of the old one is left in it" grep -q ', 0.9"' "$description"
expect "the queue's defaults are kept" grep -q '^\*DefaultPageSize: 4x4' "$description"
expect "all of them" grep -q '^\*DefaultDarkness: Dark' "$description"

step "print"
expect "a label comes out of the emulated printer" print_it "$label"
expect "the preview of the queue runs for everybody" preview_it -P labels "$label"
expect "and shows the same dots" same_dots
expect "a sheet that helps comes out" print_it "$sheet" -o HalftoneType=None
expect "the preview shows it" preview_it -P labels -o HalftoneType=None "$sheet"
expect "with the same dots" same_dots
expect "a description will do, named as it is called" preview_it -p korvel-z4 "$label"
expect "the filter's pictures are there" ls "$dumps"/origin_* "$dumps"/dithered_*
korvel-printer > /tmp/events &
printer=$!
within_time korvel-setup --check labels || true
expect "the doctor finds nothing" korvel-setup --check labels
kill "$printer"
wait "$printer"
expect_not "the doctor misses the printer" korvel-setup --check labels
expect "and says so" grep -q 'Cannot reach the printer at socket://127.0.0.1' /tmp/output

step "clear old pictures away"
before=$(stat -c '%a %U:%G' "$dumps")
expect "the folder is the spooler's, as the rule says" test "$before" = '1770 root:lp'
others=("$dumps"/{.hidden.bmp,o.bmp,origins.bmp,xorigin_1.bmp,origin_1.bmpx,origin_1.txt,dither.bmp})
touch "${others[@]}" "$dumps/origin_fresh.bmp" "$dumps/dithered_fresh.bmp"
mkdir "$dumps/folder" && touch "$dumps/folder/origin_1.bmp"
age "${others[@]}" "$dumps"/*_2*_*.bmp "$dumps/folder/origin_1.bmp" "$dumps/folder"
expect "the rule is understood" systemd-tmpfiles --create --clean printer-driver-korvel.conf
expect "the folder stays as it was" test "$(stat -c '%a %U:%G' "$dumps")" = "$before"
expect_not "old pictures are gone" ls "$dumps"/*_2*_*.bmp
expect "fresh ones stay" ls "$dumps/origin_fresh.bmp" "$dumps/dithered_fresh.bmp"
expect "files of other names stay, however old" ls "${others[@]}" "$dumps/folder/origin_1.bmp"
rm -rf "$dumps/folder" "${others[@]}" "$dumps"/*_fresh.bmp

step "what else is in it"
for command in korvel-decode korvel-preview korvel-printer korvel-setup; do
  expect "$command runs for everybody" as_anybody "$command" --version
  expect "$command speaks German" sh -c "LANGUAGE=de $command --help | grep '^Aufruf: $command'"
  expect "$command has a manual page" ls /usr/share/man/man?/"$command".?.gz
  expect "$command has a completion that bash understands" bash -n "/usr/share/bash-completion/completions/$command"
done
expect "the filter has a manual page too" ls /usr/share/man/man8/rastertokorvel.8.gz
expect "texts are there in nine languages beside English" \
  test "$(ls /usr/share/locale/*/LC_MESSAGES/korvel.mo | wc -l)" = 9
expect "the guide leads nowhere that is not there" follow_guide
expect "a printer made of software prints the test page" \
  korvel-setup --emulated --port 9200 --out /tmp/emulated --test-page
expect "as a picture" ls /tmp/emulated/sheet-1.png
lpadmin -x emulated

step "remove, purge, install again"
expect "there is something to be removed" anything_left
expect "it can be removed" dpkg --remove printer-driver-korvel
expect_not "the filter is gone" ls /usr/lib/cups/filter/rastertokorvel
expect "the queue is still there" lpstat -v labels
expect "it can be purged" dpkg --purge printer-driver-korvel
expect_not "nothing is left" anything_left
expect "it installs again" dpkg -i /tmp/new.deb
expect "and prints on the old queue" print_it "$label"
echo "All steps hold."
