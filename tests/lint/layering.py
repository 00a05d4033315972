#!/usr/bin/env python3
"""Includes point one way: layering.py ROOT QTCORE-INCLUDE-DIR...

Checks who includes whom, that engine and command line use no Qt module but Qt Core, that headers of the
engine include no codec header, and that tests wait on signals instead of time.
"""

import re
import sys
from pathlib import Path

from project_files import project_files, report, text_of

SOURCES = {".h", ".cpp", ".mm"}
# The rooms of the engine below the job, from the bottom up; those of one row do not include each other.
ENGINE = (("support",), ("threads",), ("files",), ("settings", "log"), ("image/pixels", "image/deflate"),
          ("image/tiff", "image/formats"), ("image/formats/png", "image/formats/gif"), ("image/decode",),
          ("image/tiffwriter",), ("image",), ("FileItem",), ("sources",), ("plan",), ("job",))

# What each part may include besides itself. Parts that are not here (tests, bench) may include all.
BELOW = {}
for row in ENGINE:
    below = set(BELOW)
    BELOW.update({part: below for part in row})
QT_CORE_ONLY = set(BELOW) | {"cli"}
BELOW["cli"] = BELOW["filelist"] = set(BELOW)
# The rooms of the window in the same way; the files of no room are on top.
WINDOW = (("widgets",), ("desktop", "import"), ("settings",), ("state",), ("list",), ("load", "run"))
below = BELOW["filelist"] | {"filelist"}
for row in WINDOW:
    BELOW.update({f"mainwindow/{room}": below for room in row})
    below = below | {f"mainwindow/{room}" for room in row}
BELOW["mainwindow"] = below
# FileItem stands between image and job together with what it is made of; only its own header is for others.
LOW_FILELIST = {"FileItem", "FileDates"}

INCLUDE = re.compile(r'^\s*#\s*(?:include|import)\s*([<"])([^>"]+)[>"]')
CODEC_HEADER = re.compile(r"(?:.*/)?(tiff\w*|jpeglib|jerror|jconfig|jmorecfg|png\w*|gif_lib|zlib|"
                          r"libdeflate|lcms2\w*)\.h$|qpdf/")
QT_MODULE_LINKED = re.compile(r"\bQt6?::(?!Core\b|Test\b)(\w+)")
FIXED_WAIT = re.compile(r"\bqWait\s*\(")


def part_of(path):
    """The part a file of the project belongs to, None outside of all parts."""
    pieces = path.parts
    if pieces[0] == "engine" and len(pieces) > 2:
        return "/".join(pieces[1:-1])
    if pieces[0] == "filelist" and path.stem in LOW_FILELIST:
        return "FileItem"
    if pieces[0] == "mainwindow":
        return "/".join(pieces[:-1])
    return pieces[0] if pieces[0] in ("filelist", "cli") else None


def is_qt_core_header(name, qtcore_folders):
    if "/" in name:
        return name.startswith("QtCore/")
    return any((folder / name).exists() or (folder / "Headers" / name).exists()
               for folder in qtcore_folders)


def include_findings(path, lines, qtcore_folders):
    part = part_of(path)
    for number, line in lines:
        match = INCLUDE.match(line)
        if not match or part is None:
            continue
        quoted, name = match[1] == '"', match[2]
        where = f"{path}:{number}: "
        if part not in BELOW:
            yield where + f"{part} has no place in the layers of tests/lint/layering.py"
        if path.suffix == ".h" and path.parts[0] == "engine" and CODEC_HEADER.match(name):
            yield where + f"a header of the engine includes the codec header {name}"
        if part in QT_CORE_ONLY and re.match(r"[Qq](?!pdf/)", name) and not is_qt_core_header(
                name, qtcore_folders):
            yield where + f"{name} is no header of Qt Core, which is all that {part} may use"
        target = part_of(Path(name))
        allowed = target in BELOW.get(part, set()) and (
            target != "FileItem" or part == "filelist" or name == "filelist/FileItem.h")
        if target is not None and target != part and not allowed:
            yield where + f"{part} may not include {name}"
        # What is made from a window's description has no folder of its own.
        is_made = name.endswith(".moc") or (part.startswith("mainwindow") and name.startswith("ui_"))
        if quoted and target is None and "/" not in name and not is_made:
            yield where + f"{name} is not included from the root of the project"


def findings(root, qtcore_folders):
    """(messages, number of files checked)"""
    messages, checked = [], 0
    for path in project_files(root):
        is_source = path.suffix in SOURCES
        if not is_source and path.name != "CMakeLists.txt":
            continue
        checked += 1
        lines = list(enumerate((text_of(root / path) or "").splitlines(), 1))
        if is_source:
            messages += include_findings(path, lines, qtcore_folders)
        elif path.parts[0] in ("engine", "cli"):
            messages += [f"{path}:{number}: links Qt {match[1]}" for number, line in lines
                         for match in QT_MODULE_LINKED.finditer(line)]
        if path.parts[0] == "tests":
            messages += [f"{path}:{number}: waits for a time instead of a signal"
                         for number, line in lines if FIXED_WAIT.search(line)]
    return messages, checked


if __name__ == "__main__":
    qtcore = [Path(name) for name in sys.argv[2:]]
    if not is_qt_core_header("QString", qtcore):
        sys.exit(f"no Qt Core headers in {sys.argv[2:]}")
    report(*findings(Path(sys.argv[1]), qtcore))
