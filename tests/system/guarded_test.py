#!/usr/bin/env python3
"""guarded_test.py RUNNER PROGRAM: the system test with a filter every block of which ends at a page that cannot be touched.

RUNNER is what starts a Windows program, or empty. The short form takes what runs each job once or a few times; the long
form takes every test, in its own long form where that does more than the same again.
"""
import os
import subprocess
import sys

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


def main():
    runner, program = sys.argv[1:3]
    command = [runner] * bool(runner) + [program]
    short_form = {name: value for name, value in os.environ.items() if name != LONG_FORM}
    if LONG_FORM not in os.environ:
        return run(command, SHORT, 580, short_form)
    return run(command, LONG, 3000, os.environ) or run(command, AGAIN, 580, short_form)


if __name__ == "__main__":
    sys.exit(main())
