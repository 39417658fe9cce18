#!/usr/bin/env python3
"""Runs one test for ctest and decides whether it passed:

  run_test.py [--timeout SECONDS] [--long-timeout SECONDS] PROGRAM [ARGUMENT...]
  run_test.py [--timeout SECONDS] [--long-timeout SECONDS] SCRIPT.py [ARGUMENT...]

The second time holds where the long form of the tests is asked for (PAGEVALIDATE_LONG).

An exit status alone proves nothing: a program that calls exit(0) in the middle of its tests has one of 0 as well. So a
test is given a text of this run's own in TEST_CLOSING_LINE, which its runner prints, with the status that it is about
to end with, as the very last thing (tests/support/closingline.h; for a Python script this file does it, when the script
came to its last line). A test has passed when that line says 0 and the exit status is 0. It was skipped when both are
77. Everything else has failed, and the last line of the output says why.

Wine's server kills a program that has ended, but whose process is not gone half a second later, as on a busy machine.
So the line alone decides where a program that Wine runs was killed after it.
"""
import argparse
import os
import re
import runpy
import secrets
import signal
import subprocess
import sys
import tempfile
import time
import traceback

VARIABLE = "TEST_CLOSING_LINE"
# For Python scripts: nothing is written into the source folder, and text is UTF-8 in every locale.
SETTINGS = {"PYTHONDONTWRITEBYTECODE": "1", "PYTHONUTF8": "1"}
SKIPPED = 77
KILLED = -9
# What ends programs with these. Wine hands on the low byte of an exception's code.
MEANINGS = {3: "abort", 5: "an access violation", 0xC0000005: "an access violation", 0xC0000409: "abort"}
TEST_LINE = re.compile(rb"^\[ (RUN     |      OK|  FAILED| SKIPPED) \] ([\w./]+)", re.MULTILINE)


def run_script(script, arguments):
    """Runs a Python script as the interpreter would, and prints the closing line when it came to its end."""
    closing = os.environ.pop(VARIABLE)
    sys.argv = [script, *arguments]
    sys.path[0] = os.path.dirname(os.path.abspath(script))
    status = 0
    try:
        runpy.run_path(script, run_name="__main__")
    except SystemExit as end:
        if isinstance(end.code, str):
            print(end.code, file=sys.stderr)
        status = end.code if isinstance(end.code, int) else int(end.code is not None)
        # A script's own last line is sys.exit(main()). A call from any function is an end in the middle.
        deepest = traceback.extract_tb(end.__traceback__)[-1]
        if deepest.name != "<module>" or not os.path.samefile(deepest.filename, script):
            closing = ""
    sys.stderr.flush()
    if closing:
        print(closing, status, flush=True)
    return status


def stop(process):
    """Ends a test that did not end by itself, with what it started."""
    if os.name == "nt":
        subprocess.run(["taskkill", "/F", "/T", "/PID", str(process.pid)], stdout=subprocess.DEVNULL, check=False)
    else:
        os.killpg(process.pid, signal.SIGKILL)
    process.wait()


def run(command, closing, timeout):
    """Runs the command and prints what it prints. Returns its status, None when it had to be ended, and its output."""
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as folder:
        name = os.path.join(folder, "output")
        # No pipe: what a program leaves running behind it, like Wine's services, would hold a pipe open.
        with open(name, "wb") as written, open(name, "rb") as read:
            process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=written, stderr=subprocess.STDOUT,
                                       env={**os.environ, **SETTINGS, VARIABLE: closing}, start_new_session=os.name != "nt")
            output = b""
            deadline = time.monotonic() + timeout
            try:
                while process.poll() is None and time.monotonic() < deadline:
                    output += hand_on(read)
                    time.sleep(0.02)
                status = process.poll()
            finally:
                if process.poll() is None:
                    stop(process)
            return status, output + hand_on(read)


def hand_on(file):
    new = file.read()
    if new:
        sys.stdout.buffer.write(new)
        sys.stdout.buffer.flush()
    return new


def open_test(output):
    """The test of a gtest program that was begun last and not ended, as words."""
    lines = TEST_LINE.findall(output)
    return " in " + lines[-1][1].decode() if lines and lines[-1][0].startswith(b"RUN") else ""


def judge(status, output, closing, timeout, may_be_killed):
    """(exit status for ctest, why it is not 0)"""
    if status is None:
        return 1, f"it did not end within {timeout:g} seconds{open_test(output)}"
    closed = re.search(b"^" + re.escape(closing).encode() + rb" (-?\d+)\r?$", output, re.MULTILINE)
    if not closed:
        meaning = f" ({MEANINGS[status]})" if status in MEANINGS else ""
        return 1, f"it ended in the middle{open_test(output)}, with status {status}{meaning}"
    if status == KILLED and may_be_killed:
        print("killed after its end, as Wine's server does where that takes long", flush=True)
        status = int(closed[1])
    if int(closed[1]) != status:
        return 1, f"it came to its end with {int(closed[1])}, but the process ended with {status}"
    return status, "it was skipped" if status == SKIPPED else f"it ended with {status}"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--timeout", type=float, default=300)
    parser.add_argument("--long-timeout", type=float)
    parser.add_argument("--script", action="store_true", help=argparse.SUPPRESS)
    parser.add_argument("command", nargs=argparse.REMAINDER)
    arguments = parser.parse_args()
    if arguments.script:
        return run_script(arguments.command[0], arguments.command[1:])
    command = arguments.command
    is_script = command[0].endswith(".py")
    if is_script:
        command = [sys.executable, os.path.abspath(__file__), "--script", *command]
    timeout = arguments.timeout
    if arguments.long_timeout and os.environ.get("PAGEVALIDATE_LONG"):
        timeout = arguments.long_timeout
    closing = "The test came to its end, run " + secrets.token_hex(8) + ":"
    status, output = run(command, closing, timeout)
    result, why = judge(status, output, closing, timeout, os.name != "nt" and not is_script)
    if result != 0:
        print(f"{'skipped' if result == SKIPPED else 'FAILED'}: {why}", flush=True)
    return result


if __name__ == "__main__":
    sys.exit(main())
