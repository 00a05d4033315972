#!/usr/bin/env python3
"""Shows that layering.py finds what it is there to find, and nothing in code that keeps the rules."""

import sys
import tempfile
from pathlib import Path

import layering

GOOD = [
    ("engine/support/A.cpp", '#include "engine/support/A.h"\n#include <QString>\n#include <vector>'),
    ("engine/support/A.cpp", "#include <QtCore/QString>\n#include <tiffio.h>"),
    ("engine/image/A.h", '#include "engine/files/F.h"\n#include "engine/settings/Settings.h"'),
    ("engine/job/A.h", '#include "filelist/FileItem.h"\n#include "engine/image/B.h"'),
    ("filelist/FileItem.cpp", '#include "filelist/FileItem.h"\n#include "engine/image/B.h"'),
    ("filelist/FileItem.cpp", '#include "filelist/AllocatedSize.h"'),
    ("engine/image/A.cpp", "#include <qpdf/QPDF.hh>"),
    ("filelist/List.cpp", '#include "engine/job/Process.h"\n#include <QImage>'),
    ("cli/main.cpp", '#include "engine/job/Process.h"\n#include "main.moc"'),
    ("mainwindow/Window.cpp", '#include "filelist/List.h"\n#include <QtWidgets/QWidget>'),
    ("engine/CMakeLists.txt", "target_link_libraries(pagestack_engine PUBLIC Qt6::Core)"),
    ("tests/engine/ATest.cpp", "#include <QtGui/QImage>\nspy.wait(); qWaitFor(done);"),
]

BAD = [
    ("engine/support/A.cpp", "#include <QtGui/QImage>"),
    ("engine/support/A.cpp", "#include <QImage>"),
    ("engine/support/A.h", "#  include <QtWidgets/QWidget>"),
    ("engine/job/A.cpp", "#include <qimage.h>"),
    ("cli/main.cpp", "#include <QWidget>"),
    ("cli/main.cpp", "#include <QtWidgets>"),
    ("filelist/FileItem.h", "#include <QIcon>"),
    ("engine/support/A.h", '#include "engine/log/Log.h"'),
    ("engine/settings/A.h", '#include "engine/log/Log.h"'),
    ("engine/log/A.h", '#include "engine/image/B.h"'),
    ("engine/image/A.h", '#include "filelist/FileItem.h"'),
    ("engine/image/A.cpp", '#include "engine/job/Process.h"'),
    ("engine/image/pixels/A.cpp", '#include "engine/image/B.h"'),
    ("engine/image/tiff/A.cpp", '#include "engine/image/formats/Density.h"'),
    ("engine/image/other/A.cpp", "#include <vector>"),
    ("engine/job/A.cpp", '#include "filelist/List.h"'),
    ("engine/job/A.cpp", '#include "filelist/AllocatedSize.h"'),
    ("engine/job/A.cpp", '#include "cli/Options.h"'),
    ("filelist/FileItem.cpp", '#include "engine/job/Process.h"'),
    ("filelist/List.cpp", '#include "mainwindow/Window.h"'),
    ("cli/main.cpp", '#include "mainwindow/Window.h"'),
    ("cli/main.cpp", '#include "filelist/List.h"'),
    ("engine/extra/A.h", "#include <vector>"),
    ("engine/log/A.cpp", '#include "A.h"'),
    ("engine/image/A.h", "#include <tiffio.h>"),
    ("engine/image/A.h", "#include <jpeglib.h>"),
    ("engine/image/A.h", "#include <png.h>"),
    ("engine/image/A.h", "#include <libpng16/png.h>"),
    ("engine/image/A.h", "#include <gif_lib.h>"),
    ("engine/image/A.h", "#include <qpdf/QPDF.hh>"),
    ("engine/CMakeLists.txt", "target_link_libraries(pagestack_engine PRIVATE Qt6::Gui)"),
    ("cli/CMakeLists.txt", "target_link_libraries(pagestack-convert Qt6::Widgets)"),
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
