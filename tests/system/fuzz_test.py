#!/usr/bin/env python3
"""The filter meets bad documents, tickets and answers: fuzz_test.py FILTERHOST SAMPLES-FOLDER [--cases N] [--seed S] [-j N]

2000 cases, and 200000 with PAGEVALIDATE_LONG in the environment, those of keptcases.txt among them. The seed is the same each time, so that a test that
passed passes again.
"""
import argparse
import json
import os
import subprocess
import sys
import tempfile

from host import Host, windows_path

# What reaches code that no other case of the short form does.
KEPT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "keptcases.txt")
# A case takes a fiftieth of a second of a processor; what hangs is told by the host itself.
SECONDS_A_CASE = 0.25


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("filterhost")
    parser.add_argument("samples")
    parser.add_argument("--cases", type=int, default=200000 if os.environ.get("PAGEVALIDATE_LONG") else 2000)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("-j", type=int, default=2)
    options = parser.parse_args()
    with open(KEPT, encoding="utf-8") as file:
        kept = [line.split()[0] for line in file if line.strip() and not line.startswith("#")]
    with tempfile.TemporaryDirectory() as folder:
        report = os.path.join(folder, "report.json")
        found = os.path.join(folder, "found")
        told = os.path.join(folder, "told.txt")
        command = [*Host(options.filterhost).command, "fuzz", "--corpus", windows_path(options.samples), "--cases",
                   str(options.cases - len(kept)), "--chains", windows_path(KEPT), "--seed", str(options.seed), "-j", str(options.j), "--json", windows_path(report),
                   "--out-dir", windows_path(found)]
        # A file, no pipe: a Wine server that the program starts would hold a pipe open for good.
        with open(told, "wb") as file:
            done = subprocess.run(command, stdout=file, stderr=file, timeout=60 + options.cases * SECONDS_A_CASE)
        with open(told, encoding="utf-8", errors="replace") as file:
            print(file.read())
        if not os.path.exists(report):
            return 1
        with open(report, encoding="utf-8") as file:
            summary = json.load(file)
    ends = summary["ends"]
    # Cases that never come to the filter, or that it never minds, would prove nothing.
    reached = ends.get("passed", 0) + ends.get("refused", 0)
    print(f"{reached} of {summary['cases']} cases came to the filter's end, {ends.get('refused', 0)} of them to a refusal")
    is_worth = reached > summary["cases"] / 2 and ends.get("refused", 0) > summary["cases"] / 20
    for case in summary["listed"]:
        print(f"{case['seed']}: {case['end']}")
    is_whole = summary["cases"] == options.cases and sorted(case["seed"] for case in summary["listed"]) == sorted(kept)
    return 0 if done.returncode == 0 and is_whole and is_worth else 1


sys.exit(main())
