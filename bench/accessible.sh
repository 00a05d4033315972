#!/usr/bin/env bash
# Runs a command with a display and a session of its own in which something listens to all that
# programs tell screen readers: bench/accessible.sh COMMAND...
# Needs Debian's xvfb, dbus, at-spi2-core and python3-gi.
set -euo pipefail
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
mkdir -m 700 "$home/run"
mkfifo "$home/display"
Xvfb -displayfd 3 -screen 0 1280x800x24 -noreset -nolisten tcp 3> "$home/display" 2> /dev/null &
server=$!
read -r number < "$home/display"
export DISPLAY=:$number
dbus-run-session -- /usr/bin/python3 "$(dirname "$0")/listening.py" "$@"
