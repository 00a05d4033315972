"""The tools that do the same work, and how each is asked for it.

A peer is asked in stages; the commands of a stage may run side by side. All are asked for the same: every
page, JPEG of quality 90 with 4:2:0, the resolution kept, two threads where there is a choice. Compression
levels of PNG are each tool's own default: look at the sizes as well.
"""
import os
import shutil
import subprocess
from pathlib import Path

KEPT_FORMATS = {"tiff_none": "none", "tiff_g4": "g4", "tiff_lzw": "lzw"}
EXTENSIONS = {"jpeg": "jpg", "png": "png", "split": "tif", "bmp": "bmp", "gif": "gif"}


def _version(command):
    try:
        done = subprocess.run(command, capture_output=True, text=True, timeout=20, check=False)
    except (OSError, subprocess.TimeoutExpired):
        return ""
    return (done.stdout or done.stderr).strip().split("\n")[0]


class Peer:
    name = ""
    environment = {}

    def __init__(self, version):
        self.version = version

    def stages(self, source, pages, format_, out):
        """Lists of commands, or None when the tool cannot do this."""
        raise NotImplementedError


class Pagestack(Peer):
    name = "pagestack"

    def __init__(self, program):
        super().__init__(_version([program, "--version"]))
        self.program = program

    def stages(self, source, pages, format_, out):
        options = ["-f", "tiff", "--compression", KEPT_FORMATS.get(format_, "none")]
        if format_ == "split":
            options += ["--split", "--separator", "_"]
        elif format_ not in KEPT_FORMATS:
            options = ["-f", format_, "--separator", "_"]
        if format_ == "jpeg":
            options += ["--quality", "9"]
        return [[[self.program, *options, "-o", out, "--on-exists", "overwrite", "--no-log", "-q", source]]]


class ImageMagick(Peer):
    name = "imagemagick"

    def __init__(self, tool, version, scratch):
        super().__init__(version)
        self.tool = tool
        # Debian's policy gives it 256 MB and then the disk: that would measure the policy.
        (Path(scratch) / "policy.xml").write_text(
            '<policymap><policy domain="resource" name="memory" value="8GiB"/>'
            '<policy domain="resource" name="map" value="8GiB"/>'
            '<policy domain="resource" name="area" value="8GP"/></policymap>', encoding="ascii")
        self.environment = {"MAGICK_CONFIGURE_PATH": str(scratch), "MAGICK_THREAD_LIMIT": "2",
                            "OMP_NUM_THREADS": "2"}

    def stages(self, source, pages, format_, out):
        if format_ in KEPT_FORMATS:
            kind = {"none": "None", "g4": "Group4", "lzw": "LZW"}[KEPT_FORMATS[format_]]
            return [[[self.tool, source, "-compress", kind, f"{out}/kept.tif"]]]
        options = {"jpeg": ["-quality", "90", "-sampling-factor", "4:2:0"],
                   "split": ["-compress", "None"]}.get(format_, [])
        prefix = "BMP3:" if format_ == "bmp" else ""
        target = f"{prefix}{out}/page_%d.{EXTENSIONS[format_]}"
        return [[[self.tool, source, *options, "+adjoin", target]]]


class GraphicsMagick(Peer):
    name = "graphicsmagick"
    environment = {"OMP_NUM_THREADS": "2", "MAGICK_LIMIT_MEMORY": "8GB", "MAGICK_LIMIT_PIXELS": "8GP"}

    def stages(self, source, pages, format_, out):
        if format_ in KEPT_FORMATS:
            kind = {"none": "None", "g4": "Group4", "lzw": "LZW"}[KEPT_FORMATS[format_]]
            return [[["gm", "convert", source, "-compress", kind, f"{out}/kept.tif"]]]
        options = {"jpeg": ["-quality", "90", "-sampling-factor", "2x2,1x1,1x1"],
                   "split": ["-compress", "None"]}.get(format_, [])
        return [[["gm", "convert", source, *options, "+adjoin",
                  f"{out}/page_%d.{EXTENSIONS[format_]}"]]]


class Vips(Peer):
    """One command a page, two of them side by side."""

    name = "vips"
    environment = {"VIPS_CONCURRENCY": "1"}

    def stages(self, source, pages, format_, out):
        fax = Path(source).name.startswith("fax")
        if format_ in KEPT_FORMATS:
            kind = {"none": "none", "g4": "ccittfax4", "lzw": "lzw,predictor=none"}[KEPT_FORMATS[format_]]
            bits = ",bitdepth=1" if fax else ""
            return [[["vips", "copy", f"{source}[n=-1]", f"{out}/kept.tif[compression={kind}{bits}]"]]]
        options = {"jpeg": "[Q=90,subsample-mode=on]", "split": "[bitdepth=1]" if fax else "",
                   "png": "[bitdepth=1]" if fax else ""}.get(format_, "")
        return [[["vips", "copy", f"{source}[page={page}]",
                  f"{out}/page_{page}.{EXTENSIONS[format_]}{options}"] for page in range(pages)]]


class Libtiff(Peer):
    name = "tiffcp"

    def stages(self, source, pages, format_, out):
        if format_ in KEPT_FORMATS:
            return [[["tiffcp", "-c", KEPT_FORMATS[format_], source, f"{out}/kept.tif"]]]
        if format_ == "split":
            return [[["tiffcp", "-c", "none", f"{source},{page}", f"{out}/page_{page}.tif"]
                     for page in range(pages)]]
        return None


class Tiffsplit(Peer):
    """Copies pages as they are: the same work only where the source is not compressed."""

    name = "tiffsplit"

    def stages(self, source, pages, format_, out):
        if format_ == "split" and Path(source).name == "photo.tif":
            return [[["tiffsplit", source, f"{out}/page_"]]]
        return None


def find_peers(scratch):
    """The peers that are installed, and the names of those that are not."""
    found, absent = [], []
    magick = next((tool for tool in ("magick", "convert-im6.q16", "convert-im6", "convert")
                   if shutil.which(tool) and "ImageMagick" in _version([tool, "--version"])), None)
    if magick:
        found.append(ImageMagick(magick, _version([magick, "--version"]), scratch))
    else:
        absent.append("imagemagick")
    others = ((GraphicsMagick, "gm", ["gm", "version"]), (Vips, "vips", ["vips", "--version"]),
              (Libtiff, "tiffcp", ["dpkg-query", "-W", "-f", "${Version}", "libtiff-tools"]),
              (Tiffsplit, "tiffsplit", ["dpkg-query", "-W", "-f", "${Version}", "libtiff-tools"]))
    for kind, tool, asking in others:
        if shutil.which(tool):
            found.append(kind(_version(asking) or os.path.realpath(shutil.which(tool))))
        else:
            absent.append(kind.name)
    return found, absent
