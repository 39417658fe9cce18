#!/usr/bin/env python3
"""Adds up gcov's counters of a build: coverage.py BUILD_FOLDER OUTPUT_FOLDER

Writes table.md, the lines and branches of each folder of src and devkit and how many of them were reached, and
missed.txt, the others. Counters of processes that left at once are in the build's folder "children". Edges to an exception's handler are no branches here, nor is the other way out of such a call.
"""
import gzip
import json
import os
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
GCOV = "x86_64-w64-mingw32-gcov-posix"


def read_counters(build, objects):
    """gcov's report on the sources of the object files."""
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([GCOV, "--json-format", "--branch-probabilities", "--hash-filenames", *objects], cwd=folder,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
        reports = []
        for name in os.listdir(folder):
            with gzip.open(os.path.join(folder, name), "rt", encoding="utf-8") as file:
                reports.append(json.load(file))
    return reports


def real_branches(branches):
    """The counts of the ways out of a line's conditions."""
    counts = []
    kept = []
    for branch in branches:
        if branch["throw"]:
            # The other way out of the call stands before it, or comes next.
            if kept and kept[-1]:
                kept[-1] = False
                counts.pop()
                kept.pop()
            else:
                kept.append(None)
            continue
        if kept and kept[-1] is None:
            kept.pop()
            continue
        counts.append(branch["count"])
        kept.append(branch["fallthrough"])
    return counts


class Source:
    def __init__(self):
        self.lines = {}
        self.branches = {}

    def add(self, line):
        number = line["line_number"]
        self.lines[number] = self.lines.get(number, 0) + line["count"]
        counts = real_branches(line["branches"])
        known = self.branches.setdefault(number, [])
        known.extend([0] * (len(counts) - len(known)))
        for place, count in enumerate(counts):
            known[place] += count

    def figures(self):
        ways = [count for counts in self.branches.values() for count in counts]
        return (len(self.lines), sum(count > 0 for count in self.lines.values()),
                len(ways), sum(count > 0 for count in ways))


def source_name(report, name):
    """The path from the root of a source of ours, or None. The compiler leaves the root out of the names."""
    for path in (name, os.path.join(report["current_working_directory"], name)):
        relative = os.path.relpath(os.path.join(ROOT, path), ROOT).replace(os.sep, "/")
        if relative.startswith(("src/", "devkit/")) and os.path.exists(os.path.join(ROOT, relative)):
            return relative
    return None


def place_notes(build):
    """gcov wants the notes of a source beside its counters."""
    children = os.path.join(build, "children")
    for where, _, names in os.walk(children):
        for name in names:
            notes = os.path.join(where, os.path.splitext(name)[0] + ".gcno")
            origin = os.path.join("/", os.path.relpath(notes, children))
            if name.endswith(".gcda") and not os.path.lexists(notes) and os.path.exists(origin):
                os.symlink(origin, notes)


def collect(build):
    place_notes(build)
    counters = [os.path.join(where, name) for where, _, names in os.walk(build) for name in names
                if name.endswith(".gcno") and "/tests/" not in where and "/bench/" not in where]
    sources = {}
    batches = [counters[start::16] for start in range(16)]
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        for reports in pool.map(lambda batch: read_counters(build, batch) if batch else [], batches):
            for report in reports:
                for file in report["files"]:
                    name = source_name(report, file["file"])
                    if name:
                        for line in file["lines"]:
                            sources.setdefault(name, Source()).add(line)
    return sources


def percent(reached, all_of_them):
    return f"{100 * reached / all_of_them:.1f} %" if all_of_them else ""


def table(sources):
    folders = {}
    for name, source in sources.items():
        top = name.split("/")[0]
        for key in (os.path.dirname(name), "all of " + top):
            total = folders.setdefault(key, [0, 0, 0, 0])
            for place, figure in enumerate(source.figures()):
                total[place] += figure
    yield "| Folder | Lines | reached | | Branches | reached | |"
    yield "|---|---:|---:|---:|---:|---:|---:|"
    for key in sorted(folders, key=lambda key: (key.split(" of ")[-1].split("/")[0] != "src", key.startswith("all"), key)):
        lines, lines_reached, branches, branches_reached = folders[key]
        yield (f"| {key} | {lines} | {lines_reached} | {percent(lines_reached, lines)} "
               f"| {branches} | {branches_reached} | {percent(branches_reached, branches)} |")


def missed(sources):
    for name in sorted(sources):
        for number in sorted(sources[name].lines):
            ways = sources[name].branches.get(number, [])
            if sources[name].lines[number] == 0:
                yield f"{name}:{number}: never reached"
            elif 0 in ways:
                yield f"{name}:{number}: {ways.count(0)} of {len(ways)} branches never taken"


def main(build, output):
    # gcov runs in a folder of its own.
    sources = collect(os.path.abspath(build))
    if not any(count for source in sources.values() for count in source.lines.values()):
        sys.exit("there are no counters in " + build)
    os.makedirs(output, exist_ok=True)
    for name, lines in (("table.md", table(sources)), ("missed.txt", missed(sources))):
        with open(os.path.join(output, name), "w", encoding="utf-8") as file:
            file.writelines(line + "\n" for line in lines)
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
