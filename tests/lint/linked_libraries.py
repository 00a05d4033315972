#!/usr/bin/env python3
"""The built command line needs no Qt library but Qt Core: linked_libraries.py PROGRAM"""

import re
import shutil
import subprocess
import sys

from project_files import skip

program = sys.argv[1]
if shutil.which("readelf") is None:
    skip("readelf is not installed")
listing = subprocess.run(["readelf", "--dynamic", program], check=True, capture_output=True,
                         text=True).stdout
libraries = re.findall(r"\(NEEDED\).*\[(.+)\]", listing)
qt = [name for name in libraries if name.startswith("libQt6")]
if [name for name in qt if name.startswith("libQt6Core.")] != qt or not qt:
    sys.exit(f"{program} needs {', '.join(qt) or 'no Qt library at all'}")
