#!/usr/bin/env python3
"""Every C++ file is formatted as .clang-format says: formatting.py ROOT"""

import re
import shutil
import subprocess
import sys
from pathlib import Path

from project_files import project_files, report

# Other versions of clang-format lay out some code differently.
VERSION = "14"
SKIPPED = 77

root = Path(sys.argv[1])
program = shutil.which("clang-format-" + VERSION) or shutil.which("clang-format")
if program is None:
    print("clang-format is not installed")
    sys.exit(SKIPPED)
version = subprocess.run([program, "--version"], check=True, capture_output=True, text=True).stdout
if not re.search(rf"version {VERSION}\.", version):
    print(f"the rules are for clang-format {VERSION}, here is {version.strip()}")
    sys.exit(SKIPPED)


def is_formatted(text):
    """Whether clang-format would leave `text` as it is."""
    return subprocess.run([program, "--assume-filename=x.cpp", "--dry-run", "-Werror"], cwd=root,
                          input=text, text=True, capture_output=True).returncode == 0


messages = []
if is_formatted("int  x ;\n") or not is_formatted("int x;\n"):
    messages.append("clang-format does not tell formatted from unformatted code")
files = [path for path in project_files(root) if path.suffix in (".cpp", ".h")]
for path in files:
    result = subprocess.run([program, "--style=file", "--dry-run", "-Werror", str(path)], cwd=root,
                            text=True, capture_output=True)
    if result.returncode != 0:
        line = re.search(r":(\d+):\d+: error", result.stderr)
        messages.append(f"{path}:{line[1] if line else 1}: not formatted, see clang-format -i")
report(messages, len(files))
