"""Running a test program and judging what it said."""
import os
import re
import signal
import subprocess
import tempfile
import time
from dataclasses import dataclass

CLOSING = re.compile(r"^\[  PASSED  \] \d+ tests?\.", re.MULTILINE)
FAILED = re.compile(r"^\[  FAILED  \] ([\w./]+)", re.MULTILINE)
RUNNING = re.compile(r"^\[ RUN      \] ([\w./]+)", re.MULTILINE)
DONE = re.compile(r"^\[       OK \] ([\w./]+)|^\[  SKIPPED \] ([\w./]+)", re.MULTILINE)


@dataclass
class Outcome:
    passed: bool
    reason: str  # the test that failed, or how the program ended
    seconds: float


class Runner:
    """Runs Windows programs, each with a time limit; `launcher` is what starts one, with the debugger of Wine disabled."""

    def __init__(self, launcher):
        self.launcher = launcher
        self.keeper = None

    def __enter__(self):
        """Keeps one Wine session alive, whose service processes belong to none of the programs that may be killed."""
        silent = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        self.keeper = subprocess.Popen([*self.launcher, "cmd", "/q"], stdin=subprocess.PIPE, start_new_session=True, **silent)
        subprocess.run([*self.launcher, "cmd", "/c", "exit"], stdin=subprocess.DEVNULL, check=True, **silent)
        return self

    def __exit__(self, *_):
        self.keeper.stdin.close()
        try:
            self.keeper.wait(20)
        except subprocess.TimeoutExpired:
            os.killpg(self.keeper.pid, signal.SIGKILL)

    def run(self, program, limit):
        start = time.monotonic()
        # A file and no pipe: a process that the program leaves behind would hold the pipe open.
        with tempfile.TemporaryFile() as output:
            process = subprocess.Popen([*self.launcher, program], stdin=subprocess.DEVNULL, stdout=output,
                                       stderr=subprocess.STDOUT, start_new_session=True, cwd=os.path.dirname(program))
            hung = False
            try:
                process.wait(limit)
            except subprocess.TimeoutExpired:
                hung = True
            finally:
                try:
                    os.killpg(process.pid, signal.SIGKILL)
                except ProcessLookupError:
                    pass
                process.wait()
            output.seek(0)
            text = output.read().decode(errors="replace").replace("\r\n", "\n")
        return judge(text, process.returncode, hung, time.monotonic() - start)


def judge(text, status, hung, seconds):
    """Passed only with status 0 and the closing line of a run in which every test passed."""
    started = RUNNING.findall(text)
    ended = {name for pair in DONE.findall(text) for name in pair} | set(FAILED.findall(text))
    last = next((name for name in reversed(started) if name not in ended), "")
    at = f" in {last}" if last else ""
    if hung:
        return Outcome(False, "hang" + at, seconds)
    failed = FAILED.findall(text)
    if failed:
        return Outcome(False, failed[0], seconds)
    if not CLOSING.search(text):
        return Outcome(False, f"early end{at}, status {status}", seconds)
    return Outcome(status == 0, f"status {status}" if status else "", seconds)
