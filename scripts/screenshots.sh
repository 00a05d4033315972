#!/usr/bin/env bash
# Pictures of the window in every state, at scale 1 and 2, light and dark, on a display of its own:
# screenshots.sh PROGRAM SAMPLES FOLDER [STATE...]. What is in FOLDER already is replaced.
# Exit 77: a tool is not installed.
set -euo pipefail
program=$(realpath "$1")
samples=$(realpath "$2")
mkdir -p "$3"
folder=$(realpath "$3")
shift 3
all="empty loaded highlighted filter folder more png tiff bmp gif question run small finished problems
    preview compare import about narrow"
states=${*:-$all}
for tool in Xvfb openbox xdotool import; do
    command -v "$tool" > /dev/null || { echo "skipped: $tool is not installed"; exit 77; }
done
home=$(mktemp -d)
server='' manager='' window_program=''
finish() {
    kill $window_program $manager $server 2> /dev/null || true
    wait
    rm -rf "$home"
}
trap finish EXIT

export HOME=$home XDG_CONFIG_HOME=$home/config XDG_DATA_HOME=$home/data XDG_RUNTIME_DIR=$home/run
export QT_QPA_PLATFORM=xcb LC_ALL=C.UTF-8 QT_FONT_DPI=96
unset WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS
mkdir -m 700 "$home"/{config,data,run,good,scans,many,a,b}
cp "$samples"/*.tif "$home/scans"
cp "$samples"/*.tif "$home/good"
for copy in $(seq 600); do
    ln "$home/scans/text-page.tif" "$home/many/page $copy.tif"
done
ln "$home/scans/text-page.tif" "$home/a/scan.tif"
ln "$home/scans/text-page.tif" "$home/b/scan.tif"
head -c 6000 "$samples/gray-photo.tif" > "$home/scans/cut off.tif"
printf 'no image' > "$home/scans/no image.tif"

keys() { # KEY...
    for key; do
        xdotool key "$key"
        sleep 0.3
    done
}
windows() { xdotool search --onlyvisible --name "^$1" 2> /dev/null || true; }
until_window() { # TITLE
    for _ in $(seq 100); do
        [ -z "$(windows "$1")" ] || return 0
        sleep 0.1
    done
    echo "screenshots: there is no window $1" >&2
}
convert_files() { # begins a run beside the sources
    keys ctrl+Return
    sleep 0.5
    keys Return
    sleep 0.5
}
sources_of() { # STATE
    case $1 in
    empty | import | about) ;;
    question) printf '%s\n' "$home/a/scan.tif" "$home/b/scan.tif" ;;
    run | small) echo "$home/many" ;;
    finished) echo "$home/good" ;;
    *) echo "$home/scans" ;;
    esac
}
bring_about() { # STATE
    case $1 in
    highlighted) keys Down shift+Down shift+Down ;;
    filter) keys ctrl+f && xdotool type page && sleep 0.5 ;;
    folder) keys ctrl+comma shift+Tab Right ;;
    more) keys ctrl+comma shift+Tab Right Right ;;
    png) keys ctrl+comma p ;;
    tiff) keys ctrl+comma t ;;
    bmp) keys ctrl+comma b ;;
    gif) keys ctrl+comma g ;;
    question)
        keys ctrl+comma shift+Tab Right alt+l
        xdotool type "$home"
        keys Tab ctrl+Return
        sleep 1
        ;;
    run) convert_files && sleep 1.5 ;;
    small) convert_files && sleep 0.5 && keys shift+Tab space && sleep 1 ;;
    finished) convert_files && until_window Finished ;;
    problems) convert_files && until_window Finished && keys alt+p && sleep 0.5 ;;
    preview) keys Down F3 && sleep 1.5 ;;
    compare) keys Down F3 && sleep 1 && keys Tab Tab Tab space && sleep 1.5 ;;
    import) keys ctrl+i ;;
    about) keys alt+h Up Return && sleep 0.5 ;;
    narrow) xdotool windowsize "$(windows Pagestack | tail -1)" 640 440 && keys F9 && sleep 0.5 ;;
    esac
}

take() { # STATE SCALE THEME
    local state=$1 scale=$2 theme=$3 sources
    rm -rf "${XDG_CONFIG_HOME:?}"/* "${XDG_DATA_HOME:?}"/*
    find "$home" -name '*.jpg' -delete
    mapfile -t sources < <(sources_of "$state")
    QT_SCALE_FACTOR=$scale "$program" "${sources[@]}" > "$home/program.log" 2>&1 &
    window_program=$!
    until_window Pagestack
    sleep 1
    keys alt+v a
    keys "$([ "$theme" = dark ] && echo d || echo l)"
    bring_about "$state"
    sleep 0.5
    import -window root "$folder/$state-$scale-$theme.png"
    kill "$window_program"
    wait "$window_program" 2> /dev/null || true
    window_program=''
}

for scale in 1 2; do
    mkfifo "$home/display"
    Xvfb -displayfd 3 -screen 0 $((1200 * scale))x$((760 * scale))x24 -noreset -nolisten tcp \
        3> "$home/display" 2> /dev/null &
    server=$!
    read -r number < "$home/display"
    rm "$home/display"
    export DISPLAY=:$number
    openbox 2> /dev/null &
    manager=$!
    sleep 0.5
    for theme in light dark; do
        for state in $states; do
            take "$state" "$scale" "$theme"
        done
    done
    kill "$manager" "$server"
    wait "$manager" "$server" 2> /dev/null || true
    manager='' server=''
done
