"""The corpus's table of what is in each page, and the list of differences that are understood."""
import csv
import fnmatch
from pathlib import Path

LOSSY_CODECS = ("jpeg", "ojpeg", "webp", "jpeg2000", "jp2000", "34892", "33003", "33005")


class ExpectedPage:
    """One row of EXPECTED.tsv."""

    def __init__(self, row):
        self._row = row
        self.number, self.width, self.height, self.bits, self.samples = (
            int(row[name]) if row[name].isdigit() else 0 for name in ("page", "width", "height", "bits", "samples"))
        self.orientation = int(row["orientation"]) if row["orientation"] in list("12345678") else 1
        self.pixels, self.form, self.alpha = row["pixels"], row["form"], row["alpha"]
        self.photometric, self.compression = row["photometric"], row["compression"]
        self.sample_format = row["sampleformat"]
        self.is_lossy = self.compression in LOSSY_CODECS

    @property
    def resolution(self):
        """(x, y, unit), or None when the page does not say."""
        try:
            return float(self._row["xres"]), float(self._row["yres"]), self._row["unit"]
        except ValueError:
            return None


class ExpectedFile:
    def __init__(self, path, rows):
        self.path = path
        self.verdict = rows[0]["verdict"]
        self.pages = [ExpectedPage(row) for row in rows if row["page"] != "0"]
        self.page_total = int(rows[0]["pages"]) if rows[0]["pages"].isdigit() else 0

    @property
    def stem(self):
        return Path(self.path).stem


def read_expected(corpus):
    """Every file of the table in its order."""
    groups = {}
    with open(Path(corpus) / "EXPECTED.tsv", encoding="utf-8", newline="") as table:
        for row in csv.DictReader(table, delimiter="\t", quoting=csv.QUOTE_NONE):
            groups.setdefault(row["path"], []).append(row)
    return [ExpectedFile(path, rows) for path, rows in groups.items()]


class Difference:
    """One thing that is not as it should be. `page` is 0 for the file as a whole; `what` is a
    short key (pixels, size, resolution, icc, depth, missing ...), `text` says it in full."""

    def __init__(self, file, page, format_, what, text):
        self.file, self.page, self.format, self.what, self.text = file, page, format_, what, text

    def __str__(self):
        place = f"{self.file}[{self.page}]" if self.page else self.file
        return f"{place} {self.format} {self.what}: {self.text}"


class KnownDifference:
    """A line of known-differences.tsv: file, page, format, what, reason. `*` stands for any."""

    def __init__(self, fields, line):
        self.file, self.page, self.format, self.what, self.reason = fields
        self.line, self.used = line, False

    def covers(self, difference):
        return (fnmatch.fnmatchcase(difference.file, self.file) and self.page in ("*", str(difference.page))
                and fnmatch.fnmatchcase(difference.format, self.format)
                and fnmatch.fnmatchcase(difference.what, self.what))

    def may_occur(self, files, formats):
        """Whether a run over these files and formats could have met it."""
        return (any(fnmatch.fnmatchcase(file, self.file) for file in files)
                and any(fnmatch.fnmatchcase(name, self.format) for name in formats))

    def __str__(self):
        return f"line {self.line}: {self.file} {self.page} {self.format} {self.what}"


def read_known_differences(path):
    known = []
    with open(path, encoding="utf-8") as lines:
        for number, line in enumerate(lines, 1):
            if not line.strip() or line.startswith("#"):
                continue
            fields = line.rstrip("\n").split("\t")
            if len(fields) != 5 or not fields[4].strip():
                raise ValueError(f"{path}, line {number}: five fields are wanted, a reason last")
            known.append(KnownDifference(fields, number))
    return known
