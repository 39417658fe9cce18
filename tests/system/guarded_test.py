#!/usr/bin/env python3
"""guarded_test.py RUNNER PROGRAM: the system test with a filter every block of which ends at a page that cannot be touched.

RUNNER is what starts a Windows program, or empty. The short form takes what runs each job once or a few times; the long
form takes every test, in its own long form where that does more than the same again.
"""
import os
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
SHORT = ("GuardedHeap*:FaultsTest.*:Apartment*:Cancellation*:PrivateFeature*:"
         "StreamFaultsTest.*:ProviderFaultsTest.AProvider*")

# Thousands of times what a few hundred times show as well.
AGAIN = "ShutdownMomentsTest.*:ParallelTest.*"
# A block has two mappings of its own, and Linux lets a process have 65,530: not enough for the largest inputs. What is
# freed is not taken again, so nothing is steady.
LONG = f"*-{AGAIN}:HostileTest.*:EnduranceTest.*:UnloadingTest.*Keeps"
LONG_FORM = "PAGEVALIDATE_LONG"


def run(command, tests, timeout, environment):
    command = [sys.executable, os.path.join(ROOT, "cmake", "run_test.py"), "--timeout", str(timeout), *command]
    return subprocess.run([*command, "--gtest_filter=" + tests], env={**environment, "PAGEVALIDATE_GUARDED": "1"},
                          check=False).returncode


def tests_of(command, tests):
    """The full names of those that a filter takes."""
    # A file, no pipe: a Wine server that the program starts would hold a pipe open for good.
    with tempfile.TemporaryFile() as listed:
        subprocess.run([*command, "--gtest_list_tests", "--gtest_filter=" + tests], stdout=listed, check=True)
        listed.seek(0)
        names, suite = [], ""
        for line in listed.read().decode().splitlines():
            if line.startswith("  "):
                names.append(suite + line.split()[0])
            elif line.endswith("."):
                suite = line
        return names


def main():
    runner, program = sys.argv[1:3]
    command = [runner] * bool(runner) + [program]
    short_form = {name: value for name, value in os.environ.items() if name != LONG_FORM}
    if LONG_FORM not in os.environ:
        return run(command, SHORT, 580, short_form)
    # Each in a process of its own: what the runtime keeps of each load of the filter has its mappings as well.
    failed = [test for test in tests_of(command, LONG) if run(command, test, 1800, os.environ) != 0]
    failed += [test for test in tests_of(command, AGAIN) if run(command, test, 580, short_form) != 0]
    print("failed:", failed, flush=True)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
