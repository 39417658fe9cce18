#!/usr/bin/env python3
"""Has ctest judge tests that end in all the ways in which a test can end: endings_test.py CTEST RUN_TEST PROGRAM...

RUN_TEST is cmake/run_test.py, PROGRAM the program of endings.cpp with what it needs to be started. A test that ends in
the middle must fail, whatever its exit status, and say why; one that comes to its end must pass.
"""
import os
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree

# How a test of the program ends, the status that ctest shows, and what is said of it.
PROGRAM_ENDINGS = {
    "Passes": ("run", ""),
    "IsSkipped": ("run", ""),
    "Fails": ("fail", "FAILED: it ended with 1"),
    "Crashes": ("fail", "FAILED: it ended in the middle in Endings.Crashes, with status {crash} (an access violation)"),
    "CallsExit": ("fail", "FAILED: it ended in the middle in Endings.CallsExit, with status 0"),
    "CallsExitProcess": ("fail", "FAILED: it ended in the middle in Endings.CallsExitProcess, with status 0"),
    "CallsExitThread": ("fail", "FAILED: it ended in the middle in Endings.CallsExitThread, with status 0"),
    "CallsTerminateProcess":
        ("fail", "FAILED: it ended in the middle in Endings.CallsTerminateProcess, with status 0"),
    "Aborts": ("fail", "FAILED: it ended in the middle in Endings.Aborts, with status 3 (abort)"),
    "Hangs": ("fail", "FAILED: it did not end within {timeout} seconds in Endings.Hangs"),
    "CrashesAtTheEnd": ("fail", "FAILED: it came to its end with 0, but the process ended with {crash}"),
    "IsNoTest": ("fail", "FAILED: it ended with 1"),
}
SCRIPT_ENDINGS = {
    "passes": ("import sys\ndef main():\n    return 0\nsys.exit(main())", "run", ""),
    "falls_off_its_end": ("print('done')", "run", ""),
    "is_skipped": ("import sys\nsys.exit(77)", "notrun", "skipped: it was skipped"),
    "fails": ("import sys\nsys.exit('as it should')", "fail", "FAILED: it ended with 1"),
    "raises": ("raise ValueError", "fail", "FAILED: it ended in the middle, with status 1"),
    "exits_in_a_function": ("import sys\ndef main():\n    sys.exit(0)\nmain()", "fail",
                            "FAILED: it ended in the middle, with status 0"),
    "exits_at_once": ("import os\nos._exit(0)", "fail", "FAILED: it ended in the middle, with status 0"),
    "prints_another_runs_line": ("import os\nprint('The test came to its end, run 0123456789abcdef: 0', flush=True)\n"
                                 "os._exit(0)", "fail", "FAILED: it ended in the middle, with status 0"),
    "hangs": ("import time\ntime.sleep(1000)", "fail", "FAILED: it did not end within {timeout} seconds"),
}
# A program that is killed as Wine's server would kill it, and in ways that are not that. It needs no Wine.
KILLED_ENDINGS = {
    "IsKilledAfterItsEnd": ('echo "$TEST_CLOSING_LINE 0"; kill -9 $$', "run", ""),
    "IsKilledAfterItWasSkipped": ('echo "$TEST_CLOSING_LINE 77"; kill -9 $$', "notrun", "skipped: it was skipped"),
    "IsKilledAfterItFailed": ('echo "$TEST_CLOSING_LINE 1"; kill -9 $$', "fail", "FAILED: it ended with 1"),
    "IsKilledInTheMiddle": ("kill -9 $$", "fail", "FAILED: it ended in the middle, with status -9"),
    "IsEndedAfterItsEnd": ('echo "$TEST_CLOSING_LINE 0"; kill -15 $$', "fail",
                           "FAILED: it came to its end with 0, but the process ended with -15"),
}
KILLED_SCRIPT_ENDINGS = {
    "is_killed_at_the_end": ("import atexit, os, signal\natexit.register(os.kill, os.getpid(), signal.SIGKILL)", "fail",
                             "FAILED: it came to its end with 0, but the process ended with -9"),
}
if os.name == "nt":
    KILLED_ENDINGS = KILLED_SCRIPT_ENDINGS = {}
# Long enough for a program to start on a busy machine.
TIMEOUT = 10
CRASH = 0xC0000005 if os.name == "nt" else 5


def quoted(words):
    return " ".join("[==[" + word + "]==]" for word in words)


def write_tests(folder, run_test, program):
    """Writes the tests that ctest shall run, and returns what is expected of each: (status, text)."""
    expected = {}
    commands = {}
    for name, (status, why) in PROGRAM_ENDINGS.items():
        expected[name] = status, why
        commands[name] = [*program, "--gtest_filter=Endings." + name]
    for name, (text, status, why) in KILLED_ENDINGS.items():
        expected[name] = status, why
        commands[name] = ["/bin/sh", "-c", text]
    for name, (text, status, why) in {**SCRIPT_ENDINGS, **KILLED_SCRIPT_ENDINGS}.items():
        script = os.path.join(folder, name + ".py")
        with open(script, "w", encoding="utf-8") as file:
            file.write(text + "\n")
        expected[name] = status, why
        commands[name] = [script]
    with open(os.path.join(folder, "CTestTestfile.cmake"), "w", encoding="utf-8") as file:
        for name, command in commands.items():
            file.write(f"add_test({name} {quoted([sys.executable, run_test, '--timeout', str(TIMEOUT), *command])})\n")
            file.write(f"set_tests_properties({name} PROPERTIES SKIP_RETURN_CODE 77)\n")
    return expected


def main(ctest, run_test, *program):
    failed = 0
    with tempfile.TemporaryDirectory() as folder:
        expected = write_tests(folder, run_test, program)
        report = os.path.join(folder, "report.xml")
        done = subprocess.run([ctest, "--test-dir", folder, "-j", "4", "--output-junit", report],
                              stdout=subprocess.DEVNULL, check=False)
        results = {case.get("name"): case for case in ElementTree.parse(report).iter("testcase")}
    for name, (status, why) in expected.items():
        output = results[name].findtext("system-out").strip()
        last = output.splitlines()[-1] if output else ""
        why = why.format(crash=CRASH, timeout=TIMEOUT)
        right = results[name].get("status") == status and (last == why or not why)
        failed += not right
        print(f"{'' if right else 'WRONG: '}{name}: {results[name].get('status')}, {last}")
    print(f"{len(expected)} endings, {failed} judged wrongly")
    if done.returncode == 0:
        print("WRONG: ctest found nothing to complain of")
    return 1 if failed or done.returncode == 0 else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
