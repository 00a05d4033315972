#!/usr/bin/env python3
"""The built command line needs no Qt library but Qt Core: linked_libraries.py PROGRAM"""

import re
import shutil
import subprocess
import sys
from pathlib import Path

SKIPPED = 77

program = sys.argv[1]
if shutil.which("readelf") is None:
    print("readelf is not installed")
    sys.exit(SKIPPED)
if not Path(program).is_file():
    sys.exit(f"{program} was not built")
listing = subprocess.run(["readelf", "--dynamic", program], check=True, capture_output=True,
                         text=True).stdout
libraries = re.findall(r"\(NEEDED\).*\[(.+)\]", listing)
qt = [name for name in libraries if name.startswith("libQt6")]
if [name for name in qt if name.startswith("libQt6Core.")] != qt or not qt:
    sys.exit(f"{program} needs {', '.join(qt) or 'no Qt library at all'}")
