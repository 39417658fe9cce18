#!/usr/bin/env python3
"""Judges XPS documents with programs that know nothing of this project: checkdocument.py DOCUMENT...

xmllint parses every markup part, mutool and xpstopng draw every page. One line a document; status 1 when one fails.
"""
import subprocess
import sys
import tempfile

from pages import Package, render


def complaints(document):
    package = Package(document)
    found = []
    markup = [name for name in package.parts if name.endswith((".fpage", ".fdoc", ".fdseq", ".rels", ".xml"))]
    for name in sorted(markup):
        done = subprocess.run(["xmllint", "--noout", "--nonet", "-"], input=package.parts[name], capture_output=True)
        if done.returncode:
            found.append(f"xmllint, {package.names[name]}: {done.stderr.decode(errors='replace').splitlines()[0]}")
    images = render(document)
    pages = len(package.pages())
    if images is None or len(images) != pages:
        found.append(f"mutool drew {len(images or [])} of {pages} pages")
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run(["xpstopng", document, folder + "/page"], capture_output=True)
        if done.returncode:
            found.append(f"xpstopng: {done.stderr.decode(errors='replace').strip()}")
    return found, pages


def main(documents):
    failed = False
    for document in documents:
        found, pages = complaints(document)
        for line in found:
            print(f"{document}: {line}")
        if not found:
            print(f"{document}: xmllint, mutool and xpstopng accept it ({pages} pages)")
        failed |= bool(found)
    return 1 if failed else 0


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit("usage: checkdocument.py DOCUMENT...")
    sys.exit(main(sys.argv[1:]))
