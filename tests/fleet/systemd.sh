#!/usr/bin/env bash
# Runs the units for systemd in a machine that systemd has booted, a container of a bare Debian 12 with the package of
# the command line: systemd.sh [SOURCES]
#
# The watching service is killed three times in mid-run and stopped at the end; the nightly one runs once through its
# timer's unit. What they wrote has to be what the same command writes undisturbed. Takes about four minutes, most of
# them to make the bare system; PAGESTACK_DEBIAN names the folder of one made before, which is copied. Needs root;
# installs systemd-container and debootstrap where they are missing.
# shellcheck disable=SC2154,SC2034
set -u
name=systemd
# shellcheck source=tests/fleet/fleet.sh disable=SC1091
. "$(dirname -- "${BASH_SOURCE[0]}")/fleet.sh"

[ "$(id -u)" = 0 ] || die "containers are root's"
need_packages systemd-container debootstrap dpkg-dev file
find_program
make_scratch
machine=$scratch/machine booted=
trap '[ -z "$booted" ] || { kill "$booted"; wait "$booted"; } 2>/dev/null; rm -rf "$scratch"' EXIT

# In the machine before it is booted.
inside() { chroot "$machine" "$@"; }

# A command in the booted machine.
at_work() { nsenter -t "$leader" -a -- env -i PATH=/usr/bin:/usr/sbin LC_ALL=C.UTF-8 "$@"; }

is_booted() {
    leader=$(pgrep -P "$booted" -x systemd) || return
    at_work systemctl is-active -q multi-user.target 2>/dev/null
}

is_watching() { at_work systemctl is-active -q pagestack-watch@room; }

# The service is at work: of the pages that are expected, $1 per cent are there.
has_done() { [ "$(find "$room/out" -type f ! -name '.*' | wc -l)" -ge "$(($(find "$scratch/ground/expected" -type f | wc -l) * $1 / 100))" ]; }

is_emptied() { [ -z "$(find "$room/in" -type f)" ]; }

# compare FOLDER: what is in it is what an undisturbed run wrote, to the byte.
compare() { diff -rq -x '.*' "$scratch/ground/expected" "$1" || die "$1 is not what an undisturbed run writes"; }

# A bare system with the package.
if [ -n "${PAGESTACK_DEBIAN-}" ]; then
    cp -a "$PAGESTACK_DEBIAN" "$machine"
else
    debootstrap --variant=minbase --include=systemd,systemd-sysv,dbus bookworm "$machine" >"$scratch/debootstrap.log" 2>&1 ||
        die "no bare system: $(tail -n 1 "$scratch/debootstrap.log")"
fi
build=$(dirname -- "$(dirname -- "$(command -v pagestack-convert)")")
cpack -G DEB --config "$build/CPackConfig.cmake" -B "$scratch/packages" -D CPACK_COMPONENTS_ALL=cli >"$scratch/cpack.log" 2>&1 ||
    die "no package: $(tail -n 1 "$scratch/cpack.log")"
cp "$scratch"/packages/pagestack-cli_*.deb "$machine/pagestack-cli.deb"
inside env DEBIAN_FRONTEND=noninteractive apt-get install -qq -y --no-install-recommends /pagestack-cli.deb \
    >"$scratch/apt.log" 2>&1 || die "the package cannot be installed: $(tail -n 1 "$scratch/apt.log")"

# As docs/fleet.md tells an administrator to do.
inside useradd --system pagestack
cp "$machine"/usr/share/doc/pagestack-cli/examples/*.service "$machine"/usr/share/doc/pagestack-cli/examples/*.timer \
    "$machine/etc/systemd/system/"
room=$machine/srv/scans/room
mkdir -p "$room"/{in,out,done,failed} "$machine"/srv/scans/{in,out}
inside chown -R pagestack: /srv/scans
inside systemctl -q enable pagestack-watch@room

# The sources, one of which is no TIFF file, and what they have to become.
cd "$scratch/ground" || exit 1
mkdir seeds sources expected
/usr/bin/python3 -B "$root/tests/fleet/make_seeds.py" seeds || die "no sources could be made"
seeds=(seeds/*.tif)
for ((number = 0; number < ${1:-120}; number++)); do
    cp -- "${seeds[number % ${#seeds[@]}]}" "sources/scan$number-.tif"
done
pagestack-convert -q --no-log --verify -f png -o expected sources || die "the sources cannot be converted"
echo "no picture" >sources/broken.tif

systemd-nspawn -q -D "$machine" --register=no --keep-unit --private-network -b >"$scratch/boot.log" 2>&1 </dev/null &
booted=$!
wait_until 60 is_booted || die "the machine does not boot: $(tail -n 3 "$scratch/boot.log")"
wait_until 20 is_watching || die "the service does not watch: $(at_work systemctl status pagestack-watch@room)"
echo "$name: $(at_work systemctl --version | head -n 1), booted, the service watches"

# Files come in by copies, and the service is killed three times.
cp sources/* "$room/in/" &
for share in 15 40 70; do
    wait_until 120 has_done "$share" || die "no $share per cent after two minutes"
    at_work systemctl kill -s KILL pagestack-watch@room
    wait_until 30 is_watching || die "systemd did not start the service again"
done
wait_until 300 is_emptied || die "after five minutes there is still $(find "$room/in" -type f | wc -l) in the folder"
at_work systemctl stop pagestack-watch@room
at_work systemctl show pagestack-watch@room -p Result -p NRestarts -p ExecMainStatus -p MemoryPeak | tr '\n' ' ' && echo
[ "$(at_work systemctl show pagestack-watch@room -p ActiveState --value)" = inactive ] || die "a stop counts as a failure"
compare "$room/out"
[ "$(find "$room/done" -name 'scan*.tif' | wc -l)" = "${1:-120}" ] || die "not every source was put away"
[ "$(find "$room/failed" -name 'broken.tif*' | wc -l)" = 2 ] || die "the broken file has no place or no reason: $(ls "$room/failed")"
grep -h . "$room"/failed/*.txt
echo "$name: $(find "$room/out" -type f | wc -l) outputs after three kills, each as undisturbed"

# The nightly one, without the broken file.
rm sources/broken.tif
cp sources/* "$machine/srv/scans/in/"
inside chown -R pagestack: /srv/scans/in
at_work systemctl start pagestack-nightly.service || die "the nightly run failed: $(at_work systemctl status pagestack-nightly.service)"
compare "$machine/srv/scans/out"
at_work systemctl start pagestack-nightly.timer
at_work systemctl list-timers --no-legend pagestack-nightly.timer | grep -q pagestack-nightly.service || die "the timer has no next time"
echo "$name: the nightly run wrote all, the timer waits"
at_work systemctl poweroff
wait "$booted"
booted=
