#!/usr/bin/env python3
"""The judges of documents notice what they are there for: checkdocument_test.py SAMPLES-FOLDER"""
import os
import shutil
import sys
import tempfile
import unittest
import zipfile

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(ROOT, "tools"))

from checkdocument import complaints  # noqa: E402


class CheckDocument(unittest.TestCase):
    def found(self, extension, change):
        """What is said of the sample with its parts of that extension changed."""
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "changed.xps")
            with zipfile.ZipFile(os.path.join(SAMPLES, "sample.xps")) as source, zipfile.ZipFile(path, "w") as target:
                for name in source.namelist():
                    content = source.read(name)
                    target.writestr(name, change(content) if name.endswith(extension) else content)
            return complaints(path)[0]

    def test_a_good_document_is_accepted(self):
        self.assertEqual([], self.found(".odttf", lambda content: content))

    def test_a_font_that_does_not_load_is_noticed(self):
        for change in (lambda content: content[::-1], lambda content: bytes(32) + content[32:], lambda content: b""):
            found = self.found(".odttf", change)
            self.assertTrue(any(line.startswith("fontTools, ") and ".odttf: " in line for line in found), found)

    def test_markup_that_is_no_xml_is_noticed(self):
        found = self.found("1.fpage", lambda content: content[:-5])
        self.assertTrue(any(line.startswith("xmllint, ") for line in found), found)


def main(samples, *options):
    global SAMPLES
    SAMPLES = samples
    if not all(shutil.which(program) for program in ("xmllint", "mutool", "xpstopng")):
        print("skipped: no xmllint, mutool or xpstopng")
        return 77
    return 0 if unittest.main(argv=[__file__, *options], exit=False).result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
