#!/usr/bin/env python3
"""The repository speaks of the project alone: wording.py ROOT"""

import re
import sys
from pathlib import Path

from project_files import project_files, report, text_of

# Written so that no pattern matches its own line.
UNWANTED = {
    r"\bParts? [0-9]+[.][0-9]": "numbers a part of a document that is not in the repository",
    r"\bspec[.]md\b": "names a document that is not in the repository",
    r"(?<![\w.~$}])/(?:work|roo[t])/": "names a folder of one particular machine",
    r"\b(?:deb[.]debian|pypi|npmjs)[.](?:org|com)\b": "names the host of a package registry",
}


def findings(name, text):
    for number, line in enumerate(text.splitlines(), 1):
        for pattern, reason in UNWANTED.items():
            match = re.search(pattern, line)
            if match:
                yield f"{name}:{number}: '{match[0]}' {reason}"


def selftest():
    """Each pattern finds what it is for and leaves its neighbours alone."""
    bad = ["see Part" + " 1.2", "spec" + ".md", '"' + "/work" + '/x"', "/roo" + "t/.x",
           "https://pypi" + ".org/x"]
    good = ["Part one", "Party 1.2", "a/workshop/b", "$root/build/", "specimen.md"]
    return [f"missed: {text}" for text in bad if not list(findings("", text))] + [
        f"found in good text: {text}" for text in good if list(findings("", text))]


if __name__ == "__main__":
    root = Path(sys.argv[1])
    messages, checked = selftest(), 0
    for path in project_files(root):
        text = text_of(root / path)
        if text is not None:
            checked += 1
            messages += findings(path, text)
    report(messages, checked)
