#!/usr/bin/env python3
"""Every script can start: scripts.py ROOT

A script that is run has a shebang and parses. One that is only sourced or imported, not executable,
needs no shebang.
"""

import os
import subprocess
import sys
from pathlib import Path

from project_files import project_files, report, text_of


def findings(path):
    text = text_of(path)
    if text is None:
        return
    shebang = text.splitlines()[0] if text.startswith("#!") else ""
    if os.access(path, os.X_OK) and not shebang:
        yield "is executable and has no shebang"
    if shebang and not os.access(path, os.X_OK):
        yield "has a shebang and is not executable"
    if path.suffix == ".py" or "python" in shebang:
        compile(text, str(path), "exec")  # which tells what is wrong, and where, by itself
    elif path.suffix == ".sh" or shebang.endswith("sh"):
        shell = "bash" if "bash" in shebang or not shebang else "sh"
        if subprocess.run([shell, "-n", str(path)]).returncode != 0:
            yield "does not parse"


root = Path(sys.argv[1])
files = project_files(root)
missing = [f"{name}: is missing" for name in ("run", "test", ".ci/run") if Path(name) not in files]
report(missing + [f"{path}: {what}" for path in files for what in findings(root / path)], len(files))
