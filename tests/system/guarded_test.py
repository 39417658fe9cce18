#!/usr/bin/env python3
"""guarded_test.py RUNNER PROGRAM: the system test with a filter every block of which ends at a page that cannot be touched.

RUNNER is what starts a Windows program, or empty. The short form takes what runs each job once or a few times; the long
form takes every test.
"""
import os
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
SHORT = ("GuardedHeap*:FaultsTest.*:Apartment*:Cancellation*:PrivateFeature*:"
         "StreamFaultsTest.*:ProviderFaultsTest.AProvider*")

# A block has two mappings of its own, and Linux lets a process have 65,530: not enough for the largest inputs. What is
# freed is not taken again, so nothing is steady.
LONG = "*-HostileTest.*:EnduranceTest.*:UnloadingTest.*Keeps"


def main():
    runner, program = sys.argv[1:3]
    is_long = "PAGEVALIDATE_LONG" in os.environ
    command = [sys.executable, os.path.join(ROOT, "cmake", "run_test.py"), "--timeout", "5000" if is_long else "280"]
    command += [runner] * bool(runner) + [program, "--gtest_filter=" + (LONG if is_long else SHORT)]
    return subprocess.run(command, env={**os.environ, "PAGEVALIDATE_GUARDED": "1"}, check=False).returncode


if __name__ == "__main__":
    sys.exit(main())
