#!/usr/bin/env python3
"""Replaces each output on a disk that has room for one of them more, in a mount of its own.

Pages that are prepared ahead must leave the page whose turn it is the room that one thread would have. Where the outputs do not fit,
that is told before the first of them, if their size is known.
"""

import os
import shutil
import subprocess
import sys

from trust import CONVERSIONS, Ground, digests, expect, finish, run, skip, troubles


def resize(disk, size):
    subprocess.run(["mount", "-o", f"remount,size={size}", disk], check=True)


def main():
    inside = ["unshare", "--mount", sys.executable, "-B", __file__, "inside"]
    if "inside" not in sys.argv:
        if os.geteuid() != 0 or not shutil.which("unshare") or subprocess.run(
                ["unshare", "--mount", "mount", "-t", "tmpfs", "none", "/mnt"], capture_output=True).returncode:
            skip("a small disk cannot be mounted here")
        os.execvp(inside[0], inside)
    ground = Ground(3, 260)
    disk = ground.folder / "disk"
    disk.mkdir()
    subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64m", "none", disk], check=True)
    ground.output = disk / "out"
    for name in CONVERSIONS:
        words, _ = ground.prepare(name)
        run(words, ground.home)
        state = os.statvfs(disk)
        used = (state.f_blocks - state.f_bfree) * state.f_frsize
        largest = max(path.stat().st_size for path in ground.output.iterdir())
        resize(disk, (used + largest) // state.f_frsize * state.f_frsize + 5 * state.f_frsize)
        for jobs in "188":
            done = run([*words, "--jobs", jobs], ground.home)
            expect(done.returncode == 0 and not troubles(done), f"{name}, jobs {jobs}: {done.stderr}")
            expect(digests(ground.output) == ground.written[name], f"{name}, jobs {jobs}: other files")
        resize(disk, "64m")
    # Where the size is known before, so is the want of room; that of compressed formats is not.
    for name in CONVERSIONS:
        words, _ = ground.prepare(name)
        needed = sum(path.stat().st_size for path in (ground.folder / name).iterdir())
        resize(disk, needed * 3 // 4)
        done = run(words, ground.home)
        expect(("the outputs can take" in done.stderr) == (name in ("bmp", "tiff")), f"{name}: {done.stderr}")
        resize(disk, "64m")
    finish("each output replaced with room for one more")


if __name__ == "__main__":
    main()
