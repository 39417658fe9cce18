#!/usr/bin/env python3
"""Runs clang-tidy over each source of a build: lookateach.py BUILD_FOLDER FOLDER[,FOLDER...] [CLANG-TIDY-OPTION...]

The sources are those of the build's compile_commands.json below the folders. The status is 1 when there is a complaint.
"""
import json
import os
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


def main(build, folders, *options):
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as file:
        files = {os.path.normpath(entry["file"]) for entry in json.load(file)}
    starts = tuple(os.path.join(ROOT, folder) + os.sep for folder in folders.split(","))
    files = sorted(name for name in files if name.startswith(starts) and name.endswith(".cpp"))

    def look_at(name):
        # The compiler's own warnings are another check's business.
        return name, subprocess.run(["clang-tidy-16", "-p", build, "--quiet", "--extra-arg=-w", *options, name],
                                    stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False)

    complaints = 0
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        for number, (name, done) in enumerate(pool.map(look_at, files), 1):
            print(f"[{number}/{len(files)}] {os.path.relpath(name, ROOT)}", flush=True)
            if done.returncode != 0 or done.stdout.strip():
                complaints += 1
                print(f"FAILED: {os.path.relpath(name, ROOT)}\n{done.stdout}{done.stderr if not done.stdout else ''}")
    print(f"{len(files)} sources, {complaints} with complaints")
    return 1 if complaints or not files else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
