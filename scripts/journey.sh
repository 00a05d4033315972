#!/usr/bin/env bash
# The window on a display of its own, from the first start to the end of the program, with a mouse and
# keys: journey.sh PROGRAM SAMPLES PICTURES. Leaves a picture of each stage in the folder PICTURES and
# fails when the program does not start, convert or end as it should. Exit 77: a tool is not installed.
set -euo pipefail

if [ $# -ne 3 ]; then
    echo "usage: $0 PROGRAM SAMPLES PICTURES" >&2
    exit 2
fi
program=$(realpath "$1")
samples=$(realpath "$2")
mkdir -p "$3"
pictures=$(realpath "$3")
for tool in Xvfb xdotool import python3; do
    command -v "$tool" > /dev/null || { echo "$tool is not installed"; exit 77; }
done

home=$(mktemp -d)
server='' window_program=''
finish() {
    [ -z "$window_program" ] || kill "$window_program" 2> /dev/null || true
    [ -z "$server" ] || kill "$server" 2> /dev/null || true
    wait
    rm -rf "$home"
}
trap finish EXIT

fail() {
    import -window root "$pictures/failed.png" || true
    echo "journey: $*" >&2
    exit 1
}

# until_true SECONDS COMMAND...: waits for the command to succeed.
until_true() {
    local tries=$(($1 * 10))
    shift
    until "$@" > /dev/null 2>&1; do
        tries=$((tries - 1))
        [ "$tries" -gt 0 ] || return 1
        sleep 0.1
    done
}

# picture NAME: what is on the display, once two looks at it are the same.
picture() {
    local last='' now tries=50
    while [ "$tries" -gt 0 ]; do
        now=$(import -window root rgb:- | cksum)
        [ "$now" != "$last" ] || break
        last=$now
        tries=$((tries - 1))
        sleep 0.1
    done
    import -window root "$pictures/$1.png"
}

# click X Y: at this place of the main window; below zero it counts from the right and lower edge.
click() {
    local WINDOW X Y WIDTH HEIGHT SCREEN
    eval "$(xdotool getwindowgeometry --shell "$(has_window Pagestack | head -1)")"
    xdotool mousemove $(($1 < 0 ? X + WIDTH + $1 : X + $1)) $(($2 < 0 ? Y + HEIGHT + $2 : Y + $2)) \
        click 1
}

has_window() { # TITLE
    xdotool search --onlyvisible --name "^$1\$"
}
has_no_window() {
    ! has_window "$1"
}
has_ended() {
    ! kill -0 "$window_program"
}
has_images() { # FOLDER NUMBER
    [ "$(find "$1" -name '*.jpg' | wc -l)" -ge "$2" ]
}
has_logs() { # NUMBER
    [ "$(find "$home/data" -name '*.log' | wc -l)" -eq "$1" ]
}

export HOME=$home XDG_CONFIG_HOME=$home/config XDG_DATA_HOME=$home/data XDG_RUNTIME_DIR=$home/run
export XDG_CACHE_HOME=$home/cache QT_QPA_PLATFORM=xcb LC_ALL=C.UTF-8
unset WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS
mkdir -p "$home/samples" "$home/many" "$home/config" "$home/data" "$home/cache" "$home/run"
chmod 700 "$home/run"
cp "$samples"/*.tif "$home/samples"
copies=1500 # enough for a run that can be watched and cancelled
for copy in $(seq $copies); do
    cp "$samples/text-page.tif" "$home/many/$copy.tif"
done

mkfifo "$home/display"
Xvfb -displayfd 3 -screen 0 1280x800x24 -noreset -nolisten tcp 3> "$home/display" 2> "$home/server.log" &
server=$!
read -r number < "$home/display"
export DISPLAY=:$number

start() {
    "$program" "$@" 2>> "$home/program.log" &
    window_program=$!
    until_true 20 has_window Pagestack || fail "no window: $(tail -3 "$home/program.log")"
}

# Closes the main window as the button of a window manager does: by a message.
end() {
    python3 - "$(has_window Pagestack | head -1)" << 'EOF'
import ctypes, sys
x11 = ctypes.CDLL("libX11.so.6")
x11.XOpenDisplay.restype = ctypes.c_void_p
display = ctypes.c_void_p(x11.XOpenDisplay(None))
x11.XInternAtom.restype = ctypes.c_ulong
protocols, delete = (x11.XInternAtom(display, name, 0) for name in (b"WM_PROTOCOLS", b"WM_DELETE_WINDOW"))
window, client_message = int(sys.argv[1]), 33
event = (ctypes.c_long * 24)(client_message, 0, 0, 0, window, protocols, 32, delete)
x11.XSendEvent(display, ctypes.c_ulong(window), 0, ctypes.c_long(0), event)
x11.XCloseDisplay(display)
EOF
    until_true 20 has_ended || fail "the program did not end"
    wait "$window_program" || fail "the program ended with $?"
    window_program=''
}

start
picture 1-empty
end

start "$home/samples"
picture 2-loaded
click 20 124 # the tick of the second row
picture 3-unticked
click -366 -31 # Convert Files
picture 4-question
xdotool key Escape
picture 5-refused
click -366 -31
picture 6-question-again
xdotool key Return
until_true 20 has_logs 1 || fail "the run did not end"
picture 7-finished
has_images "$home/samples" 6 || fail "not every image is there"
xdotool key Return # Close
until_true 20 has_no_window Converting || fail "the sheet stays"
picture 8-closed

click 138 -73 # Add Folder
until_true 20 has_window 'Select folder.*' || fail "no dialog"
xdotool type "$home/many"
picture 9-add-folder
xdotool key Return
until_true 20 has_no_window 'Select folder.*' || fail "the dialog stays"
picture 10-many
click -366 -31
picture 11-question
xdotool key Return
until_true 20 has_images "$home/many" 20 || fail "the second run does not start"
import -window root "$pictures/12-running.png"
xdotool key Escape # Cancel
until_true 20 has_logs 2 || fail "the second run did not end"
picture 13-cancelled
images=$(find "$home/many" -name '*.jpg' | wc -l)
[ "$images" -lt "$copies" ] || fail "the run was not cancelled"
xdotool key Return
until_true 20 has_no_window Converting || fail "the sheet stays"
picture 14-closed
end
left=$(find "$home/samples" "$home/many" -type f ! -name '*.jpg' ! -name '*.tif')
[ -z "$left" ] || fail "left over: $left"

echo "6 and $images images; pictures are in $pictures"
