#!/usr/bin/env bash
# What a screen reader is told of the window program, on a display and a session of their own:
# accessible.sh PROGRAM SAMPLES. Exit 77: a tool is not installed.
set -euo pipefail
program=$(realpath "$1")
samples=$(realpath "$2")
folder=$(realpath "$(dirname "$0")")
for tool in Xvfb dbus-run-session; do
    command -v "$tool" > /dev/null || { echo "skipped: $tool is not installed"; exit 77; }
done
python=''
for candidate in python3 /usr/bin/python3; do
    ! "$candidate" -c 'from gi.repository import Gio' 2> /dev/null || { python=$candidate; break; }
done
[ -n "$python" ] || { echo "skipped: python3-gi is not installed"; exit 77; }
[ -e /usr/share/dbus-1/services/org.a11y.Bus.service ] || { echo "skipped: at-spi2-core is not installed"; exit 77; }

home=$(mktemp -d)
server=''
finish() {
    kill $server 2> /dev/null || true
    wait
    rm -rf "$home"
}
trap finish EXIT
export HOME=$home XDG_CONFIG_HOME=$home/config XDG_DATA_HOME=$home/data XDG_RUNTIME_DIR=$home/run
export QT_QPA_PLATFORM=xcb LC_ALL=C.UTF-8 QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
unset WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS
mkdir -m 700 "$home"/{files,data,run}
cp "$samples/text-page.tif" "$home/first.tif"
for copy in $(seq 300); do
    ln "$home/first.tif" "$home/files/$copy.tif"
done
mkfifo "$home/display"
Xvfb -displayfd 3 -screen 0 1280x800x24 -noreset -nolisten tcp 3> "$home/display" 2> /dev/null &
server=$!
read -r number < "$home/display"
export DISPLAY=:$number
timeout 100 dbus-run-session -- "$python" "$folder/accessible.py" "$program" "$home/files"
