#!/bin/sh
# Takes the guide's screenshots again: real print dialogs on a virtual display, with a queue of a private
# print service. Run it from the root of the repository after ./dev, and look at the pictures.
# Usage: docs/guide/screens/take.sh [BUILD]
# Needs the Debian packages cups, cups-client, cups-filters, xvfb, xauth, xdotool, imagemagick; for GTK
# python3-gi and gir1.2-gtk-3.0; for the others nodejs, chromium, chromium-driver, firefox-esr,
# libreoffice-writer and libreoffice-gtk3.
# SPDX-License-Identifier: Apache-2.0
set -eu
build=$(cd "${1-build/dev}" && pwd)
screens=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
service=
trap '[ -z "$service" ] || kill "$service"; rm -rf "$work"' EXIT
trap 'exit 1' HUP INT TERM

DESTDIR=$work/installed cmake --install "$build" > "$work/installed.log"
server_bin=$(find "$work/installed" -type d -path '*lib/cups')
data_dir=$(find "$work/installed" -type d -path '*share/cups')
tools=$(dirname "$(find "$work/installed" -type f -name korvel-setup -path '*bin*')")

# Links to what the system's print service has and this one has not.
link_missing() {
  for entry in "$1"/*; do
    [ -e "$2/${entry##*/}" ] || ln -s "$entry" "$2"
  done
}
link_missing /usr/lib/cups "$server_bin"
link_missing /usr/lib/cups/filter "$server_bin/filter"
link_missing /usr/lib/cups/backend "$server_bin/backend"
link_missing /usr/share/cups "$data_dir"

chmod 755 "$work"
for folder in etc spool spool/tmp cache run log; do mkdir "$work/$folder"; done
cat > "$work/etc/cupsd.conf" <<TEXT
Listen $work/socket
Browsing No
WebInterface No
DefaultAuthType None
<Location />
  Allow all
</Location>
<Policy default>
  <Limit All>
    Order deny,allow
  </Limit>
</Policy>
TEXT
cat > "$work/etc/cups-files.conf" <<TEXT
ServerRoot $work/etc
RequestRoot $work/spool
TempDir $work/spool/tmp
CacheDir $work/cache
StateDir $work/run
ServerBin $server_bin
DataDir $data_dir
AccessLog $work/log/access
ErrorLog $work/log/error
PageLog $work/log/page
User lp
Group lp
SystemGroup root
TEXT
/usr/sbin/cupsd -f -c "$work/etc/cupsd.conf" -s "$work/etc/cups-files.conf" &
service=$!
export CUPS_SERVER="$work/socket" CUPS_SERVERBIN="$server_bin" CUPS_DATADIR="$data_dir"
export LC_ALL=C.UTF-8 GTK_THEME=Adwaita
until lpstat -r 2> /dev/null | grep -q 'is running'; do sleep 0.2; done
"$tools/korvel-setup" -v 'usb://Korvel/K220?serial=0042' -m k220-203 -p labels -o PageSize=4x6

lpadmin -d labels

on_display() {
  xvfb-run -a -s '-screen 0 1100x1100x24' "$@"
}

# gtk TAB PICTURE
gtk() {
  on_display /usr/bin/python3 "$screens/dialog.py" "$1" "$2"
}

cd "$screens"
gtk 'Page Setup' gtk-page-setup.png
gtk Advanced gtk-advanced.png
on_display ./libreoffice.sh libreoffice.png libreoffice-device.png "$work"
on_display node chromium.mjs chromium.png chromium-settings.png
mogrify -gravity East -crop 385x660+0+0 +repage chromium-settings.png # without the preview
on_display node firefox.mjs firefox.png "$work"
mogrify -strip +dither -colors 256 gtk-*.png libreoffice*.png chromium*.png firefox.png
