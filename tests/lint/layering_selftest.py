#!/usr/bin/env python3
"""Shows that layering.py finds what it is there to find, and nothing in code that keeps the rules."""

import sys
import tempfile
from pathlib import Path

import layering

GOOD = [
    ("engine/support/A.cpp", '#include "engine/support/A.h"\n#include <QString>\n#include <vector>'),
    ("engine/support/A.cpp", "#include <QtCore/QString>\n#include <tiffio.h>"),
    ("engine/job/A.h", '#include "filelist/FileItem.h"\n#include "engine/image/B.h"'),
    ("filelist/FileItem.cpp", '#include "filelist/FileItem.h"\n#include "engine/image/B.h"'),
    ("engine/image/A.cpp", "#include <qpdf/QPDF.hh>"),
    ("filelist/List.cpp", '#include "engine/job/Process.h"\n#include <QImage>'),
    ("mainwindow/Window.cpp", '#include "filelist/List.h"\n#include <QtWidgets/QWidget>'),
    ("mainwindow/run/A.cpp", '#include "mainwindow/list/B.h"\n#include "ui_Window.h"'),
    ("tests/engine/ATest.cpp", "#include <QtGui/QImage>\nspy.wait(); qWaitFor(done);"),
]

BAD = [
    ("engine/support/A.h", "#  include <QtWidgets/QWidget>"),
    ("cli/main.cpp", "#include <QWidget>"),
    ("engine/support/A.h", '#include "engine/log/Log.h"'),
    ("engine/image/pixels/A.cpp", '#include "engine/image/B.h"'),
    ("engine/image/tiff/A.cpp", '#include "engine/image/formats/Density.h"'),
    ("engine/image/other/A.cpp", "#include <vector>"),
    ("engine/job/A.cpp", '#include "filelist/FileDates.h"'),
    ("cli/main.cpp", '#include "filelist/List.h"'),
    ("engine/extra/A.h", "#include <vector>"),
    ("mainwindow/load/A.cpp", '#include "mainwindow/run/B.h"'),
    ("mainwindow/widgets/A.h", '#include "mainwindow/Window.h"'),
    ("mainwindow/extra/A.h", "#include <vector>"),
    ("engine/log/A.cpp", '#include "A.h"'),
    ("engine/image/A.h", "#include <tiffio.h>"),
    ("engine/image/A.h", "#include <qpdf/QPDF.hh>"),
    ("engine/CMakeLists.txt", "target_link_libraries(pagestack_engine PRIVATE Qt6::Gui)"),
    ("tests/engine/ATest.cpp", "QTest::qWait(50);"),
]


def found(path, text):
    with tempfile.TemporaryDirectory() as folder:
        root, qtcore = Path(folder, "root"), Path(folder, "QtCore")
        qtcore.mkdir()
        (qtcore / "QString").touch()
        (root / path).parent.mkdir(parents=True)
        (root / path).write_text(text)
        return layering.findings(root, [qtcore])[0]


wrong = [f"found in good code: {found(*case)}" for case in GOOD if found(*case)]
wrong += [f"missed: {case}" for case in BAD if len(found(*case)) == 0]
sys.exit("\n".join(wrong) or None)
