#!/usr/bin/python3
"""Judges by exiftool whether what pages say of themselves arrives in JPEG, PNG and TIFF files.

check_metadata.py --bin PROGRAM [--corpus DIR]: converts files with every kind of metadata, or those of a
folder, and compares the values of source and output. What is missing must be told on standard error.
"""
import argparse
import json
import re
import shutil
import struct
import subprocess
import sys
import tempfile
from collections import Counter
from pathlib import Path

FORMATS = ("jpeg", "png", "tiff")
# Tags of a page's directory that go along, as exiftool calls them, and what PNG calls them besides.
TAGS = {"DocumentName": "Title", "ImageDescription": "Description", "Artist": "Author", "Copyright": "Copyright",
        "ModifyDate": "CreationTime", "Software": "Software"}
TAGS |= dict.fromkeys("Make Model PageName HostComputer PageNumber XPosition YPosition WhitePoint TargetPrinter "
                      "PrimaryChromaticities Rating XPTitle CleanFaxData".split(), "")
TIFF_TAGS = "PixelScale ModelTiePoint ModelTransform GDALMetadata GDALNoData InkNames NumberofInks".split()
GROUPS = re.compile(r"ExifIFD|InteropIFD|GPS|IPTC|GeoTiff|Photoshop|XMP-|Nikon")
# What is made anew, since it depends on the pixels or repeats them; colours of pixels that became sRGB.
CHANGED = re.compile(r"ExifIFD:ExifImage(Width|Height)$|XMP-tiff:Orientation$|Photoshop:(Photoshop(BGR)?Thumbnail"
                     r"|[XY]Resolution|DisplayedUnits[XY])$|IFD.*:(WhitePoint|PrimaryChromaticities)$"
                     r"|tiff IFD.*:PageNumber$")
EVERYTHING = """-IFD0:ImageDescription=Grüße -IFD0:Artist=A -IFD0:Copyright=C -Make=NIKON -Model=N -Software=S
 -HostComputer=H -ModifyDate=2024:05:01~12:34:56 -DocumentName=D -PageName=P -XPTitle=X -UserComment=hello
 -DateTimeOriginal=2023:04:01~01:02:03 -ISO=400 -ExposureTime=1/250 -ExifImageWidth=47 -ExifImageHeight=33
 -InteropIndex=R98 -GPSLatitude=50.5 -GPSLatitudeRef=S -XMP-dc:Title=Tï -XMP-tiff:Orientation#=6 -IPTC:City=Bonn
 -IPTC:Keywords=k1 -IPTC:Keywords=k2 -IFD0:PageNumber=2~5"""
# Name, words for exiftool ("~" is a space), names that all three formats must have.
MADE = [
    ("turned", EVERYTHING + " -Orientation#=6", ["ExifIFD:UserComment", "GPS:GPSLatitude", "XMP-dc:Title", "IPTC:City"]),
    ("big-endian", EVERYTHING, ["ExifIFD:ISO", "InteropIFD:InteropIndex", "IFD0:XPTitle"]),
    ("blocks", "-Photoshop:URL=http://x -Photoshop:IPTCDigest=new -IPTC:City=Köln", ["Photoshop:URL", "IPTC:City"]),
    ("long-xmp", "-XMP-dc:Description=" + "long~" * 30000, ["XMP-dc:Description"]),
    ("long-iptc", " ".join(f"-IPTC:Keywords={n:060}" for n in range(1500)), ["IPTC:Keywords"]),
    ("long-exif", "-Artist=A -UserComment=" + "c" * 70000, ["IFD0:Artist"]),
    ("place", "-GeoTiffDirectory=1~1~0~1~1024~0~1~2 -PixelScale=1~2~0 -GDALMetadata=<x/>", []),
]
checks, failures, counts = 0, 0, Counter()


def expect(holds, what):
    global checks, failures
    checks, failures = checks + 1, failures + (not holds)
    if not holds:
        print(f"FAILED: {what}")


def read(folder):
    """Path: {group:tag: value} of all files below."""
    words = "-q -q -r -G1 -a -s -n -json -charset exif=utf8 -ext *".split()
    done = subprocess.run(["exiftool", *words, folder], stdout=subprocess.PIPE)
    return {Path(values.pop("SourceFile")): values for values in json.loads(done.stdout or b"[]")}


def wanted(values, page, kind):
    """Name in the source, name in the output and value of all that the page's output has to say."""
    is_multi = any(name.startswith("IFD1:") for name in values)
    for name, value in values.items():
        group, tag = name.split(":", 1)
        if group == f"IFD{page - 1}" and (tag in TAGS or (kind == "tiff" and tag in TIFF_TAGS)):
            yield name, f"IFD0:{tag}", value
            if kind == "png" and TAGS[tag] and str(value).strip():
                yield name, f"PNG:{TAGS[tag]}", value
        elif GROUPS.match(group) and not is_multi:
            yield name, name, value


def says(got, value):
    """Whether a text of PNG, where a tag's texts stand in lines, is the value: its first text, all, or numbers."""
    got, value = got.replace("\n", ""), value.replace("\n", "")
    return got.startswith(value) or re.fullmatch(r"(\d+ ){9,}\d+", value)


def compare(source, values, kind, outputs, told):
    for page, output in outputs.items():
        for name, there, value in wanted(values, page, kind):
            got, value = str(output.get(there)).strip(), str(value).strip()
            fate = ("equal" if got == value or (there.startswith("PNG:") and says(got, value)) else
                    "made anew" if CHANGED.search(f"{kind} {name}") else "told" if told else "lost")
            counts[kind, fate] += 1
            counts[kind, f"told: {name.split(':')[0]}"] += fate == "told"
            expect(fate != "lost", f"{source}, page {page}, {kind}: {there} is {got:.60}, not {value:.60}")


def convert(program, kind, source, target, *words):
    target.mkdir(parents=True)
    return subprocess.run([program, "-q", "-f", kind, "-o", target, *words, source], stderr=subprocess.PIPE,
                          encoding="utf-8", errors="replace")


def judge(sources, out, program):
    """Converts all files below `sources`; what was read of those that were written, by format and name."""
    said, written = read(sources), {}
    for kind in FORMATS:
        runs = {out / kind / str(number): path for number, path in enumerate(sorted(said))}
        ended = {target: convert(program, kind, path, target) for target, path in runs.items()}
        made = read(out / kind)
        for target, path in runs.items():
            outputs = {1 if kind == "tiff" else int(re.search(r"(\d+)$", file.stem)[1]): values
                       for file, values in made.items() if file.parent == target}
            is_told = ended[target].returncode != 0 or "left out" in ended[target].stderr
            compare(path, said[path], kind, outputs, is_told)
            written[kind, path.stem] = outputs.get(1, {}), ended[target].stderr
    return written


def make(folder, program):
    """A gray page of 47 x 33 pixels for each row of MADE, written without any metadata first."""
    for name, words, _ in MADE:
        order, path = ">" if name == "big-endian" else "<", folder / f"{name}.tif"
        tags = {256: 47, 257: 33, 258: 8, 259: 1, 262: 1, 273: 8, 277: 1, 278: 33, 279: 47 * 33}
        directory = b"".join(struct.pack(order + "HHII", tag, 4, 1, value) for tag, value in tags.items())
        file = struct.pack(order + "2sHI", b"MM" if order == ">" else b"II", 42, 8 + 47 * 33 + 1)
        path.write_bytes(file + bytes(47 * 33 + 1) + struct.pack(order + "H", len(tags)) + directory + bytes(4))
        lines = [word.replace("~", " ") for word in words.split()]
        (folder / "words").write_text("\n".join(lines), encoding="utf-8")
        subprocess.run(["exiftool", "-q", "-q", "-overwrite_original", "-@", folder / "words", path], check=True)
    (folder / "words").unlink()


def judge_made(folder, program):
    sources = folder / "in"
    sources.mkdir()
    make(sources, program)
    written = judge(sources, folder, program)
    for name, _, names in MADE:
        for kind in FORMATS:
            output, errors = written[kind, name]
            expect(set(names) <= set(output), f"{name}, {kind}: {set(names) - set(output)} are missing")
            is_told = (name, kind) in (("place", "jpeg"), ("place", "png"), ("long-exif", "jpeg"))
            expect(("left out" in errors) == is_told == bool(errors), f"{name}, {kind}: {errors}")
    for kind in ("jpeg", "png"):
        turned = written[kind, "turned"][0]
        for tag, value in {"ExifIFD:ExifImageWidth": 33, "IFD0:Orientation": 1, "XMP-tiff:Orientation": 1}.items():
            expect(turned.get(tag) == value, f"{kind}: {tag} is {turned.get(tag)}, not {value}")
    for kind in FORMATS:
        done = convert(program, kind, sources / "turned.tif", folder / "bare" / kind, "--strip-metadata")
        (values,) = read(folder / "bare" / kind).values()
        left = [there for _, there, _ in wanted(values, 1, kind)]
        expect(not (done.stderr or left), f"--strip-metadata, {kind}: {done.stderr} {left}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--bin", type=Path, required=True)
    parser.add_argument("--corpus", type=Path)
    options = parser.parse_args()
    if not shutil.which("exiftool"):
        print("skipped: exiftool is not installed")
        sys.exit(77)
    with tempfile.TemporaryDirectory(prefix="pagestack-metadata-") as name:
        if options.corpus:
            judge(options.corpus, Path(name), options.bin)
        else:
            judge_made(Path(name), options.bin)
    for kind in FORMATS:
        print(kind, {fate: count for (of, fate), count in sorted(counts.items()) if of == kind and count})
    print(f"{checks} checks, {failures} failed")
    sys.exit(1 if failures or not counts else 0)


if __name__ == "__main__":
    main()
