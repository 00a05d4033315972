"""What the trust tests share: sources, runs of the program, and judges of what it leaves behind."""

import atexit
import hashlib
import os
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import warnings
import xml.etree.ElementTree as ElementTree
from pathlib import Path

SKIPPED = 77


def skip(why):
    print(f"skipped: {why}")
    sys.exit(SKIPPED)


try:
    from PIL import Image, ImageSequence, TiffImagePlugin
except ImportError:
    skip("Pillow is not installed")
if "PAGESTACK_BIN" not in os.environ or "PAGESTACK_SOURCE_DIR" not in os.environ:
    skip("PAGESTACK_BIN and PAGESTACK_SOURCE_DIR say where the programs and the samples are")

PROGRAM = Path(os.environ["PAGESTACK_BIN"]) / "pagestack-convert"
SAMPLES = Path(os.environ["PAGESTACK_SOURCE_DIR"]) / "samples"
STAGED = re.compile(r"\.pagestack-[0-9]+-[0-9]+\.part")
FORMATS = {".jpg": "JPEG", ".png": "PNG", ".bmp": "BMP", ".gif": "GIF", ".tiff": "TIFF"}
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
COMPRESSIONS = ("raw", "tiff_lzw", "packbits")  # as Pillow calls them

warnings.filterwarnings("error", category=UserWarning)
if not PROGRAM.is_file():
    skip(f"{PROGRAM} was not built")


class Problems:
    """Counts checks and gathers those that failed."""

    def __init__(self):
        self.checks = 0
        self.found = []

    def expect(self, holds, what):
        self.checks += 1
        if not holds:
            self.found.append(what)
            print(f"FAILED: {what}", flush=True)
        return bool(holds)

    def finish(self, summary):
        print(f"{summary}; {self.checks} checks, {len(self.found)} failed")
        sys.exit(1 if self.found or not self.checks else 0)


def workspace():
    """A new folder that is removed when the script ends."""
    folder = Path(tempfile.mkdtemp(prefix="pagestack-trust-"))
    atexit.register(shutil.rmtree, folder, ignore_errors=True)
    return folder


def make_source(path, pages, size=None, first=0):
    """Writes a TIFF file whose pages are those of the samples in turn, from number `first` on."""
    pictures = []
    for name in ("three-pages.tif", "gray-photo.tif", "transparent-badge.tif", "turned.tif"):
        with Image.open(SAMPLES / name) as sample:
            pictures += [frame.copy() for frame in ImageSequence.Iterator(sample)]
    with TiffImagePlugin.AppendingTiffWriter(str(path), new=True) as file:
        for page in range(first, first + pages):
            picture = pictures[page % len(pictures)]
            picture = picture.resize(size) if size else picture
            compression = "group4" if picture.mode == "1" else COMPRESSIONS[page % 3]
            picture.save(file, "TIFF", compression=compression)
            file.newFrame()
    return path


def start(arguments, home, **options):
    """Starts the program with settings and data of its own below `home`."""
    surroundings = {**os.environ, "HOME": str(home), "LC_ALL": "C.UTF-8", "XDG_CONFIG_HOME": f"{home}/config",
                    "XDG_DATA_HOME": f"{home}/data", **options.pop("env", {})}
    pipes = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options}
    return subprocess.Popen([PROGRAM, *arguments], env=surroundings, encoding="utf-8",
                            errors="surrogateescape", **pipes)


def run(arguments, home, timeout=60, **options):
    """Runs the program to its end; after `timeout` seconds it is killed, and the code is -9."""
    process = start(arguments, home, **options)
    try:
        output, errors = process.communicate(timeout=timeout)
    except subprocess.TimeoutExpired:
        process.kill()
        output, errors = process.communicate()
    return subprocess.CompletedProcess(arguments, process.returncode, output, errors)


def incompleteness(path, pages=1):
    """Why the file is not a whole picture of the format its name says, with `pages` pages; or None."""
    data = Path(path).read_bytes()
    ends = {".jpg": b"\xff\xd9", ".png": b"IEND\xaeB\x60\x82", ".gif": b"\x00;"}
    if not data.endswith(ends.get(Path(path).suffix, b"")):
        return f"{len(data)} bytes without the end of the format"
    if data[:2] == b"BM" and struct.unpack_from("<I", data, 2)[0] != len(data):
        return f"{len(data)} bytes, not as many as the header says"
    try:
        with Image.open(path) as picture:
            if picture.format != FORMATS[Path(path).suffix]:
                return f"is of the format {picture.format}"
            frames = 0
            for frame in ImageSequence.Iterator(picture):
                frame.load()
                frames += 1
    except Exception as error:  # Pillow shows what is torn in many ways, a warning among them
        return f"cannot be read: {error}"
    return None if frames == pages else f"{frames} pages instead of {pages}"


def staged_files(folder):
    return [path for path in Path(folder).iterdir() if STAGED.fullmatch(path.name)]


def digest(path):
    return hashlib.sha256(Path(path).read_bytes()).hexdigest()


def logs(home):
    """The logs in the data folder of `home`."""
    return sorted(Path(home, "data").rglob("*.log"))


def read_log(path):
    """The sources of an XML log, each as its attributes and a list of the attributes of its pages.

    None for a log that is torn.
    """
    try:
        root = ElementTree.parse(path).getroot()
    except ElementTree.ParseError:
        return None
    return [(source.attrib, [page.attrib for page in source]) for source in root]


def is_kept_together(arguments):
    return "tiff" in arguments and "--split" not in arguments


def reference(problems, arguments, sources, pages, folder):
    """What an undisturbed run writes into `folder`, as the digest of each name; `pages` is for one source."""
    ended = run([*arguments, "-o", folder, *sources], f"{folder}-home")
    problems.expect(ended.returncode == 0 and not ended.stderr, f"{arguments}: {ended.stderr}")
    files = sorted(Path(folder).iterdir())
    together = is_kept_together(arguments)
    problems.expect(len(files) == len(sources) * (1 if together else pages), f"{arguments}: {files}")
    for path in files:
        reason = incompleteness(path, pages if together else 1)
        problems.expect(reason is None, f"{arguments}: {path.name} {reason}")
    return {path.name: digest(path) for path in files}
