#!/usr/bin/env python3
"""The filter, the example filter and a chain of both are fit at the highest level: validate_test.py FILTERHOST FILTER
EXAMPLE. In the short form each test tries some of its cases."""
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest

from jsonschema import Draft202012Validator

from host import ROOT, Host, windows_path

FILTER_CLASS = "{8A9F4692-E8BA-4533-B859-E56B1EA16586}"
LONG = bool(os.environ.get("PAGEVALIDATE_LONG"))
CASES = 6
with open(os.path.join(ROOT, "docs", "validation.schema.json"), encoding="utf-8") as file:
    SCHEMA = json.load(file)


class Fitness(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def validate(self, *options):
        """The status and the report."""
        report = os.path.join(self.folder, "report.json")
        limit = [] if LONG else ["--cases", str(CASES)]
        command = [*Host(FILTERHOST).command, "validate", "--level", "10", "--json", windows_path(report), *limit, *options]
        with open(os.path.join(self.folder, "log.txt"), "w+b") as log:
            done = subprocess.run(command, stdout=log, stderr=log, timeout=3000 if LONG else 500)
            log.seek(0)
            self.log = log.read().decode("utf-8", "replace")
        print(self.log)
        self.assertTrue(os.path.exists(report), self.log)
        with open(report, encoding="utf-8") as file:
            results = json.load(file)
        self.assertEqual([], [error.message for error in Draft202012Validator(SCHEMA).iter_errors(results)])
        return done.returncode, results

    def expect_fit(self, skipped, *options):
        status, results = self.validate(*options)
        self.assertEqual([], [test["name"] for test in results["tests"] if test["result"] == "failed"], self.log)
        self.assertEqual(skipped, {test["name"] for test in results["tests"] if test["result"] == "skipped"})
        self.assertEqual(0, status)
        self.assertGreater(results["passed"], 40)

    def test_the_filter_is_fit(self):
        self.expect_fit(set(), windows_path(FILTER))

    def test_the_example_is_fit(self):
        # It reads nothing of a part, writes nothing, and asks for no property and no ticket.
        self.expect_fit({"short-reads", "short-writes", "late-end-of-data", "missing-tickets", "properties-missing",
                         "each-option-asked-for", "options-in-pairs", "ticket-provider-fails"}, windows_path(EXAMPLE), "--clsid", example_class())

    def test_a_chain_of_both_is_fit(self):
        self.expect_fit(set(), windows_path(EXAMPLE), windows_path(FILTER), "--clsid", example_class(), "--clsid",
                        FILTER_CLASS)


def example_class():
    with open(os.path.join(ROOT, "examples", "passthrough", "passthrough-pipelineconfig.xml"), encoding="utf-8") as file:
        return re.search(r"\{[0-9A-Fa-f-]{36}\}", file.read()).group()


def main():
    global FILTERHOST, FILTER, EXAMPLE
    FILTERHOST, FILTER, EXAMPLE = sys.argv[1:4]
    return 0 if unittest.main(argv=sys.argv[:1], exit=False).result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main())
