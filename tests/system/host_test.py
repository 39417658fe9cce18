#!/usr/bin/env python3
"""What tests make of a host that says nothing: host_test.py"""
import contextlib
import io
import os
import sys
import tempfile
import unittest

from batch_test import compare
from host import Host

# A host in the place of filterhost, which knows where the report is to be and how often it was started before.
PROGRAM = """#!/usr/bin/env python3
import os, sys
starts = {folder!r} + "/starts"
before = os.path.getsize(starts) if os.path.exists(starts) else 0
with open(starts, "a") as file:
    file.write("x")
def report(text):
    with open(sys.argv[sys.argv.index("--json") + 1].removeprefix("Z:").replace(chr(92), "/"), "w") as file:
        file.write(text)
"""
ONE = '{"inputs": [{"input": "a"}]}'


class HostTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def host(self, script):
        program = os.path.join(self.folder, "program.py")
        with open(program, "w", encoding="utf-8") as file:
            file.write(PROGRAM.format(folder=self.folder) + script)
        host = Host(program)
        host.command = [sys.executable, program]
        return host

    def forget(self):
        """No host was started yet."""
        starts = os.path.join(self.folder, "starts")
        if os.path.exists(starts):
            os.remove(starts)

    def run_host(self, script):
        """(status, report, errors), the starts that it took and what was printed."""
        with contextlib.redirect_stdout(io.StringIO()) as out:
            ended = self.host(script).run("a.xps", "o.xps")
        return ended, os.path.getsize(os.path.join(self.folder, "starts")), out.getvalue()

    def compare(self, script):
        for name in ("together", "alone"):
            os.mkdir(os.path.join(self.folder, name))
        document = os.path.join(self.folder, "a.xps")
        with open(document, "w", encoding="utf-8"):
            pass
        with contextlib.redirect_stdout(io.StringIO()):
            return compare(self.host(script), [document], self.folder)

    def test_a_start_without_a_word_or_a_report_is_repeated_and_told(self):
        told = "status 1 without a word or a report: it never began, a.xps\n"
        self.assertEqual(((0, {"input": "a"}, ""), 2, told),
                         self.run_host(f"if before == 0: sys.exit(1)\nreport({ONE!r})"))

    @unittest.skipIf(os.name == "nt", "nothing is killed there")
    def test_a_program_that_was_killed_is_repeated_and_told(self):
        told = "status -9 killed, as Wine does to one that is slow to leave, a.xps\n"
        for done in (f"report({ONE!r})", "sys.stderr.write('why')"):
            with self.subTest(done):
                self.forget()
                self.assertEqual(((0, {"input": "a"}, ""), 2, told),
                                 self.run_host(f"if before == 0: {done}; os.kill(os.getpid(), 9)\nreport({ONE!r})"))

    def test_a_program_that_never_begins_is_given_up(self):
        ended, starts, out = self.run_host("sys.exit(1)")
        self.assertEqual(((1, None, ""), 3, 3), (ended, starts, out.count("\n")))

    def test_whatever_has_begun_is_not_repeated(self):
        for script, expected in (("sys.stderr.write('why'); sys.exit(2)", (2, None, "why")),
                                 ("report('{\"inputs\": []}'); sys.exit(1)", (1, None, "")),
                                 ("sys.exit(0)", (0, None, ""))):
            with self.subTest(script):
                self.forget()
                self.assertEqual((expected, 1, ""), self.run_host(script))

    def test_a_batch_without_all_its_reports_is_no_batch(self):
        self.assertEqual(["the batch ended with status 2 and 0 reports of 1: why"],
                         self.compare("sys.stderr.write('why'); sys.exit(2)"))

    def test_outputs_may_lie_in_other_folders(self):
        script = ("import json\noutput = sys.argv[sys.argv.index('--out-dir') + 1] + chr(92) + 'a.xps'\n"
                  "report(json.dumps({'inputs': [{'output': output, 'texts': ['standalone, together']}]}))")
        self.assertEqual([], self.compare(script))

    def test_another_text_is_another_report(self):
        script = "report('{\"inputs\": [{\"texts\": [\"%d\"]}]}' % before)"
        self.assertEqual(["000-a.xps: another report"], self.compare(script))

    def test_a_document_without_a_report_alone_is_told(self):
        self.assertEqual(["000-a.xps: alone it ended with status 2 and without a report: why"],
                         self.compare(f"if before == 0: report({ONE!r}); sys.exit(0)\n"
                                      "sys.stderr.write('why'); sys.exit(2)"))


def main():
    return 0 if unittest.main(argv=[__file__], exit=False).result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main())
