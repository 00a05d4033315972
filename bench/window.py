#!/usr/bin/env python3
"""Measures the start of the window and its memory, from outside.

    bench/window.py --bin build/release/bin/pagestack [--runs 5] [--files 1000] [--rows 100000]
                    [--pictures DIR]

Starts the program on an X server and a session of its own: without files, with --files files on its command
line, and with folders of --rows files. A start takes from the call to the moment from which on nothing is
painted any more - so all files are listed and all controls are as they stay - and the program answers
(_NET_WM_PING, which its event loop does). With it comes the processor time until then, which a
busy machine makes less longer. The first run of each
warms the caches and does not count. --pictures keeps what was on the screen when a start counted as done.

Needs Debian's xvfb, libx11-6 and libxdamage1; a session bus (dbus-run-session) and a window manager
(openbox) are used where there are any, ImageMagick's import makes the pictures.
"""
import argparse
import ctypes
import os
import pathlib
import select
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

from measure import scratch_parent

QUIET_S = 0.7  # nothing is painted for as long: the window is as it stays
QUIET_AFTER_LOAD_S = 3.0
DEADLINE_S = 300.0
PING_EVERY_S = 0.004
STRUCTURE_NOTIFY = 1 << 17  # answers come to the root window
CLIENT_MESSAGE = 33
WINDOWS = ctypes.POINTER(ctypes.c_ulong)


class ClientMessage(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("send_event", ctypes.c_int),
                ("display", ctypes.c_void_p), ("window", ctypes.c_ulong), ("message_type", ctypes.c_ulong),
                ("format", ctypes.c_int), ("data", ctypes.c_long * 5)]


class Event(ctypes.Union):
    _fields_ = [("type", ctypes.c_int), ("message", ClientMessage), ("room", ctypes.c_long * 24)]


class Screen:
    """What is painted on the screen, and whether a program answers."""

    def __init__(self):
        self._x = ctypes.CDLL("libX11.so.6")
        damage = ctypes.CDLL("libXdamage.so.1")
        for name in ("XOpenDisplay", "XDefaultRootWindow", "XInternAtom"):
            getattr(self._x, name).restype = ctypes.c_void_p
        # Windows come and go while they are looked for.
        self._ignore = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p)(lambda *_: 0)
        self._x.XSetErrorHandler(self._ignore)
        self._display = ctypes.c_void_p(self._x.XOpenDisplay(None))
        self._root = ctypes.c_ulong(self._x.XDefaultRootWindow(self._display))
        self._ping, self._protocols, self._pid = (
            self._x.XInternAtom(self._display, name, 0)
            for name in (b"_NET_WM_PING", b"WM_PROTOCOLS", b"_NET_WM_PID"))
        self._x.XSelectInput(self._display, self._root, ctypes.c_long(STRUCTURE_NOTIFY))
        first, error = ctypes.c_int(), ctypes.c_int()
        if not damage.XDamageQueryExtension(self._display, ctypes.byref(first), ctypes.byref(error)):
            raise SystemExit("the X server does not tell what is painted")
        self._damaged = first.value
        damage.XDamageCreate(self._display, self._root, 0)
        self._x.XFlush(self._display)

    def events(self, timeout_s):
        """(was something painted, was a ping answered) since the last call, after `timeout_s` at the most."""
        if not self._x.XPending(self._display):
            select.select([self._x.XConnectionNumber(self._display)], [], [], timeout_s)
        is_painted = is_answered = False
        event = Event()
        while self._x.XPending(self._display):
            self._x.XNextEvent(self._display, ctypes.byref(event))
            is_painted |= event.type == self._damaged
            is_answered |= (event.type == CLIENT_MESSAGE and event.message.message_type == self._protocols
                            and event.message.data[0] == self._ping)
        return is_painted, is_answered

    def window_of(self, pid):
        """The window of the process that answers pings, or None."""
        return self._window_below(self._root, pid)

    def _window_below(self, window, pid):
        ignored, children, count = ctypes.c_ulong(), WINDOWS(), ctypes.c_uint()
        if not self._x.XQueryTree(self._display, window, ctypes.byref(ignored), ctypes.byref(ignored),
                                  ctypes.byref(children), ctypes.byref(count)):
            return None
        found = None
        for i in range(count.value):
            child = ctypes.c_ulong(children[i])
            if self._number(child, self._pid) == pid and self._number(child, self._protocols) is not None:
                found = child
            found = found or self._window_below(child, pid)
        if children:
            self._x.XFree(children)
        return found

    def _number(self, window, atom):
        kind, form, count, rest = ctypes.c_ulong(), ctypes.c_int(), ctypes.c_ulong(), ctypes.c_ulong()
        value = WINDOWS()
        self._x.XGetWindowProperty(self._display, window, ctypes.c_ulong(atom), ctypes.c_long(0),
                                   ctypes.c_long(1), 0, ctypes.c_ulong(0), ctypes.byref(kind),
                                   ctypes.byref(form), ctypes.byref(count), ctypes.byref(rest),
                                   ctypes.byref(value))
        number = value[0] if value and count.value else None
        if value:
            self._x.XFree(value)
        return number

    def ping(self, window):
        event = Event()
        event.message.type = CLIENT_MESSAGE
        event.message.window = window.value
        event.message.message_type = self._protocols
        event.message.format = 32
        event.message.data[0], event.message.data[2] = self._ping, window.value
        self._x.XSendEvent(self._display, window, 0, ctypes.c_long(0), ctypes.byref(event))
        self._x.XFlush(self._display)


class Start:
    """One start of the program: `ready_s` after the call nothing is painted any more and it answers."""

    def __init__(self, screen, command, environment, quiet_s):
        began = time.monotonic()
        self._process = subprocess.Popen(command, env=environment, stdout=subprocess.DEVNULL,
                                         stderr=subprocess.DEVNULL)
        painted = answered = asked = 0.0
        window = None
        self.longest_wait_s = 0.0
        while not window or not painted or not answered or answered < painted or time.monotonic() - painted < quiet_s:
            now = time.monotonic()
            if self._process.poll() is not None or now - began > DEADLINE_S:
                self.end()
                raise SystemExit(f"{command[0]} has ended or does not come to rest")
            if not window:
                window = screen.window_of(self._process.pid)
            if window and not asked and now - answered >= PING_EVERY_S:
                asked = now
                screen.ping(window)
            was_painted, was_answered = screen.events(PING_EVERY_S)
            now = time.monotonic()
            if was_answered and asked:
                self.longest_wait_s = max(self.longest_wait_s, now - asked)
                if asked >= painted and answered < painted:
                    self.ready_s = now - began  # unless something is painted later
                    self.cpu_s = self._processor_time()
                answered, asked = now if asked >= painted else answered, 0.0
            if was_painted:
                painted = now
        self.memory_mb = self._resident()

    def _processor_time(self):
        fields = pathlib.Path(f"/proc/{self._process.pid}/stat").read_text().rpartition(")")[2].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def _resident(self):
        for line in pathlib.Path(f"/proc/{self._process.pid}/status").read_text().splitlines():
            if line.startswith("VmRSS:"):
                return int(line.split()[1]) * 1024 / 1e6
        return 0.0

    def end(self):
        self._process.kill()
        self._process.wait()


def make_files(folder, count):
    """TIFF files of one row, a thousand in a folder."""
    one = (b"II*\0\x08\0\0\0\x08\0"
           + b"".join(tag.to_bytes(2, "little") + b"\x03\0\x01\0\0\0" + value.to_bytes(4, "little")
                      for tag, value in ((256, 16), (257, 1), (258, 1), (259, 1), (262, 1), (273, 110),
                                         (278, 1), (279, 2)))
           + b"\0\0\0\0" + b"\x55\xaa")
    paths = []
    for i in range(count):
        below = folder / f"folder {i // 1000}"
        if i % 1000 == 0:
            below.mkdir(parents=True)
        paths.append(below / f"scan {i}.tif")
        paths[-1].write_bytes(one)
    return [str(path) for path in paths]


def measure(screen, arguments, scratch, name, words, quiet_s, runs):
    starts = []
    for run in range(runs + 1):
        home = scratch / f"{name} {run}"
        places = {"HOME": home, "XDG_CONFIG_HOME": home / "config", "XDG_DATA_HOME": home / "data"}
        for place in places.values():
            place.mkdir()
        start = Start(screen, [arguments.bin, *words], {**os.environ, **{k: str(v) for k, v in places.items()}},
                      quiet_s)
        if arguments.pictures and shutil.which("import"):
            pathlib.Path(arguments.pictures).mkdir(parents=True, exist_ok=True)
            subprocess.run(["import", "-window", "root", f"{arguments.pictures}/{name}.png"], check=False)
        start.end()
        starts.append(start)
    counted = starts[1:] or starts
    ready = [start.ready_s * 1000 for start in counted]
    print(f"| {name} | {min(ready):.0f} | {statistics.median(ready):.0f} | "
          f"{min(start.cpu_s for start in counted) * 1000:.0f} | "
          f"{max(start.longest_wait_s for start in counted) * 1000:.0f} | "
          f"{max(start.memory_mb for start in counted):.0f} |", flush=True)


def measure_all(arguments):
    screen = Screen()
    print(f"{arguments.runs} runs each, load of the machine {os.getloadavg()[0]:.1f}\n\n"
          "| start | least, ms | median, ms | processor time, ms | longest wait for an answer, ms | memory, MB |\n"
          "| --- | ---: | ---: | ---: | ---: | ---: |", flush=True)
    with tempfile.TemporaryDirectory(prefix="window-", dir=scratch_parent(1 << 30)) as folder:
        scratch = pathlib.Path(folder)
        files = make_files(scratch / "few", arguments.files)
        folders = sorted({str(pathlib.Path(file).parent)
                          for file in make_files(scratch / "many", arguments.rows)})
        measure(screen, arguments, scratch, "empty", [], QUIET_S, arguments.runs)
        measure(screen, arguments, scratch, f"{arguments.files} files", files, QUIET_S, arguments.runs)
        measure(screen, arguments, scratch, f"{arguments.rows} files in folders", folders,
                QUIET_AFTER_LOAD_S, min(1, arguments.runs))


def with_display(arguments):
    """Calls this script again with an X server, and a window manager, of its own."""
    end, other = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(other), "-screen", "0", "1280x900x24", "-noreset",
                               "-nolisten", "tcp"], pass_fds=[other], stderr=subprocess.DEVNULL)
    os.close(other)
    started = [server]
    try:
        number = os.read(end, 16).decode().strip()
        environment = {k: v for k, v in os.environ.items() if k not in ("WAYLAND_DISPLAY", "XDG_RUNTIME_DIR")}
        environment.update(DISPLAY=f":{number}", QT_QPA_PLATFORM="xcb", LC_ALL="C.UTF-8")
        if shutil.which("openbox"):
            started.append(subprocess.Popen(["openbox"], env=environment, stderr=subprocess.DEVNULL))
            time.sleep(1)
        bus = ["dbus-run-session", "--"] if shutil.which("dbus-run-session") else []
        return subprocess.run([*bus, sys.executable, __file__, "--inside", *arguments], env=environment,
                              check=False).returncode
    finally:
        for process in reversed(started):
            process.terminate()
            process.wait()


def main():
    parser = argparse.ArgumentParser(description="Measures the start of the window and its memory.")
    parser.add_argument("--bin", required=True, help="path of pagestack")
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--files", type=int, default=1000)
    parser.add_argument("--rows", type=int, default=100000)
    parser.add_argument("--pictures", help="a folder for what was on the screen")
    parser.add_argument("--inside", action="store_true", help=argparse.SUPPRESS)
    arguments = parser.parse_args()
    if not arguments.inside:
        return with_display(sys.argv[1:])
    measure_all(arguments)
    return 0


if __name__ == "__main__":
    sys.exit(main())
