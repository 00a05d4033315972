"""Which files are the project's own; the lint tests share this."""
import subprocess
import sys
from pathlib import Path


def project_files(root):
    """Paths relative to `root`: what git tracks or could track, or all but build output without git."""
    try:
        listed = subprocess.run(
            ["git", "-C", str(root), "ls-files", "-co", "--exclude-standard", "-z", "."],
            check=True, capture_output=True).stdout.decode().split("\0")
        found = [Path(name) for name in listed if name]
    except (OSError, subprocess.CalledProcessError):
        found = [path.relative_to(root) for path in root.rglob("*")
                 if not {".git", ".cache", "__pycache__", "build"} & set(path.relative_to(root).parts)]
    # A tracked file may have been deleted in the work tree.
    return sorted(path for path in found if (root / path).is_file())


def text_of(path):
    """The text of a file, or None where it is none."""
    try:
        return path.read_text(encoding="utf-8")
    except UnicodeDecodeError:
        return None


def report(findings, checked):
    """Prints the findings and ends the program; having checked nothing is a failure too."""
    for finding in findings:
        print(finding)
    if not checked:
        print("nothing was checked")
    sys.exit(1 if findings or not checked else 0)


def skip(why):
    print(f"skipped: {why}")
    sys.exit(77)
