#!/usr/bin/env python3
"""Every C++ file is formatted as .clang-format says: formatting.py ROOT"""
import re
import shutil
import subprocess
import sys
from pathlib import Path

from project_files import project_files, report, skip

VERSION = "14"  # others lay out some code differently
root = Path(sys.argv[1])
program = shutil.which("clang-format-" + VERSION) or shutil.which("clang-format")
if program is None or f"version {VERSION}." not in subprocess.run(
        [program, "--version"], capture_output=True, text=True).stdout:
    skip(f"clang-format {VERSION} is not installed")


def findings(*words, text=None):
    """The places, each once, that clang-format would change."""
    told = subprocess.run([program, "--dry-run", "-Werror", *words], cwd=root, input=text, text=True,
                          capture_output=True).stderr
    return sorted(set(re.findall(r"(\S+:\d+):\d+: error", told)))


files = [path for path in project_files(root) if path.suffix in (".cpp", ".h")]
messages = [f"{place}: not formatted, see clang-format -i" for place in findings(*files)]
if findings(text="int x;\n") or not findings("--assume-filename=x.cpp", text="int  x ;\n"):
    messages.append("clang-format does not tell formatted from unformatted code")
report(messages, len(files))
