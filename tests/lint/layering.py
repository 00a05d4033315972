#!/usr/bin/env python3
"""Includes point one way: layering.py ROOT QTCORE-INCLUDE-DIR...

Checks who includes whom, that engine and command line use no Qt module but Qt Core, that headers of
the engine include no codec header, and that tests wait on signals instead of time.
"""
import re
import sys
from pathlib import Path

from project_files import project_files, report, text_of

# The folders from the bottom up: what is left of a sign may be included by what is right of it. FileItem
# stands there with what it is made of; nobody includes the command line.
LAYERS = """
engine/support < engine/threads < engine/files < engine/settings engine/log
< engine/options < engine/image/pixels engine/image/deflate < engine/image/tiff
< engine/image/metadata < engine/image/formats < engine/image/formats/png engine/image/formats/gif
< engine/image/decode < engine/image/tiffwriter < engine/image/verify < engine/image < engine/preview FileItem
< engine/sources < engine/plan < engine/job < engine/fleet < filelist cli
< mainwindow/widgets < mainwindow/desktop mainwindow/import < mainwindow/settings < mainwindow/state
< mainwindow/list mainwindow/preview < mainwindow/load mainwindow/run < mainwindow
"""
LEVEL = {part: level for level, row in enumerate(LAYERS.split("<")) for part in row.split()}
INCLUDE = re.compile(r'\s*#\s*(?:include|import)\s*[<"]([^>"]+)')
CODEC_HEADER = re.compile(r"(tiff\w*|jpeglib|jerror|png\w*|gif_lib|zlib|libdeflate|nettle/\w+|lcms2\w*)\.h$|qpdf/")
# Path, line, and a word of what is said of it.
SAMPLES = [
    ("engine/support/A.h", "#  include <QtWidgets/QWidget>", "Qt Core"),
    ("cli/main.cpp", "#include <QWidget>", "Qt Core"),
    ("engine/support/A.h", '#include "engine/log/Log.h"', "may not"),
    ("engine/image/tiff/A.cpp", '#include "engine/image/formats/Density.h"', "may not"),
    ("engine/job/A.cpp", '#include "filelist/FileDates.h"', "may not"),
    ("cli/main.cpp", '#include "filelist/List.h"', "may not"),
    ("mainwindow/A.cpp", '#include "cli/Options.h"', "may not"),
    ("mainwindow/load/A.cpp", '#include "mainwindow/run/B.h"', "may not"),
    ("engine/extra/A.h", "#include <vector>", "no place"),
    ("engine/image/A.h", "#include <tiffio.h>", "codec"),
    ("tests/engine/ATest.cpp", "QTest::qWait(50);", "time"),
    ("engine/image/A.cpp", "#include <tiffio.h>", ""),
    ("engine/job/A.h", '#include "filelist/FileItem.h"', ""),
    ("filelist/FileItem.cpp", '#include "filelist/FileDates.h"', ""),
    ("mainwindow/run/A.cpp", '#include "mainwindow/list/B.h"', ""),
    ("filelist/List.cpp", "#include <QImage>", ""),
    ("tests/engine/ATest.cpp", "#include <QtGui/QImage>\nspy.wait(); qWaitFor(done);", ""),
]


def part_of(path):
    """The layer of a file of the project, None outside of them."""
    if path.parts[0] == "filelist" and path.stem in ("FileItem", "FileDates"):
        return "FileItem"
    is_layered = path.parts[0] in ("engine", "cli", "filelist", "mainwindow")
    return str(path.parent) if is_layered else None


def is_core(name, qtcore_folders):
    if "/" in name:
        return name.startswith("QtCore/")
    return any((folder / below / name).exists() for folder in qtcore_folders for below in ("", "Headers"))


def include_findings(path, name, qtcore_folders):
    part, target = part_of(path), part_of(Path(name))
    level = LEVEL.get(part)
    if level is None:
        yield f"{part} has no place in the layers of tests/lint/layering.py"
        return
    if path.suffix == ".h" and path.parts[0] == "engine" and CODEC_HEADER.match(name):
        yield f"a header of the engine includes the codec header {name}"
    if (re.match(r"[Qq](?!pdf/|ueue$)", name) and not is_core(name, qtcore_folders)
            and (level < LEVEL["cli"] or part == "cli")):
        yield f"{name} is no header of Qt Core, which is all that {part} may use"
    if target not in (None, part):
        is_inner = target == "FileItem" and name != "filelist/FileItem.h" and part != "filelist"
        if LEVEL.get(target, level) >= level or target == "cli" or is_inner:
            yield f"{part} may not include {name}"


def findings(path, text, qtcore_folders):
    for number, line in enumerate(text.splitlines(), 1):
        match, found = INCLUDE.match(line), []
        if match and part_of(path):
            found += include_findings(path, match[1], qtcore_folders)
        if path.parts[0] == "tests" and re.search(r"\bqWait\s*\(", line):
            found.append("waits for a time instead of a signal")
        yield from (f"{path}:{number}: {message}" for message in found)


if __name__ == "__main__":
    root, qtcore = Path(sys.argv[1]), [Path(name) for name in sys.argv[2:]]
    if not is_core("QString", qtcore):
        sys.exit(f"no Qt Core headers in {sys.argv[2:]}")
    messages = []
    for path, text, wanted in SAMPLES:
        found = "".join(findings(Path(path), text, qtcore))
        if (wanted not in found) if wanted else found:
            messages.append(f"layering.py finds {found!r} in {path}: {text}")
    files = [path for path in project_files(root) if path.suffix in (".h", ".cpp", ".mm")]
    for path in files:
        messages += findings(path, text_of(root / path) or "", qtcore)
    report(messages, len(files))
