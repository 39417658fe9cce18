#!/usr/bin/env python3
"""Has the sample documents judged by programs of others: samples_are_accepted.py MAKE_SAMPLES

Makes the samples twice, which must give the same bytes; then xmllint must find every markup part well-formed, mutool
must render all pages, the same for each way in which the sample is written, and xpstopng must take those that its
library supports. Without one of the programs: status 77.
"""

import hashlib
import os
import re
import shutil
import subprocess
import sys
import tempfile
import zipfile

SKIPPED = 77
PAGES = {"sample.xps": 10, "sample.oxps": 10, "streamed.xps": 10, "resources.xps": 2, "names.xps": 1, "utf16.xps": 1,
         "minimal.xps": 1}
# libgxps knows neither brushes from resources, nor interleaved parts, nor names in another letter case. The number is
# that of the documents.
XPSTOPNG = {"sample.xps": 3, "sample.oxps": 3, "utf16.xps": 1, "minimal.xps": 1}
MARKUP = (".fpage", ".fdoc", ".fdseq", ".rels", ".xml", ".dict", ".XML")


def run(command, data=None):
    return subprocess.run(command, input=data, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=120,
                          check=False)


def parts_of(path):
    """The parts of a package, pieces joined."""
    parts = {}
    with zipfile.ZipFile(path) as archive:
        for name in archive.namelist():
            part = re.sub(r"/\[\d+\](\.last)?\.piece$", "", name)
            parts[part] = parts.get(part, b"") + archive.read(name)
    return parts


def check_markup(path):
    problems = []
    for name, data in parts_of(path).items():
        if name.endswith(MARKUP):
            result = run(["xmllint", "--noout", "-"], data)
            if result.returncode != 0 or result.stdout:
                problems.append("xmllint %s: %s" % (name, result.stdout.decode(errors="replace").splitlines()[0]))
    return problems


def pictures_of(path, folder):
    """mutool's pictures of the pages as digests, and what it complained of."""
    result = run(["mutool", "draw", "-r", "36", "-o", os.path.join(folder, "%d.png"), path])
    complaints = [line for line in result.stdout.decode(errors="replace").splitlines()
                  if line and not line.startswith("page ") and "ICC support" not in line]
    digests = []
    while os.path.exists(os.path.join(folder, "%d.png" % (len(digests) + 1))):
        with open(os.path.join(folder, "%d.png" % (len(digests) + 1)), "rb") as file:
            digests.append(hashlib.sha256(file.read()).hexdigest())
    return digests, complaints


def check_rendering(path, reference):
    name = os.path.basename(path)
    with tempfile.TemporaryDirectory() as folder:
        digests, problems = pictures_of(path, folder)
    if len(digests) != PAGES[name]:
        problems.append("mutool renders %d pages" % len(digests))
    if PAGES[name] == PAGES["sample.xps"] and digests != reference:
        problems.append("renders to other pictures than sample.xps")
    return problems


def check_xpstopng(path):
    problems = []
    for number in range(1, XPSTOPNG.get(os.path.basename(path), 0) + 1):
        with tempfile.TemporaryDirectory() as folder:
            result = run(["xpstopng", "-r", "36", "-d", str(number), path, os.path.join(folder, "page")])
            if result.returncode != 0 or result.stdout or not os.listdir(folder):
                problems.append("xpstopng, document %d: %s" % (number, result.stdout.decode(errors="replace").strip()))
    return problems


def make(script, folder):
    subprocess.run([sys.executable, script, folder], check=True)
    contents = {}
    for name in sorted(os.listdir(folder)):
        with open(os.path.join(folder, name), "rb") as file:
            contents[name] = file.read()
    return contents


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    missing = [program for program in ("xmllint", "mutool", "xpstopng") if not shutil.which(program)]
    if missing:
        print("skipped: needs " + ", ".join(missing))
        return SKIPPED
    failed = False
    with tempfile.TemporaryDirectory() as folder, tempfile.TemporaryDirectory() as again, \
            tempfile.TemporaryDirectory() as pictures:
        contents = make(sys.argv[1], folder)
        if contents != make(sys.argv[1], again) or sorted(contents) != sorted(PAGES):
            sys.exit("not the same samples every time, or not those that are named here")
        reference, _ = pictures_of(os.path.join(folder, "sample.xps"), pictures)
        for name in PAGES:
            path = os.path.join(folder, name)
            problems = check_markup(path) + check_rendering(path, reference) + check_xpstopng(path)
            print("%-15s %s" % (name, "; ".join(problems) or "accepted"))
            failed = failed or bool(problems)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
