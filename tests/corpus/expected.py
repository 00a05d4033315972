"""The corpus's table of what is in each page, and the list of differences that are understood."""
import csv
import fnmatch
from pathlib import Path
from typing import NamedTuple

LOSSY_CODECS = ("jpeg", "ojpeg", "webp", "jpeg2000", "jp2000", "34892", "33003", "33005")


class ExpectedPage:
    """One row of EXPECTED.tsv."""

    def __init__(self, row):
        self.number, self.width, self.height, self.bits, self.samples = (
            int(row[name]) if row[name].isdigit() else 0
            for name in ("page", "width", "height", "bits", "samples"))
        self.orientation = int(row["orientation"]) if row["orientation"] in list("12345678") else 1
        self.pixels, self.form, self.alpha = row["pixels"], row["form"], row["alpha"]
        self.photometric, self.compression = row["photometric"], row["compression"]
        self.sample_format = row["sampleformat"]
        self.is_lossy = self.compression in LOSSY_CODECS
        is_known = "-" not in (row["xres"], row["yres"])
        self.resolution = (float(row["xres"]), float(row["yres"]), row["unit"]) if is_known else None


class ExpectedFile:
    def __init__(self, path, rows):
        self.path, self.stem, self.verdict = path, Path(path).stem, rows[0]["verdict"]
        self.pages = [ExpectedPage(row) for row in rows if row["page"] != "0"]
        self.page_total = int(rows[0]["pages"]) if rows[0]["pages"].isdigit() else 0


def read_expected(corpus):
    """Every file of the table in its order."""
    groups = {}
    with open(Path(corpus) / "EXPECTED.tsv", encoding="utf-8", newline="") as table:
        for row in csv.DictReader(table, delimiter="\t", quoting=csv.QUOTE_NONE):
            groups.setdefault(row["path"], []).append(row)
    return [ExpectedFile(path, rows) for path, rows in groups.items()]


class Difference(NamedTuple):
    """One thing that is not as it should be. `page` is 0 for the file as a whole; `what` is a
    short key (pixels, size, resolution, icc, depth, missing ...), `text` says it in full."""
    file: str
    page: int
    format: str
    what: str
    text: str

    def entry(self, known):
        """The pattern of known differences that covers it, if one does."""
        key = f"{self.file}\t{self.page}\t{self.format}\t{self.what}"
        return next((pattern for pattern in known if fnmatch.fnmatchcase(key, pattern)), None)


def read_known_differences(path):
    """The reasons by patterns of file, page, format and what."""
    lines = Path(path).read_text(encoding="utf-8").splitlines()
    known = dict(line.rsplit("\t", 1) for line in lines if line and not line.startswith("#"))
    if any(pattern.count("\t") != 3 or not reason for pattern, reason in known.items()):
        raise ValueError(f"{path}: five fields are wanted, a reason last")
    return known
