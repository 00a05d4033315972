"""One folder with sources and outputs, and a run of the program in it, watched."""

import os
import random
import re
import shutil
import signal
import struct
import subprocess
import tempfile
import time
import zlib
from pathlib import Path

from PIL import Image, ImageSequence

from trustlib import PROGRAM, Problems, read_log, start

SECONDS = 30  # after which a run counts as hanging
DIRECTORY = 2 + 9 * 12 + 4  # bytes
problems = Problems()


def picture(seed, width=61, height=43, noisy=False):
    """Width, height and gray samples; no two seeds look alike."""
    if noisy:
        return width, height, random.Random(seed).randbytes(width * height)
    return width, height, bytes((x * 3 + y * 5 + seed * 37) % 256 for y in range(height) for x in range(width))


def write_tiff(path, pages, deflated=False):
    """All directories first, then one strip a page: a file that is cut loses its last pages."""
    strips = [zlib.compress(samples, 0) if deflated else samples for _, _, samples in pages]
    at = 8 + len(pages) * DIRECTORY
    head = b"II*\0" + struct.pack("<I", 8)
    for i, ((width, height, _), strip) in enumerate(zip(pages, strips), 1):
        tags = {256: width, 257: height, 258: 8, 259: 8 if deflated else 1, 262: 1, 273: at, 277: 1,
                278: height, 279: len(strip)}
        head += struct.pack("<H", len(tags)) + b"".join(struct.pack("<HHII", tag, 4, 1, value)
                                                        for tag, value in tags.items())
        head += struct.pack("<I", 8 + i * DIRECTORY if i < len(pages) else 0)
        at += len(strip)
    Path(path).write_bytes(head + b"".join(strips))


def frames(path):
    with Image.open(path) as image:
        return [(*frame.size, frame.tobytes()) for frame in ImageSequence.Iterator(image)]


def in_xml(text):
    """What XML 1.0 can hold of it."""
    return re.sub("[\0-\x08\x0b\x0c\x0e-\x1f\ud800-\udfff\ufffe\uffff]", "\ufffd", text)


class Scene:
    """Sources are in `in`, outputs in `out`, and `pages` remembers what was put into each source."""

    runs = 0

    def __init__(self, name, counts=None, user=None):
        self.name, self.user = name, user
        self.errors, self.code, self.is_faulty = "", None, False
        self.folder = Path(tempfile.mkdtemp(prefix="pagestack-trust-"))
        self.folder.chmod(0o755)
        for sub in ("in", "out", "home", "tmp"):
            self.path(sub).mkdir()
            if user is not None:
                os.chown(self.path(sub), user, user)
        self.pages = {}
        for source, count in (counts or {}).items():
            self.make(source, [picture(10 * len(self.pages) + i) for i in range(count)])

    def __enter__(self):
        self.came_from = os.getcwd()
        os.chdir(self.folder)
        return self

    def __exit__(self, *_):
        if self.is_faulty:
            for line in self.errors.split("\n")[:10]:
                print(f"    {line[:200]!r}")
        os.chdir(self.came_from)
        shutil.rmtree(self.folder)

    def path(self, name):
        return self.folder / os.fsdecode(name)

    def make(self, source, pages, **how):
        self.pages[source] = pages
        write_tiff(self.path(source), pages, **how)

    def start(self, *words, **options):
        Scene.runs += 1
        options.setdefault("stderr", subprocess.PIPE)
        options.setdefault("stdout", subprocess.DEVNULL)
        if self.user is not None:
            # Copied, since the folder of the build may be closed to other users.
            options.update(user=self.user, group=self.user, extra_groups=[],
                           executable=shutil.copy2(PROGRAM, self.path("program")))
        self.process = start(["-o", self.path("out"), "--log", self.path("home/log"), *words],
                             self.path("home"), env={"TMPDIR": str(self.path("tmp"))}, **options)

    def is_halted_before(self, *outputs):
        """Halts the program as soon as it has begun to write; False when one of `outputs` is there."""
        until = time.monotonic() + SECONDS
        while self.process.poll() is None and not os.listdir("out") and time.monotonic() < until:
            time.sleep(0.0005)
        self.process.send_signal(signal.SIGSTOP)
        if self.process.poll() is None:
            os.waitid(os.P_PID, self.process.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT)
        return self.process.poll() is None and not any(map(os.path.exists, outputs))

    def end(self):
        """Goes on, if it was halted, and waits for the end."""
        self.process.send_signal(signal.SIGCONT)
        try:
            self.errors = self.process.communicate(timeout=SECONDS)[1] or ""
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.errors = self.process.communicate()[1] or ""
            self.check(False, f"no end within {SECONDS} s")
        self.code = self.process.returncode
        self.check(self.code in range(5), f"a crash: exit {self.code}")
        self.check(not os.listdir(self.path("tmp")), "a temporary file is left")

    def run(self, *words, **options):
        self.start(*words, **options)
        self.end()

    def check(self, holds, text):
        self.is_faulty |= not problems.expect(holds, f"{self.name}: {text}")

    def check_code(self, code):
        self.check(self.code == code, f"exit {self.code} instead of {code}")

    def check_told(self, place):
        """A trouble is told of the source, or of one of its pages."""
        told = any(f"pagestack-convert: {place}{end}" in self.errors for end in (": ", "["))
        self.check(told, f"{place!r} is not told")

    def check_pages(self, name, *contents):
        """The file holds one of `contents`, each a list of pages, sample for sample."""
        try:
            found = frames(self.path(name))
        except (OSError, SyntaxError, ValueError, struct.error) as error:
            return self.check(False, f"{name!r} cannot be read: {error}")
        return self.check(found in contents, f"{name!r} does not hold its pages")

    def check_sources(self, *sources):
        for source in sources:
            self.check_pages(source, self.pages[source])

    def check_outputs(self, wanted, is_logged=True):
        """`out` holds just the files `wanted`, whole; the log promises no others."""
        wanted = {os.fsdecode(name): contents for name, contents in wanted.items()}
        there = set(os.listdir("out"))
        self.check(there <= set(wanted), f"not expected in out: {sorted(there - set(wanted))}")
        self.check(there >= set(wanted), f"missing in out: {sorted(set(wanted) - there)}")
        for name in there & set(wanted):
            self.check_pages(f"out/{name}", *wanted[name])
        log = self.path("home/log")
        self.check(log.exists() or not is_logged, "there is no log")
        if log.exists():
            completed = {page["NewFileName"] for _, pages in read_log(log)
                         for page in pages if page["Status"] == "Completed" and page["NewFileName"][-5:] != ".tiff"}
            self.check(completed <= set(map(in_xml, there)), f"the log claims {sorted(completed)}")


def finish():
    problems.finish(f"{Scene.runs} runs")
