#!/usr/bin/python3
"""The world changes under a run of pagestack-convert.

Sources and folders vanish, change or turn out to be something else while a run is under way, targets
are no files. Whatever happens, the run ends by itself, no source is lost, a file with a final name is
complete, and what is missing was told with exit code 1.
"""

import os
import random
import shutil
import time
from pathlib import Path

from trust import Scene, expect, finish, frames, halt, picture, run, write_tiff

A, B, C = "in/a.tif", "in/b.tif", "in/c.tif"
NOBODY = 65534 if os.getuid() == 0 else None  # whom permissions bind
OTHER = [picture(200 + i) for i in range(5)]


def outputs_of(pages_of, form, extension=".png"):
    """What sources come out as: names of files, and what each has to hold."""
    if form == "tiff":
        return {f"{Path(source).stem}.tiff": [pages] for source, pages in pages_of.items()}
    return {f"{Path(source).stem}{i}{extension}": [[page]]
            for source, pages in pages_of.items() for i, page in enumerate(pages, 1)}


def run_and_halt(scene, sources, *words):
    """Starts a run over a long first source and `sources`, and halts it while it writes the first page."""
    for count, side in (6, 600), (24, 600), (96, 600), (12, 1800), (12, 1800), (6, 3600), (6, 3600):
        scene.make(A, [picture(i, side, side, noisy=True) for i in range(count)])
        scene.start(*(["--compression", "lzw"] if "tiff" in words else []), *words, A, *sources)
        while scene.process.poll() is None and not os.listdir("out"):
            time.sleep(0.0005)
        halt(scene.process)
        if scene.process.poll() is None and all(name.startswith(".") for name in os.listdir("out")):
            return
        scene.end()
        for name in os.listdir("out"):
            os.unlink(f"out/{name}")
    raise RuntimeError("no run could be halted in time")


# Sources that change between the count of their pages and their turn.


def replaced_by(make, *arguments):
    os.unlink(B)
    make(B, *arguments)


# What is done to the source of three pages, and which pages come out of it: `n` of its own (a number)
# or those that replace them.
SOURCE_CHANGES = {
    "deleted": (lambda: os.unlink(B), 0),
    "emptied": (lambda: os.truncate(B, 0), 0),
    "cut in its header": (lambda: os.truncate(B, 6), 0),
    "cut in its second page": (lambda: os.truncate(B, os.stat(B).st_size // 2), 1),
    "made a text": (lambda: Path(B).write_text("no picture" * 1000, encoding="ascii"), 0),
    "replaced": (lambda: replaced_by(write_tiff, OTHER[:3]), OTHER[:3]),
    "given more pages": (lambda: replaced_by(write_tiff, OTHER), OTHER[:3]),
    "given fewer pages": (lambda: replaced_by(write_tiff, OTHER[:1]), OTHER[:1]),
    "made a folder": (lambda: replaced_by(os.mkdir), 0),
    "made a FIFO": (lambda: replaced_by(os.mkfifo), 0),
    "made a dangling link": (lambda: replaced_by(lambda path: os.symlink("nowhere", path)), 0),
    "made a link to a device": (lambda: replaced_by(lambda path: os.symlink("/dev/zero", path)), 0),
    "closed to readers": (lambda: os.chmod(B, 0), 0),
}


def source_changes(change, form, jobs):
    alter, left = SOURCE_CHANGES[change]
    with Scene(f"a source is {change}, {form}, --jobs {jobs}", user=NOBODY) as scene:
        scene.make(B, [picture(100 + i) for i in range(3)])
        scene.make(C, [picture(150)])
        run_and_halt(scene, (B, C), "-f", form, "--jobs", jobs)
        alter()
        scene.end()
        own = scene.pages[B]
        after = own[:left] if isinstance(left, int) else left
        versions = [after]
        if jobs != "1":  # a source that was opened ahead of its turn may still be read as it was
            versions.append(own)
            after = own if scene.code == 0 else after
        fails = len(after) < 3 or (change == "given more pages" and after is not own)
        scene.check(scene.code == fails, "another exit code")
        if fails:
            scene.check_told(B)
        wanted = outputs_of({A: scene.pages[A], C: scene.pages[C]}, form)
        if form != "tiff":
            wanted |= {f"b{i + 1}.png": [pages[i:i + 1] for pages in versions] for i in range(len(after))}
        elif after:
            wanted["b.tiff"] = versions
        if jobs != "1" and fails and isinstance(left, int):  # and so may its first pages, the others being told
            for pages in (own[:count] for count in range(left + 1, 3)):
                name, whole = ("b.tiff", pages) if form == "tiff" else (f"b{len(pages)}.png", pages[-1:])
                if Path("out", name).exists():
                    wanted.setdefault(name, []).append(whole)
        scene.check_outputs(wanted)


# The output folder goes while pages are written into it.


def folder_replaced(make):
    os.rename("out", "moved")
    make(Path("out"))


FOLDER_CHANGES = {
    "removed": lambda: shutil.rmtree("out"),
    "moved away": lambda: os.rename("out", "moved"),
    "made a dangling link": lambda: folder_replaced(lambda path: path.symlink_to("nowhere")),
    "made another folder": lambda: folder_replaced(Path.mkdir),
    "made read-only": lambda: os.chmod("out", 0o555),
}


def output_folder_changes(change, form, jobs):
    with Scene(f"the output folder is {change}, {form}, --jobs {jobs}", user=NOBODY) as scene:
        scene.make(B, [picture(100)])
        run_and_halt(scene, (B,), "-f", form, "--jobs", jobs)
        FOLDER_CHANGES[change]()
        scene.end()
        wanted = outputs_of(scene.pages, form)
        for source, pages in scene.pages.items():
            scene.check_pages(source, pages)
        # When an output folder of the same name is there again, the run may go on in it.
        missing = set(wanted)
        for folder in filter(os.path.isdir, ("out", "moved")):
            written = {name: wanted[name] for name in os.listdir(folder) if name in wanted}
            missing -= set(written)
            # What a folder keeps when it goes out of reach is cleared away by the next run into it.
            os.chmod(folder, 0o755)
            if scene.user is not None:
                os.chown(folder, scene.user, scene.user)
            late = run(["-o", folder, "-f", "gif", B], scene.path("home"))
            scene.check(late.returncode == 0, f"the next run fails: {late.stderr}")
            os.unlink(f"{folder}/b1.gif")
            scene.check_outputs(written, folder)
        scene.check(scene.code == bool(missing), f"another exit code, {missing} are missing")
        for name in missing:
            place = f"in/{name[0]}.tif" + (f"[{name[1:-4]}]" if form == "png" else "")
            scene.check(f": {place}: " in scene.errors, f"{name} is missing and not told")


# What stands at the target of page 2, and may not be replaced by it.
TARGETS = {
    "a folder": os.mkdir,
    "a FIFO": os.mkfifo,
    "a link to itself": lambda target: os.symlink(os.path.basename(target), target),
    "a link to the source": lambda target: os.symlink("../in/a.tif", target),
    "links to the source": lambda target: (os.symlink("in", "x"), os.symlink("../x/a.tif", target)),
    "a hard link of the source": lambda target: os.link(A, target),
}


def odd_target(what, is_split, jobs):
    with Scene(f"a target is {what}, {'split' if is_split else 'together'}", {A: 3, B: 2}) as scene:
        wanted = outputs_of(scene.pages, "split" if is_split else "tiff", ".tiff")
        target = "out/a2.tiff" if is_split else "out/a.tiff"
        TARGETS[what](target)
        before = os.lstat(target)[:7]
        scene.run("-f", "tiff", "--jobs", jobs, *["--split"] * is_split, "--on-exists", "overwrite", A, B)
        scene.check_pages(A, scene.pages[A])
        if scene.code == 0:  # all pages together may replace their source: none is lost
            scene.check("source" in what and not is_split, "it was taken")
        else:
            scene.check(os.lstat(target)[:7] == before, "what was there was touched")
            scene.check_told(f"{A}[2]" if is_split else A)
            os.rename(target, "old")
            del wanted[os.path.basename(target)]
        scene.check_outputs(wanted)


# A source that is cut while it is read: reading a mapping of it would end the program.


def cut_while_read(form, moments, **how):
    """At random moments of what an undisturbed run takes."""
    pages = [picture(i, 4300, 4000 if how else 1200, noisy=True) for i in range(1 if how else 3)]
    rng = random.Random(form)
    seconds = hits = 0
    for moment in range(moments + 1):
        with Scene(f"cut while read, {form}, {moment}") as scene:
            scene.make(A, pages, **how)
            began = time.monotonic()
            scene.start("-f", form, "--jobs", str(1 + moment % 2), A)
            if moment > 0:
                time.sleep(rng.uniform(0.1, 0.8) * seconds)
                os.truncate(A, rng.choice((0, 4096, rng.randrange(os.stat(A).st_size))))
            scene.end()
            seconds = seconds or time.monotonic() - began
            hits += scene.code == 1
            there = os.listdir("out")
            scene.check(all(name.startswith("a") for name in there), f"it left {there}")
            if scene.code == 0:
                scene.check(len(there) == 1, f"exit 0 and {there}")
            else:
                scene.check(moment > 0, "a whole source fails")
                scene.check_told(A)
            for name in there:
                # The pages that could be read before the cut are there, whole; exit 0 means all.
                count = len(pages) if scene.code == 0 else len(frames(f"out/{name}"))
                scene.check_pages(f"out/{name}", pages[:count])
    print(f"cut while read, {form}: {hits} of {moments} cuts were met, a run takes {seconds:.2f} s")
    return hits


if __name__ == "__main__":
    for form, jobs in (("png", "3"), ("tiff", "1")):
        for name in SOURCE_CHANGES:
            source_changes(name, form, jobs)
        for name in FOLDER_CHANGES:
            output_folder_changes(name, form, jobs)
    for name in TARGETS:
        odd_target(name, is_split=True, jobs="3")
        odd_target(name, is_split=False, jobs="1")
    met = cut_while_read("tiff", 40) + cut_while_read("bmp", 15, deflated=True)
    expect(met > 10, f"only {met} cuts met the reading")
    finish("changes of the world")
