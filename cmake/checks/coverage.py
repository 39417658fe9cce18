#!/usr/bin/env python3
"""Adds up gcov's counters of a build: coverage.py BUILD_FOLDER OUTPUT_FOLDER

Writes table.md, the lines and branches of each folder of src and devkit and how many of them were reached, and
missed.txt, the others. Counters of processes that left at once are in the build's folder "children". A function of a
header may be counted in the tests, whose copy of it the linker took.

What the compiler makes of itself is not counted: edges to an exception's handler, and the other way out of such a call;
branches at a closing bracket, which destroy things, at a local static, which guard it, and at a catch, which choose it;
those of a caller that g++ puts to the place where a function is called from; and what the macros for the identifiers of
interfaces make.

What is not reached in src must stand in tests/unreached.md with its reason; otherwise, or when a line that stands there
is gone, or with fewer than 98 % of the branches of src, the status is 1.
"""
import gzip
import json
import os
import re
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
GCOV = "x86_64-w64-mingw32-gcov-posix"
UNREACHED = os.path.join("tests", "unreached.md")
LEAST_BRANCHES = 98.0
# Lines of which no branch, and lines of which nothing is counted.
NO_CONDITION = re.compile(r"[\])};,]*|\} catch \(.*|static const .*|const std::source_location& where = .*")
NOT_COUNTED = re.compile(r"[\])};,]*|(PLATFORM_INTERFACE_UUID|__CRT_UUID_DECL)\(.*|.*\[&\] \{")


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
    def __init__(self, name):
        with open(os.path.join(ROOT, name), encoding="utf-8") as file:
            self.texts = [line.strip() for line in file]
        self.lines = {}
        self.branches = {}

    def add(self, line):
        number = line["line_number"]
        text = self.text_of(number)
        if NOT_COUNTED.fullmatch(text) and line["count"] == 0 and number not in self.lines:
            return
        self.lines[number] = self.lines.get(number, 0) + line["count"]
        counts = [] if NO_CONDITION.fullmatch(text) else real_branches(line["branches"])
        known = self.branches.setdefault(number, [])
        known.extend([0] * (len(counts) - len(known)))
        for place, count in enumerate(counts):
            known[place] += count

    def text_of(self, number):
        # What has no line of its own is put behind the last one.
        return self.texts[number - 1] if number <= len(self.texts) else ""

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


def source_of(sources, name):
    if name not in sources:
        sources[name] = Source(name)
    return sources[name]


def collect(build):
    place_notes(build)
    counters = [os.path.join(where, name) for where, _, names in os.walk(build) for name in names
                if name.endswith(".gcno") and "/bench/" not in where]
    sources = {}
    batches = [counters[start::16] for start in range(16)]
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        for reports in pool.map(lambda batch: read_counters(build, batch) if batch else [], batches):
            for report in reports:
                for file in report["files"]:
                    name = source_name(report, file["file"])
                    if name:
                        for line in file["lines"]:
                            source_of(sources, name).add(line)
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
    """(file, line number, what was not reached) of each line."""
    for name in sorted(sources):
        for number in sorted(sources[name].lines):
            ways = sources[name].branches.get(number, [])
            if sources[name].lines[number] == 0:
                yield name, number, "never reached"
            elif 0 in ways:
                yield name, number, f"{ways.count(0)} of {len(ways)} branches never taken"


def explained():
    """The lines of tests/unreached.md as (file, text of the line)."""
    with open(os.path.join(ROOT, UNREACHED), encoding="utf-8") as file:
        return re.findall(r"^- `(src/[^`]+)`: `(.+)`$", file.read(), re.MULTILINE)


def judge(sources):
    """What is wrong with the coverage of src, one line each."""
    reasons = explained()
    product = {name: source for name, source in sources.items() if name.startswith("src/")}
    for name, number, what in missed(product):
        text = product[name].text_of(number)
        if (name, text) not in reasons:
            yield f"{name}:{number}: {what}, and {UNREACHED} has no reason: {text}"
    for name, text in reasons:
        if name not in product or text not in product[name].texts:
            yield f"{UNREACHED}: {name} has no such line: {text}"
    figures = [source.figures() for source in product.values()]
    branches, reached = (sum(figure[place] for figure in figures) for place in (2, 3))
    if branches and 100 * reached < LEAST_BRANCHES * branches:
        yield f"{percent(reached, branches)} of the branches of src are reached, which is less than {LEAST_BRANCHES:g} %"


def main(build, output):
    # gcov runs in a folder of its own.
    sources = collect(os.path.abspath(build))
    if not any(count for source in sources.values() for count in source.lines.values()):
        sys.exit("there are no counters in " + build)
    os.makedirs(output, exist_ok=True)
    lines_missed = (f"{name}:{number}: {what}" for name, number, what in missed(sources))
    for name, lines in (("table.md", table(sources)), ("missed.txt", lines_missed)):
        with open(os.path.join(output, name), "w", encoding="utf-8") as file:
            file.writelines(line + "\n" for line in lines)
    wrong = list(judge(sources))
    print("\n".join(wrong), end="\n" if wrong else "")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
