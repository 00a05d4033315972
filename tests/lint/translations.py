#!/usr/bin/env python3
"""Every text of the window is translated, with its places for values: translations.py ROOT LUPDATE"""

import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree
from pathlib import Path

from project_files import report, skip

PLACE = re.compile(r"%L?[1-9n]")


def whole_text(element):
    """Also the control characters, which stand in elements of their own."""
    return (element.text or "") + "".join(
        chr(int(child.get("value")[1:], 16)) + (child.tail or "") for child in element)


def faults(message):
    source, translation = whole_text(message.find("source")), message.find("translation")
    forms = [form.text or "" for form in translation.findall("numerusform")] or [whole_text(translation)]
    if translation.get("type") == "unfinished":
        yield "is not translated"
    for form in forms:
        lost = set(PLACE.findall(source)) ^ set(PLACE.findall(form))
        # "One file" may do without its number.
        if lost - ({"%n"} if len(forms) > 1 else set()):
            yield f"has other places for values in '{form}'"
        if source.replace("&&", "").count("&") != form.replace("&&", "").count("&"):
            yield f"has no key, or one more, in '{form}'"


def messages(root, lupdate):
    """(file, message) of each text, as the sources have them."""
    with tempfile.TemporaryDirectory() as folder:
        for path in sorted((root / "resources/translations").glob("*.ts")):
            copy = Path(folder) / path.name
            copy.write_bytes(path.read_bytes())
            subprocess.run([lupdate, "-silent", "-no-obsolete", "-locations", "none", "-I", root,
                            *(["-pluralonly"] if path.stem.endswith("_en") else []),
                            "engine", "filelist", "mainwindow", "resources", "-ts", copy],
                           cwd=root, check=True)
            for message in ElementTree.parse(copy).iter("message"):
                yield path.name, message


if __name__ == "__main__":
    if len(sys.argv) < 3 or not Path(sys.argv[2]).exists():
        skip("there is no lupdate")
    found = list(messages(Path(sys.argv[1]), sys.argv[2]))
    report([f"{name}: '{whole_text(message.find('source'))}' {fault}"
            for name, message in found for fault in faults(message)], len(found))
