#!/usr/bin/python3
"""Names of every kind.

Sources are named on the command line, found in folders and listed in a file. Each comes out under the
name that is expected of it or is told on standard error by name; no other file is read or written, the
exit code says whether all went well, and the log gives the names back.
"""

import os
import re
import subprocess
import unicodedata

from trust import Scene, finish, picture, read_log

LONG = b"n" * 240
NAMES = [name if isinstance(name, bytes) else name.encode() for name in (
    "two  blanks .tif", " .tif", "blank.tif ", "quote'\".tif", "back\\slash\\.tif", "new\nline.tif", "tab\t.tif",
    "cr\r.tif", "\x01\x1b[2J\x1b]0;title\x07\x7f.tif", "\x85\x9b31m.tif",
    b"bad\xff.tif", b"\xff", b"latin-\xe9.tif", b"cut-\xf0\x9f\x93.tif", b"surrogate-\xed\xa0\x80.tif",
    b"overlong-\xc0\xaf.tif", "\ufffd.tif", "\ufeff.tif", "\ufffe\uffff.tif", "\ufdd0.tif", "\U0010ffff.tif",
    "עברית שלום.tif", "\u202efit.tif", "\u2028.tif", "\U0001f4c4.tif", "Case.tif", "case.tif",
    unicodedata.normalize("NFC", "é.tif"), unicodedata.normalize("NFD", "é.tif"),
    "%s%d%n%1%2.tif", "$(touch x).tif", "`touch x`;touch x&.tif", "-o.tif", "--format=gif.tif", "-", "--",
    ".tif", "a.tif.", "..tif", "...", "a.b.TIFF", "none", "x%20y.tif", "x#y.tif", "x?y.tif", "file:x.tif",
    "~.tif", "*.tif", "[a].tif", "{a,b}.tif", "&lt;<>&\"'.tif", "]]>.tif", "<!--.tif",
    LONG + b"o" * 10 + b".tif", LONG + b"p" * 11 + b".tif")]
SEVERAL = 10  # pages; the last one's name is a byte longer


def pages_of(name):
    return SEVERAL if name.startswith(LONG) else 1


def is_text(name):
    return name.decode(errors="ignore").encode() == name


def shown(name):
    """As messages show it: nothing in it can drive a terminal."""
    return "".join("?" if unicodedata.category(sign) == "Cc" else sign for sign in name.decode(errors="replace"))


def target(name, page):
    stem = name[:name.rindex(b".")] if b"." in name[1:] else name
    return stem.replace(b":", b"-") + b"%d.png" % page


def is_found(name):
    """Whether a folder's listing takes it."""
    return name.endswith((b".tif", b".TIF", b".tiff", b".TIFF")) and not name.startswith(b".")


def plain(text):
    """However many replacement signs stand for one broken sequence."""
    return re.sub("\ufffd+", "\ufffd", text)


def in_xml(text):
    """What XML 1.0 can hold of it."""
    return re.sub("[\0-\x08\x0b\x0c\x0e-\x1f\ud800-\udfff\ufffe\uffff]", "\ufffd", text)


def check_way(way, names, words):
    with Scene(f"names {way}") as scene:
        pictures = {name: [picture(i + 7 * page, 19, 13) for page in range(pages_of(name))]
                    for i, name in enumerate(NAMES)}
        for name, pages in pictures.items():
            scene.make(b"in/" + name, pages)
        scene.path("list").write_bytes(b"\n".join(name for name in NAMES if b"\n" not in name))
        scene.run("-f", "png", *words, cwd="in")
        texts, outputs = [name for name in names if is_text(name)], {}
        told = {f"{shown(name)}: " for name in names if not is_text(name)}
        for name in texts:
            for i, page in enumerate(pictures[name], 1):
                if len(target(name, i)) <= 255:
                    outputs[target(name, i)] = [[page]]
                else:
                    told.add(f"{shown(name)}[{i}]: ")
        scene.check_outputs(outputs)
        lines = {line.removeprefix("pagestack-convert: ./").removeprefix("pagestack-convert: ")
                 for line in scene.errors.split("\n") if line}
        kinds = {next((start for start in told if plain(line).startswith(plain(start))), line) for line in lines}
        scene.check(kinds == told and scene.code == 1, f"told without need or not told: {kinds ^ told}")
        log = read_log(scene.path("home/log"))
        scene.check(sorted(source["FileName"] for source, _ in log) == sorted(in_xml(name.decode()) for name in texts),
                    "other sources in the log")
        made = {page["NewFileName"] for _, pages in log for page in pages if page["Status"] == "Completed"}
        scene.check(made == {in_xml(name) for name in os.listdir("out")}, "other outputs in the log")
        scene.check(sorted(os.listdir(b"in")) == sorted(NAMES), "a file was made or lost")


def every_way():
    check_way("on the command line", NAMES, ["--", *NAMES])
    check_way("found in a folder", [name for name in NAMES if is_found(name)], ["-r", "."])
    check_way("in a list", [name for name in NAMES if b"\n" not in name], ["--files-from", "../list"])


# Names, and those of other files that they turn into where text is decoded or cleaned.
TAKEN_FOR = {
    b"bad\xff": "bad\ufffd".encode(),
    "\ufdd0n".encode(): "\ufffd\ufffd\ufffdn".encode(),
    "\ufeffn".encode(): b"n",
}


def never_another_file(odd, other):
    """Each is converted, or told; what only the other stands for is never touched in its place."""
    ways = {"named": ("in", [odd + b".tif"]), "found": ("in", ["-r", "."]),
            "below its folder": ("in", [odd + b"/x.tif"]), "in its folder": (b"in/" + odd, ["x.tif"])}
    for way, (place, words) in ways.items():
        with Scene(f"{odd} beside {other}, {way}") as scene:
            for seed, name in enumerate((odd, other)):
                os.mkdir(b"in/" + name)
                scene.make(b"in/" + name + (b"/x.tif" if "folder" in way else b".tif"), [picture(seed)])
            scene.run("-f", "png", *words, cwd=place)
            wanted = {other + b"1.png": [[picture(1)]]} if way == "found" else {}
            if scene.code == 0:
                wanted[b"x1.png" if "folder" in way else odd + b"1.png"] = [[picture(0)]]
            told = plain(shown(odd)) in plain(scene.errors) or "x.tif: " in scene.errors
            scene.check(told or scene.code == 0, "it is not told")
            scene.check_outputs(wanted)
    for option in ("-o", "--log", "--files-from"):
        with Scene(f"{odd} beside {other}, {option}", {"in/a.tif": 1}) as scene:
            if option == "--files-from":
                scene.path(other).write_bytes(b"in/a.tif\n")
            before = set(os.listdir(b"."))
            scene.run("-f", "png", *["in/a.tif"] * (option != "--files-from"), option, odd)
            made = set(os.listdir(b".")) - before
            scene.check(made == {odd} if scene.code == 0 else not made, f"made {made}")


def folders_keep_their_names():
    """Folders that are mirrored come out under their own names, and nowhere outside of the output folder."""
    folders = [name for name in NAMES if is_text(name) and name[:1] != b"."]
    with Scene("mirrored") as scene:
        for seed, name in enumerate(folders):
            os.mkdir(b"in/" + name)
            scene.make(b"in/" + name + b"/x.tif", [picture(seed)])
        scene.run("-f", "png", "-r", "--mirror", ".", cwd="in")
        scene.check(set(os.listdir(b"out")) == set(folders) and scene.code == 0, f"other folders; {scene.errors}")
        for seed, name in enumerate(folders):
            scene.check_outputs({b"x1.png": [[picture(seed)]]}, folder=f"out/{os.fsdecode(name)}")
    with Scene("mirrored into a link", {"in/a.tif": 1}) as scene:
        os.mkdir("in/sub")
        scene.make("in/sub/b.tif", [picture(5)])
        os.symlink("../tmp", "out/sub")
        scene.run("-f", "png", "-r", "--mirror", ".", cwd="in")
        scene.check(scene.code == 4 and "leads out of the output folder" in scene.errors, "it is not refused")
        scene.check(os.listdir("tmp") == [] and os.listdir("out") == ["sub"], "something was written")


def nothing_drives_the_terminal():
    """Names of sources, folders and lists, in results, troubles and the usage's message."""
    wild = "\x1b[2J\x07\x9b5m\x08\rx\n"
    with Scene("terminal") as scene:
        scene.make(f"in/{wild}.tif", [picture(1)])
        scene.path(f"in/{wild}broken.tif").write_bytes(b"none")
        for words in (["-v", "-r", "in", f"{wild}missing", "--progress", "always"], ["in", "-o", f"{wild}/{wild}"],
                      [f"--{wild}"], [f"-{wild}"], ["in", "-f", wild], ["in", "--quality", wild],
                      ["--files-from", wild], ["in", "--on-exists", "overwrite", "--log", f"{wild}/x"]):
            scene.run(*words, stdout=subprocess.PIPE)
            text = scene.output + scene.errors
            found = {sign for sign in text if unicodedata.category(sign) == "Cc"}
            scene.check(len(text) > 10 and found == {"\n"}, f"{words[:2]} let {found} through")


if __name__ == "__main__":
    every_way()
    for odd_name, other_name in TAKEN_FOR.items():
        never_another_file(odd_name, other_name)
    folders_keep_their_names()
    nothing_drives_the_terminal()
    finish("names")
