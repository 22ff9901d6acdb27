#!/bin/sh
# Opens the print dialog of LibreOffice, which selects the default queue, and saves two pictures: the dialog,
# and the options of the printer. Usage: libreoffice.sh PICTURE OPTIONS_PICTURE FOLDER, where FOLDER is for
# files that LibreOffice needs meanwhile. SPDX-License-Identifier: Apache-2.0
set -eu
picture=$1 options_picture=$2 folder=$3
# LibreOffice writes a lock file beside its document.
cp "$(dirname "$0")/label.fodt" "$folder"

SAL_USE_VCLPLUGIN=gtk3 soffice "-env:UserInstallation=file://$folder/libreoffice" --norestore --nologo \
  --nofirststartwizard --writer "$folder/label.fodt" > "$folder/libreoffice.log" 2>&1 &
office=$!
trap 'kill "$office"; wait "$office" || true' EXIT
trap 'exit 1' HUP INT TERM

# The first window with that title.
window() {
  timeout 120 xdotool search --sync --onlyvisible --limit 1 --name "$1"
}

# Waits until a window looks the same for two seconds, at most two minutes.
settle() {
  for _ in $(seq 60); do
    import -window "$1" "$folder/now.ppm"
    cmp -s "$folder/now.ppm" "$folder/before.ppm" && return
    mv "$folder/now.ppm" "$folder/before.ppm"
    sleep 2
  done
  echo "$0: the window keeps changing" >&2
  return 1
}

click() {
  xdotool mousemove --window "$1" "$2" "$3" click 1
}

main=$(window 'label.fodt')
settle "$main"
xdotool windowfocus "$main" key ctrl+p
dialog=$(window '^Print$')
settle "$dialog"
import -window "$dialog" "$picture"
click "$dialog" 755 132 # Properties
properties=$(window '^Properties of')
settle "$properties"
click "$properties" 95 25 # Device
settle "$properties"
click "$properties" 60 203 # Halftone
settle "$properties"
import -window "$properties" "$options_picture"
