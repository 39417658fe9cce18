#!/usr/bin/env python3
"""Judges XPS documents with programs that know nothing of this project: checkdocument.py DOCUMENT...

xmllint parses every markup part, fontTools loads every font, mutool and xpstopng draw every page. One line a document;
status 1 when one fails.
"""
import io
import os
import re
import subprocess
import sys
import tempfile

from fontTools.ttLib import TTFont

from pages import Package, render


def plain_font(name, content):
    """The bytes of a font; the first 32 of an obfuscated one are mixed with the GUID that it is named by."""
    guid = re.sub(r"[^0-9a-f]", "", os.path.splitext(os.path.basename(name))[0].lower())
    if not name.endswith(".odttf") or len(guid) != 32:
        return content
    key = bytes.fromhex(guid)[::-1]
    return bytes(byte ^ key[number % 16] for number, byte in enumerate(content[:32])) + content[32:]


def font_complaints(package):
    found = []
    for name in sorted(part for part in package.parts if part.endswith((".odttf", ".ttf", ".otf", ".ttc"))):
        try:
            with TTFont(io.BytesIO(plain_font(name, package.parts[name])), fontNumber=0) as font:
                for table in ("head", "cmap", "maxp"):
                    font[table]
        except Exception as error:  # whatever the library stumbles over
            found.append(f"fontTools, {package.names[name]}: {type(error).__name__}: {error}")
    return found


def complaints(document):
    package = Package(document)
    found = []
    markup = [name for name in package.parts if name.endswith((".fpage", ".fdoc", ".fdseq", ".rels", ".xml"))]
    for name in sorted(markup):
        done = subprocess.run(["xmllint", "--noout", "--nonet", "-"], input=package.parts[name], capture_output=True)
        if done.returncode:
            found.append(f"xmllint, {package.names[name]}: {done.stderr.decode(errors='replace').splitlines()[0]}")
    found += font_complaints(package)
    images = render(document)
    pages = len(package.pages())
    if images is None or len(images) != pages:
        found.append(f"mutool drew {len(images or [])} of {pages} pages")
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run(["xpstopng", os.path.abspath(document), "page"], cwd=folder,
                              capture_output=True)
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
            print(f"{document}: xmllint, fontTools, mutool and xpstopng accept it ({pages} pages)")
        failed |= bool(found)
    return 1 if failed else 0


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit("usage: checkdocument.py DOCUMENT...")
    sys.exit(main(sys.argv[1:]))
