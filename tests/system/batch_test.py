#!/usr/bin/env python3
"""A batch comes to what its documents come to one by one: batch_test.py FILTERHOST SAMPLES-FOLDER [--corpus]

Without --corpus, or PAGEVALIDATE_LONG in the environment, the samples are the documents. What may differ is the time.
"""
import hashlib
import os
import shutil
import sys
import tempfile

from host import Host, corpus_files, windows_path

# The reports' names for what no two runs have in common.
TIMES = ("time", "times", "seconds", "milliseconds", "duration")


def without_times(value, folder):
    """A report without times, and with outputs named from their folder on."""
    if isinstance(value, dict):
        return {key: without_times(each, folder) for key, each in value.items()
                if not any(key == time or key.endswith("_" + time) for time in TIMES)}
    if isinstance(value, list):
        return [without_times(each, folder) for each in value]
    return value.replace(windows_path(folder), "") if isinstance(value, str) else value


def digests(folder):
    found = {}
    for name in sorted(os.listdir(folder)):
        with open(os.path.join(folder, name), "rb") as file:
            found[name] = hashlib.sha256(file.read()).hexdigest()
    return found


def copies(documents, folder):
    """The documents under names that tell them apart: a batch puts all outputs into one folder."""
    os.mkdir(folder)
    named = []
    for number, document in enumerate(documents):
        named.append(os.path.join(folder, f"{number:03}-{os.path.basename(document)}"))
        shutil.copy(document, named[-1])
    return named


def lines_of(errors, name):
    return [line for line in errors.splitlines() if name in line]


def compare(host, documents, work):
    """Lines about what differs."""
    documents = copies(documents, os.path.join(work, "in"))
    together, alone = os.path.join(work, "together"), os.path.join(work, "alone")
    status, reports, errors = host.run_all(documents, together, "-j", "2", timeout=1800)
    if len(reports) != len(documents):
        return [f"the batch ended with status {status} and {len(reports)} reports of {len(documents)}: {errors.strip()}"]
    problems, highest = [], 0
    for number, document in enumerate(documents):
        name = os.path.basename(document)
        own_status, own_reports, own_errors = host.run_all([document], alone, "-j", "1", timeout=300)
        if len(own_reports) != 1:
            problems.append(f"{name}: alone it ended with status {own_status} and without a report: {own_errors.strip()}")
            continue
        highest = max(highest, own_status)
        if lines_of(errors, name) != lines_of(own_errors, name):
            problems.append(f"{name}: {lines_of(errors, name)} in the batch, alone {lines_of(own_errors, name)}")
        both = [without_times(each, folder) for each, folder in ((reports[number], together), (own_reports[0], alone))]
        if both[0] != both[1]:
            problems.append(f"{name}: another report")
    if status != highest:
        problems.append(f"the batch ends with {status}, the highest of all alone is {highest}")
    batch, single = digests(together), digests(alone)
    problems += [f"{name}: another output" for name in sorted(batch.keys() | single.keys())
                 if batch.get(name) != single.get(name)]
    print(f"{len(documents)} documents, {len(batch)} outputs, status {status}")
    return problems


def main(filterhost, samples, *options):
    documents = [os.path.join(samples, name) for name in sorted(os.listdir(samples)) if name.endswith("xps")]
    if "--corpus" in options or os.environ.get("PAGEVALIDATE_LONG"):
        documents += corpus_files() or []
    with tempfile.TemporaryDirectory() as work:
        problems = compare(Host(filterhost), documents, work)
    print("\n".join(problems))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
