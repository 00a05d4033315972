#!/usr/bin/python3
"""Runs commands and measures them: wall time, CPU time, peak memory.

A process inherits the peak memory of the one that forked it, so a command started from a Python that
holds pictures would seem to be as large as that Python. Commands are therefore started by a small
process of their own (this file with --serve), started before anything large is in memory. Its own
size, about 10 MB, is the smallest peak that can be told.
"""
import json
import os
import select
import signal
import sys
import time


class Outcome:
    """What became of one command. `exit_code` is None when a signal ended it."""

    def __init__(self, fields):
        self.exit_code = fields["exit_code"]
        self.signal = fields["signal"]
        self.timed_out = fields["timed_out"]
        self.wall_s = fields["wall_s"]
        self.cpu_s = fields["cpu_s"]
        self.peak_bytes = fields["peak_bytes"]

    @property
    def succeeded(self):
        return self.exit_code == 0


class Launcher:
    """Starts commands through the small process; one command at a time."""

    def __init__(self):
        import subprocess
        self._server = subprocess.Popen(
            [sys.executable, "-S", "-E", os.path.abspath(__file__), "--serve"],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)

    def run(self, command, timeout_s=600.0, stdout="/dev/null", stderr="/dev/null", env=None):
        """`env` is added to the environment; `stdout` and `stderr` are paths. A command that takes
        longer than `timeout_s` is killed together with its children."""
        request = {"command": [str(word) for word in command], "timeout_s": timeout_s,
                   "stdout": str(stdout), "stderr": str(stderr), "env": env or {}}
        self._server.stdin.write(json.dumps(request) + "\n")
        self._server.stdin.flush()
        answer = self._server.stdout.readline()
        if not answer:
            raise RuntimeError("the launcher has ended")
        return Outcome(json.loads(answer))

    def close(self):
        self._server.stdin.close()
        self._server.wait()


def _start(request):
    pid = os.fork()
    if pid:
        return pid
    try:
        os.setsid()
        for number, path, flags in ((0, "/dev/null", os.O_RDONLY),
                                    (1, request["stdout"], os.O_WRONLY | os.O_CREAT | os.O_TRUNC),
                                    (2, request["stderr"], os.O_WRONLY | os.O_CREAT | os.O_TRUNC)):
            os.dup2(os.open(path, flags, 0o644), number)
        os.environ.update(request["env"])
        os.execvp(request["command"][0], request["command"])
    except OSError:
        pass
    os._exit(127)


def _measure(request):
    started = time.monotonic()
    pid = _start(request)
    handle = os.pidfd_open(pid)
    ended, _, _ = select.select([handle], [], [], request["timeout_s"])
    os.close(handle)
    if not ended:
        try:
            os.killpg(pid, signal.SIGKILL)
        except ProcessLookupError:
            os.kill(pid, signal.SIGKILL)
    _, status, usage = os.wait4(pid, 0)
    return {"exit_code": os.WEXITSTATUS(status) if os.WIFEXITED(status) else None,
            "signal": os.WTERMSIG(status) if os.WIFSIGNALED(status) else None,
            "timed_out": not ended,
            "wall_s": time.monotonic() - started,
            "cpu_s": usage.ru_utime + usage.ru_stime,
            "peak_bytes": usage.ru_maxrss * 1024}


def _serve():
    for line in sys.stdin:
        print(json.dumps(_measure(json.loads(line))), flush=True)


def scratch_parent(needed_bytes):
    """The folder to make temporary folders in: the RAM disk when it has room, else None."""
    try:
        stat = os.statvfs("/dev/shm")
    except OSError:
        return None
    roomy = stat.f_bavail * stat.f_frsize >= needed_bytes and os.access("/dev/shm", os.W_OK)
    return "/dev/shm" if roomy else None


if __name__ == "__main__" and sys.argv[1:] == ["--serve"]:
    _serve()
