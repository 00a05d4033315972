"""What the trust tests share: sources, runs of the program, and judges of what it leaves behind."""

import atexit
import hashlib
import os
import random
import re
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
import xml.etree.ElementTree as ElementTree
import zlib
from pathlib import Path

SKIPPED = 77


def skip(why):
    print(f"skipped: {why}")
    sys.exit(SKIPPED)


try:
    from PIL import Image, ImageSequence
except ImportError:
    skip("Pillow is not installed")
if "PAGESTACK_BIN" not in os.environ or "PAGESTACK_SOURCE_DIR" not in os.environ:
    skip("PAGESTACK_BIN and PAGESTACK_SOURCE_DIR say where the programs and their sources are")

PROGRAM = Path(os.environ["PAGESTACK_BIN"]) / "pagestack-convert"
BESIDE = Path(os.environ["PAGESTACK_SOURCE_DIR"]).parent / "shared"
SECONDS = 60  # after which a run counts as hanging
DIRECTORY = 2 + 9 * 12 + 4  # bytes
CONVERSIONS = {
    "jpg": ["-f", "jpeg"],
    "png": ["-f", "png"],
    "bmp": ["-f", "bmp"],
    "gif": ["-f", "gif"],
    "tiff": ["-f", "tiff"],
    "tiff-lzw": ["-f", "tiff", "--compression", "lzw"],
    "tiff-g4": ["-f", "tiff", "--compression", "g4"],
    "tiff-split": ["-f", "tiff", "--split", "--compression", "packbits"],
}
checks = failures = 0


def expect(holds, what):
    global checks, failures
    checks += 1
    if not holds:
        failures += 1
        print(f"FAILED: {what}", flush=True)
    return bool(holds)


def finish(summary):
    print(f"{summary}; {checks} checks, {failures} failed")
    sys.exit(1 if failures or not checks else 0)


def workspace():
    """A new folder that is removed when the script ends."""
    folder = Path(tempfile.mkdtemp(prefix="pagestack-trust-"))
    atexit.register(shutil.rmtree, folder, ignore_errors=True)
    return folder


def picture(seed, width=61, height=43, noisy=False, bits=8):
    """Width, height, bits and gray samples; no two seeds look alike."""
    row = (width * bits + 7) // 8
    if noisy:
        return width, height, bits, random.Random(seed).randbytes(row * height)
    return width, height, bits, bytes((x * 3 + y * 5 + seed * 37) % 256 for y in range(height) for x in range(row))


def write_tiff(path, pages, deflated=False):
    """All directories first, then one strip a page: a file that is cut loses its last pages."""
    strips = [zlib.compress(samples, 0) if deflated else samples for *_, samples in pages]
    at, file = 8 + len(pages) * DIRECTORY, bytearray(b"II*\0" + struct.pack("<I", 8))
    for i, ((width, height, bits, _), strip) in enumerate(zip(pages, strips), 1):
        tags = {256: width, 257: height, 258: bits, 259: 8 if deflated else 1, 262: 1, 273: at, 277: 1,
                278: height, 279: len(strip)}
        file += struct.pack("<H", len(tags))
        for tag, value in tags.items():
            file += struct.pack("<HHII", tag, 4, 1, value)
        file += struct.pack("<I", 8 + i * DIRECTORY if i < len(pages) else 0)
        at += len(strip)
    Path(path).write_bytes(file + b"".join(strips))
    return path


def frames(path):
    with Image.open(path) as image:
        return [(*frame.size, 1 if frame.mode == "1" else 8, frame.tobytes()) for frame in ImageSequence.Iterator(image)]


def troubles(done):
    """Lines of standard error, but for the remark that deep pages got no fax compression."""
    return [line for line in done.stderr.splitlines() if "written without compression" not in line]


def start(arguments, home, **options):
    """Starts the program with settings and data of its own below `home`."""
    surroundings = {**os.environ, "HOME": str(home), "LC_ALL": "C.UTF-8", "XDG_CONFIG_HOME": f"{home}/config",
                    "XDG_DATA_HOME": f"{home}/data", **options.pop("env", {})}
    pipes = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options}
    return subprocess.Popen([PROGRAM, *arguments], env=surroundings, encoding="utf-8",
                            errors="surrogateescape", **pipes)


def ended(process):
    """Waits for the end; a run that hangs is killed, and the code is -9."""
    try:
        output, errors = process.communicate(timeout=SECONDS)
    except subprocess.TimeoutExpired:
        process.kill()
        output, errors = process.communicate()
    return subprocess.CompletedProcess(process.args, process.returncode, output or "", errors or "")


def run(arguments, home, **options):
    return ended(start(arguments, home, **options))


def troubles(done):
    """What a run told but for warnings: a fax compression cannot be had for every page."""
    return [line for line in done.stderr.splitlines() if ": warning: " not in line]


def staged_files(folder):
    return [path for path in Path(folder).iterdir() if re.fullmatch(r"\.pagestack-[0-9]+-[0-9]+\.part", path.name)]


def digests(folder):
    return {path.name: hashlib.sha256(path.read_bytes()).hexdigest() for path in Path(folder).iterdir()}


def logs(home):
    """The logs in the data folder of `home`."""
    return sorted(Path(home, "data").rglob("*.log"))


def read_log(path):
    """The sources of an XML log, each as its attributes and a list of the attributes of its pages; none
    of a log that is torn."""
    try:
        return [(source.attrib, [page.attrib for page in source]) for source in ElementTree.parse(path).getroot()]
    except ElementTree.ParseError:
        return []


def is_kept_together(name):
    return name in ("tiff", "tiff-lzw", "tiff-g4")


class Ground:
    """Sources, what an undisturbed run makes of them in each format, and a folder to disturb runs in."""

    def __init__(self, pages, side):
        self.folder = workspace()
        self.inputs, self.output, self.home = (self.folder / name for name in ("in", "out", "home"))
        self.inputs.mkdir()
        self.sources = [write_tiff(self.inputs / f"{name}.tif",
                                   [picture(10 * i + j, side, side * 4 // 3, bits=1 if j % 2 else 8) for j in range(pages)])
                        for i, name in enumerate(("alpha", "beta", "gamma"))]
        self.originals, self.written = digests(self.inputs), {}
        for name, words in CONVERSIONS.items():
            done = run([*words, "-o", self.folder / name, *self.sources], self.home)
            self.written[name] = digests(self.folder / name)
            wanted = len(self.sources) * (1 if is_kept_together(name) else pages)
            expect(done.returncode == 0 and not troubles(done) and len(self.written[name]) == wanted, f"{name}: {done}")

    def prepare(self, name, has_old=False, is_own=False):
        """The words of a run into a new folder, or over its sources, and what is there before."""
        for folder in (self.output, self.home):
            shutil.rmtree(folder, ignore_errors=True)
            folder.mkdir()
        for path in self.written[name] if has_old else ():
            (self.output / path).write_text(f"what was at {path}" * 5000)  # more than will be
        into, sources = ["-o", self.output], self.sources
        if is_own:
            into, sources = [], [shutil.copy(path, self.output / f"{path.stem}.tiff") for path in sources]
        return [*CONVERSIONS[name], "--on-exists", "overwrite", *into, *sources], digests(self.output)

    def check_sources(self, what):
        expect(digests(self.inputs) == self.originals, f"{what}: a source changed")


class Scene:
    """One folder with sources in `in`, outputs in `out`, and a run in it, watched."""

    def __init__(self, name, counts=None, user=None):
        self.name, self.user, self.errors, self.code = name, user, "", None
        self.folder = Path(tempfile.mkdtemp(prefix="pagestack-trust-"))
        self.folder.chmod(0o755)
        for sub in ("in", "out", "home", "tmp"):
            self.path(sub).mkdir()
            if user is not None:
                os.chown(self.path(sub), user, user)
        self.pages = {}  # what was put into each source
        for source, count in (counts or {}).items():
            self.make(source, [picture(10 * len(self.pages) + i) for i in range(count)])

    def __enter__(self):
        self.came_from = os.getcwd()
        os.chdir(self.folder)
        return self

    def __exit__(self, *_):
        os.chdir(self.came_from)
        shutil.rmtree(self.folder)

    def path(self, name):
        return self.folder / os.fsdecode(name)

    def make(self, source, pages, **how):
        self.pages[source] = pages
        write_tiff(self.path(source), pages, **how)

    def start(self, *words, **options):
        options.setdefault("stdout", subprocess.DEVNULL)
        if self.user is not None:
            # Copied, since the folder of the build may be closed to other users.
            options.update(user=self.user, group=self.user, extra_groups=[],
                           executable=shutil.copy2(PROGRAM, self.path("program")))
        self.process = start(["-o", self.path("out"), "--log", self.path("home/log"), *words],
                             self.path("home"), env={"TMPDIR": str(self.path("tmp"))}, **options)

    def end(self):
        """Goes on, if it was halted, and waits for the end."""
        self.process.send_signal(signal.SIGCONT)
        done = ended(self.process)
        self.code, self.errors, self.output = done.returncode, done.stderr, done.stdout
        self.check(self.code in range(5), f"a crash, or no end within {SECONDS} s")
        self.check(not os.listdir(self.path("tmp")), "a temporary file is left")

    def run(self, *words, **options):
        self.start(*words, **options)
        self.end()

    def check(self, holds, text):
        expect(holds, f"{self.name}: {text}; exit {self.code}, told {self.errors[:500]!r}")

    def check_told(self, place):
        """A trouble is told of the source, or of one of its pages, and by the exit code."""
        told = any(f"pagestack-convert: {place}{end}" in self.errors for end in (": ", "["))
        self.check(told and self.code == 1, f"{place!r} is not told")

    def check_pages(self, name, *contents):
        """The file holds one of `contents`, each a list of pages, sample for sample."""
        try:
            self.check(frames(self.path(name)) in contents, f"{name!r} does not hold its pages")
        except (OSError, SyntaxError, ValueError, struct.error) as error:
            self.check(False, f"{name!r} cannot be read: {error}")

    def check_outputs(self, wanted, folder="out"):
        """The folder holds just the files `wanted`, whole."""
        wanted, there = {os.fsdecode(name): contents for name, contents in wanted.items()}, set(os.listdir(folder))
        self.check(there == set(wanted), f"it lacks {set(wanted) - there}, has {there - set(wanted)}")
        for name in there & set(wanted):
            self.check_pages(f"{folder}/{name}", *wanted[name])


def halt(process):
    process.send_signal(signal.SIGSTOP)
    if process.poll() is None:
        os.waitid(os.P_PID, process.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT)
