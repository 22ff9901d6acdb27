#!/usr/bin/env bash
# ./dev install writes what CMake's manifest names, and ./dev uninstall leaves no file of it.
# Usage: install_test.sh SOURCE_FOLDER
# SPDX-License-Identifier: Apache-2.0
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
list=$1/build/release/installed-files.txt
[[ ! -e $list ]] || { echo "skipped: something is installed from here, and uninstall would remove it"; exit 77; }

mkdir -p "$work/tree/usr/local/bin" "$work/tree/usr/local/share/korvel/sheets"
echo theirs > "$work/tree/usr/local/bin/other"
echo theirs > "$work/tree/usr/local/share/korvel/sheets/own.ras"
"$1/dev" install --destdir "$work/tree" > "$work/said"
failed=0
expect() {
  local sentence=$1
  shift
  "$@" > /dev/null || { echo "failed: $sentence"; failed=1; }
}
expect "the last line is the next step" grep -q '^Next: .*korvel-setup' <(tail -n 1 "$work/said")
expect "what was installed is not listed" test "$(wc -l < "$work/said")" -lt 20
for path in usr/local/bin/korvel-setup usr/local/share/man/man8/rastertokorvel.8 \
  usr/local/libexec/korvel/clean-dumps etc/cron.daily/korvel-clean-dumps \
  etc/systemd/system/timers.target.wants/korvel-clean-dumps.timer; do
  expect "there is $path" test -e "$work/tree/$path"
done
expect "systemd starts what is there" test -x \
  "$work/tree$(sed -n 's/^ExecStart=//p' "$work/tree/etc/systemd/system/korvel-clean-dumps.service")"
"$1/dev" uninstall > "$work/said"
expect "others' files stay, ours go" test "$(cd "$work/tree" && find . -type f -o -type l | sort | tr '\n' ' ')" = \
  './usr/local/bin/other ./usr/local/share/korvel/sheets/own.ras '
expect "our empty folders go" test ! -e "$work/tree/usr/local/libexec/korvel"
expect "a second time there is nothing to remove" test ! -e "$list"
exit "$failed"
