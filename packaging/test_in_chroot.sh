#!/usr/bin/env bash
# The package in a clean bookworm: install, upgrade over a queue, print, remove, purge, reinstall.
# Usage, as root: test_in_chroot.sh PACKAGE.deb BASE.tar, where BASE.tar is made when it is missing
# or was made for a package with other needs.
# Own namespaces hold mounts, processes and network, so that nothing is left behind.
# SPDX-License-Identifier: Apache-2.0
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
package=$(realpath "$1") base=$(realpath -m "$2")
mirror=${MIRROR:-http://deb.debian.org/debian}
root=$(mktemp -d "${TMPDIR:-/var/tmp}/korvel-chroot-XXXXXX")
trap 'rm -rf --one-file-system "$root"' EXIT

# What the package needs from Debian, and systemd for its clean-up of old files.
needed=$(dpkg-deb -f "$package" Depends | sed 's/([^)]*)//g; s/ //g')
needed+=,ghostscript,fonts-dejavu-core,systemd

if [[ ! -f $base || $(cat "$base.needed" 2> /dev/null) != "$needed" ]]; then
  echo "Making a bookworm with what the package needs"
  # A file that forbids to start services has to be there before the first of them is installed.
  debootstrap --variant=minbase --foreign --include="$needed" bookworm "$root" "$mirror" \
    > "$base.log" 2>&1 || { tail -n 5 "$base.log" >&2; exit 1; }
  mkdir -p "$root/usr/sbin"
  printf '#!/bin/sh\nexit 101\n' > "$root/usr/sbin/policy-rc.d"
  chmod 755 "$root/usr/sbin/policy-rc.d"
  unshare --mount --pid --fork --kill-child chroot "$root" /debootstrap/debootstrap --second-stage \
    >> "$base.log" 2>&1 || { tail -n 5 "$base.log" >&2; exit 1; }
  rm -rf "$root"/var/cache/apt/archives/*.deb
  tar -C "$root" -cf "$base.part" . && mv "$base.part" "$base"
  echo "$needed" > "$base.needed"
else
  tar -C "$root" -xf "$base"
fi
chmod 755 "$root"  # filters and scripts of the spooler are not run as root

# An older package: another version, other texts in its descriptions, and older files.
old=$root/tmp/old
dpkg-deb -R "$package" "$old"
sed -i 's/^Version: .*/Version: 0.9.0/' "$old/DEBIAN/control"
sed -i '/^\*NickName/s/, [0-9.]*"/, 0.9"/; s|^\*Darkness Middle/[^:]*:|*Darkness Middle/Medium:|' \
  "$old"/usr/share/ppd/korvel/*.ppd
find "$old" -exec touch -h -d '2020-01-01' {} +
dpkg-deb --root-owner-group -b "$old" "$root/tmp/old.deb" > /dev/null
rm -rf "$old"
cp "$package" "$root/tmp/new.deb"
cp "$here/test_steps.sh" "$root/tmp/"

unshare --mount --pid --net --ipc --uts --fork --kill-child bash -c '
  set -e
  ip link set lo up
  mount --make-rprivate /
  mount --bind /dev "$0/dev"
  mount -t proc proc "$0/proc"
  exec env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 chroot "$0" /tmp/test_steps.sh
' "$root"
