#!/usr/bin/env python3
"""Runs what the example files for engines say, over a small plan, with numbers in the place of the engine's variables.

Catches examples that fell behind the command line: an option that has gone, a shard that is left out, an exit code whose
rule is not the one that docs/fleet.md tells.
"""

import os
import re
import shlex
import signal
import subprocess
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "trust"))
from trust import PROGRAM, SECONDS, digests, expect, finish, picture, workspace, write_tiff  # noqa: E402

EXAMPLES = Path(os.environ["PAGESTACK_SOURCE_DIR"]) / "packaging" / "fleet"
SHARDS = 16
home = workspace()
surroundings = {**os.environ, "HOME": str(home), "LC_ALL": "C.UTF-8", "PATH": f"{PROGRAM.parent}:{os.environ['PATH']}"}


def text(name):
    return (EXAMPLES / name).read_text()


def call(words, folder, **more):
    return subprocess.run(words, cwd=folder, env={**surroundings, **more}, stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, timeout=SECONDS)


def setting(name, key):
    """The value of a line `key = value`; a systemd unit may give it several times."""
    return " ".join(re.findall(rf"^{key}\s*=\s*(.*)$", text(name), re.MULTILINE))


def program_words(line):
    words = shlex.split(line)
    expect(Path(words[0]).name == "pagestack-convert", f"{line}: another program")
    return [str(PROGRAM), *words[1:]]


def commented(name, command):
    """The arguments of a command that the comment at the top of an example tells."""
    line = re.search(rf"^# +pagestack-convert ({command} .*)$", text(name), re.MULTILINE)[1]
    words, _, output = line.partition(" > ")
    return [str(PROGRAM), *shlex.split(words)], output


def kubernetes_words(index, folder):
    """Its lists are simple enough to be read without a reader of YAML."""
    job = text("kubernetes-job.yaml")
    args = re.search(r"^( +)args:\n((?:\1  - .*\n)+)", job, re.MULTILINE)[2]
    command = re.search(r"command: \[(.*)\]", job)[1]
    words = [command, *re.findall(r"- (.*)", args)]
    return program_words(" ".join(words).replace("$(JOB_COMPLETION_INDEX)", str(index)).replace("/data", str(folder)))


def condor_words(index, folder):
    line = setting("pagestack.condor", "executable") + " " + setting("pagestack.condor", "arguments").strip('"')
    return program_words(line.replace("$(Process)", str(index)))


def sbatch_words(index, folder):
    return ["bash", str(EXAMPLES / "pagestack.sbatch")]


def made_folder(name):
    """A folder with sources of one, three and forty pages, and its plan as the examples tell to make it."""
    folder = home / name
    (folder / "scans").mkdir(parents=True)
    for number, pages in enumerate((1, 3, 40, 1)):
        write_tiff(folder / "scans" / f"scan{number}-.tif", [picture(number * 50 + page) for page in range(pages)])
    words, output = commented("pagestack.sbatch", "plan")
    done = call(words, folder)
    expect(done.returncode == 0 and output == "plan.jsonl", f"{words}: {done}")
    (folder / output).write_text(done.stdout)
    return folder


def judge(name, folder):
    words, _ = commented("pagestack.sbatch", "merge-logs")
    states = sorted(path.name for path in folder.glob("state-*.jsonl"))
    expect(len(states) == SHARDS, f"{name}: the states {states}")
    at = words.index("state-*.jsonl")
    done = call([*words[:at], *states, *words[at + 1:]], folder)
    expect(done.returncode == 0 and not done.stderr, f"{name}: {done}")
    return digests(folder / "out")


def run_shards():
    """All shards by each engine's own words write what one run writes."""
    written = {}
    for name, words in (("sbatch", sbatch_words), ("kubernetes", kubernetes_words), ("condor", condor_words)):
        folder = made_folder(name)
        for index in range(SHARDS):
            done = call(words(index, folder), folder, SLURM_ARRAY_TASK_ID=str(index), SLURM_CPUS_PER_TASK="2",
                        SLURM_SUBMIT_DIR=str(folder), SLURM_JOB_ID="1")
            expect(done.returncode == 0 and not done.stderr, f"{name}, shard {index}: {done}")
        written[name] = judge(name, folder)
    folder = made_folder("whole")
    done = call([PROGRAM, "run", "--plan", "plan.jsonl"], folder)
    expect(done.returncode == 0, f"whole: {done}")
    whole = digests(folder / "out")
    expect(len(whole) == 45, f"{len(whole)} outputs")
    for name, outputs in written.items():
        expect(outputs == whole, f"{name}: other outputs than those of one run")


def follow_rules():
    """Each engine starts again what ended with 75, and nothing that failed for good."""
    fake = home / "fake"
    fake.mkdir()
    (fake / "pagestack-convert").write_text("#!/bin/sh\nexit $CODE\n")
    (fake / "scontrol").write_text("#!/bin/sh\necho \"$@\" >requeued\n")
    (fake / "sleep").write_text("#!/bin/sh\n")
    for program in fake.iterdir():
        program.chmod(0o755)
    for code, restarts, again in ((0, 0, False), (1, 0, False), (2, 0, False), (75, 0, True), (143, 0, True), (75, 3, False)):
        (fake / "requeued").unlink(missing_ok=True)
        done = call(sbatch_words(0, fake), fake, CODE=str(code), SLURM_ARRAY_TASK_ID="0", SLURM_JOB_ID="7",
                    SLURM_RESTART_COUNT=str(restarts), PATH=f"{fake}:{os.environ['PATH']}")
        expect(done.returncode == code, f"sbatch: {code} became {done.returncode}")
        requeued = (fake / "requeued").read_text() if (fake / "requeued").exists() else ""
        expect(requeued == ("requeue 7\n" if again else ""), f"sbatch: exit code {code}, restart {restarts}: '{requeued}'")
    job = text("kubernetes-job.yaml")
    rules = dict(re.findall(r"- action: (\w+)\n +onExitCodes:\n.*\n.*\n +values: \[(.*)\]", job))
    expect(rules == {"Count": "75", "FailIndex": "1, 2, 3, 4"}, f"kubernetes: {rules}")
    expect(f"completions: {SHARDS}\n" in job and f")/{SHARDS}\n" in job, "kubernetes: another number of shards")
    condor = setting("pagestack.condor", "on_exit_hold")
    for code in (0, 1, 4, 75):
        held = eval(condor.replace("&&", "and"), {"ExitBySignal": False, "ExitCode": code})  # the same in both languages
        expect(held == (code in (1, 4)), f"condor: exit code {code}: held {held}")
    for unit in ("pagestack-watch@.service", "pagestack-nightly.service"):
        prevented = setting(unit, "RestartPreventExitStatus").split()
        expect("75" not in prevented and {"2", "3", "4"} <= set(prevented), f"{unit}: {prevented}")


def pass_signal_on():
    """A batch script that is told to go tells the program, and waits for it."""
    folder = home / "signal"
    folder.mkdir()
    (folder / "pagestack-convert").write_text(
        "#!/bin/sh\ntrap 'echo told >told; exit 143' TERM\ntouch begun\nwhile :; do /bin/sleep 0.01; done\n")
    (folder / "scontrol").write_text("#!/bin/sh\n")
    (folder / "sleep").write_text("#!/bin/sh\n")
    for program in folder.iterdir():
        program.chmod(0o755)
    script = subprocess.Popen(sbatch_words(0, folder), cwd=folder, env={
        **surroundings, "PATH": f"{folder}:{os.environ['PATH']}", "SLURM_ARRAY_TASK_ID": "0", "SLURM_JOB_ID": "7"})
    until(lambda: (folder / "begun").exists(), "the batch script did not start the program")
    script.send_signal(signal.SIGTERM)
    expect(script.wait(SECONDS) == 143 and (folder / "told").exists(), "the batch script did not pass SIGTERM on")


def until(holds, what):
    limit = time.monotonic() + SECONDS
    while not holds() and time.monotonic() < limit:
        time.sleep(0.02)
    expect(holds(), what)


def run_units():
    """The commands of the units, with the folder of the test in the place of theirs."""
    folder = made_folder("units")
    os.rename(folder / "scans", folder / "in")
    words = program_words(setting("pagestack-nightly.service", "ExecStart").replace("/srv/scans", str(folder)))
    for attempt in ("first", "second"):
        done = call(words, folder)
        expect(done.returncode == 0 and not done.stderr, f"nightly, {attempt} night: {done}")
        expect(len(digests(folder / "out")) == 45, f"nightly, {attempt} night: {sorted(digests(folder / 'out'))}")
    folder = made_folder("watched")
    os.rename(folder / "scans", folder / "in")
    for name in ("out", "done", "failed"):
        (folder / name).mkdir()
    line = setting("pagestack-watch@.service", "ExecStart").replace("/srv/scans/%i", str(folder))
    done = call([*program_words(line), "--once"], folder)
    expect(done.returncode == 0 and not done.stderr, f"watch: {done}")
    converted = [name for name in digests(folder / "out") if not name.startswith(".")]
    expect(len(converted) == 45 and len(digests(folder / "done")) == 4, f"watch: {converted}")


if __name__ == "__main__":
    run_shards()
    follow_rules()
    pass_signal_on()
    run_units()
    finish("examples for engines run")
