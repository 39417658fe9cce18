#!/usr/bin/env python3
"""Compares what the reader of packages made of the corpus with what mutool makes of it.

    corpus_with_mutool.py CORPUS TABLE CHANGED

The environment variable CORPUS_FOLDER takes the place of CORPUS where it is set.
TABLE and CHANGED are what the tests of devkit/package leave: a line "file TAB read|refused TAB pages|reason" for every
document, and the documents written back with new tickets. Prints a table of all documents. Fails when a document that
mutool renders is refused, or renders to other pictures after it was written. Without the corpus or mutool: status 77.
"""

import glob
import hashlib
import os
import shutil
import subprocess
import sys
import tempfile

SKIPPED = 77
RESOLUTION = "36"


def render(path, folder):
    """mutool's status and the digests of its pictures."""
    # mutool goes by the extension; a DWFx document is an XPS document with more in it.
    name = os.path.join(folder, "document.xps")
    shutil.copyfile(path, name)
    result = subprocess.run(["mutool", "draw", "-q", "-r", RESOLUTION, "-o", os.path.join(folder, "%d.png"), name],
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=120, check=False)
    pictures = sorted(glob.glob(os.path.join(folder, "*.png")), key=lambda each: int(os.path.basename(each)[:-4]))
    digests = []
    for picture in pictures:
        with open(picture, "rb") as file:
            digests.append(hashlib.sha256(file.read()).hexdigest())
    return result.returncode, digests


def rendered(path):
    with tempfile.TemporaryDirectory() as folder:
        return render(path, folder)


def judge(title, verdict, corpus, changed):
    """One line of the table: what mutool says, and what is wrong; empty when nothing is."""
    status, pictures = rendered(os.path.join(corpus, title))
    renders = status == 0 and pictures
    opinion = "renders %d" % len(pictures) if renders else "refuses"
    if verdict != "read":
        return opinion, "refused, but mutool renders it" if renders else ""
    if not renders:
        return opinion, ""
    copy = os.path.join(changed, title)
    if rendered(copy) != (status, pictures):
        return opinion, "renders differently after it was written"
    return opinion, ""


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    corpus, table, changed = sys.argv[1:]
    corpus = os.environ.get("CORPUS_FOLDER", corpus)
    if not os.path.isdir(corpus) or not shutil.which("mutool"):
        print("skipped: needs mutool and a corpus of documents at " + corpus)
        return SKIPPED
    if not os.path.exists(table):
        sys.exit("no table at %s: run the tests of devkit/package first" % table)
    failures = 0
    with open(table, encoding="utf-8") as lines:
        for line in lines:
            title, verdict, detail = line.rstrip("\n").split("\t")
            opinion, wrong = judge(title, verdict, corpus, changed)
            failures += 1 if wrong else 0
            print("%-75s %-10s %-10s %s%s" % (title, verdict, opinion, detail, "  FAILED: " + wrong if wrong else ""))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
