#!/usr/bin/env python3
"""Ctrl+C ends a batch: interrupt_test.py FILTERHOST TESTFILTER SAMPLES"""
import json
import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))))
sys.path.insert(0, os.path.join(ROOT, "tests", "system"))

from host import Host, processes_of, windows_path  # noqa: E402

CLASS_ID = "{C1D7F0A2-35D4-4E0B-9C53-6B1C5A7E9D10}"
INTERRUPTED = 130


class InterruptTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.errors = os.path.join(self.folder, "errors.txt")

    def start(self, mode, *options):
        documents = [self.document(name) for name in ("minimal.xps", "names.xps", "utf16.xps")]
        command = Host(FILTERHOST).command + ["run", *documents, "--no-output", "--filter", windows_path(TESTFILTER),
                                              "--clsid", CLASS_ID, "--json", windows_path(self.report()), *options]
        with open(self.errors, "wb") as errors:
            return subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=errors,
                                    env=dict(os.environ, TESTFILTER_MODE=mode))

    def document(self, name):
        return windows_path(os.path.join(SAMPLES, name))

    def report(self):
        return os.path.join(self.folder, "report.json")

    def wait_for_report(self, process):
        """Until the run has begun: the report is made at its start."""
        for _ in range(600):
            if os.path.exists(self.report()) or process.poll() is not None:
                break
            time.sleep(0.1)
        time.sleep(2)
        self.assertIsNone(process.poll(), self.text())

    def text(self):
        with open(self.errors, encoding="utf-8", errors="replace") as file:
            return file.read()

    def interrupt(self, process):
        process.send_signal(signal.SIGINT)

    def test_the_first_cancels_the_jobs_as_a_user_would_and_begins_no_other(self):
        process = self.start("hang-until-shutdown", "-j", "1")
        self.wait_for_report(process)
        self.interrupt(process)
        self.assertEqual(INTERRUPTED, process.wait(60), self.text())
        self.assertIn("minimal.xps: the filter failed with 0x800704C7 ERROR_CANCELLED", self.text())
        self.assertNotIn("names.xps", self.text())

    def test_the_second_ends_everything_at_once(self):
        process = self.start("hang", "-j", "1")
        self.wait_for_report(process)
        self.interrupt(process)
        time.sleep(1)
        self.assertIsNone(process.poll(), self.text())
        self.interrupt(process)
        self.assertEqual(INTERRUPTED, process.wait(10), self.text())

    def test_it_counts_after_the_last_job_has_begun_too(self):
        process = self.start("hang-until-shutdown", "-j", "3")
        self.wait_for_report(process)
        self.interrupt(process)
        self.assertEqual(INTERRUPTED, process.wait(60), self.text())
        self.assertEqual(3, self.text().count("ERROR_CANCELLED"))

    def test_no_process_outlives_a_host_that_was_killed(self):
        for words in (["run", self.document("minimal.xps"), "--no-output", "--filter", windows_path(TESTFILTER)],
                      ["fuzz", windows_path(TESTFILTER), "-j", "1", "--cases", "5", "--timeout", "60"]):
            with self.subTest(words[0]):
                mark = f"{words[0]}-{os.getpid()}"
                process = subprocess.Popen(Host(FILTERHOST).command + [*words, "--clsid", CLASS_ID],
                                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                           env=dict(os.environ, TESTFILTER_MODE="hang", HOST_MARK=mark))
                self.wait_until(lambda: len(processes_of(mark)) > 1)
                time.sleep(2)
                process.kill()
                process.wait(10)
                self.wait_until(lambda: not processes_of(mark))

    def wait_until(self, holds):
        for _ in range(100):
            if holds():
                return
            time.sleep(0.1)
        self.fail("it did not come to it in ten seconds")

    def test_a_validation_tells_what_it_has_come_to(self):
        listing = subprocess.run(Host(FILTERHOST).command + ["list", "tests", "--level", "1"], stdout=subprocess.PIPE,
                                 check=True).stdout.decode()
        names = [line.split()[1] for line in listing.splitlines() if line.strip()]
        output = os.path.join(self.folder, "output.txt")
        with open(output, "wb") as file, open(self.errors, "wb") as errors:
            process = subprocess.Popen(
                Host(FILTERHOST).command + ["validate", windows_path(TESTFILTER), "--clsid", CLASS_ID, "--level", "2",
                                            "-j", "1", "--json", windows_path(self.report())],
                stdout=file, stderr=errors, env=dict(os.environ, TESTFILTER_MODE="hang-until-shutdown"))
        self.wait_until(lambda: names[-1] in open(output, encoding="utf-8").read())
        time.sleep(2)
        self.assertIsNone(process.poll(), self.text())
        self.interrupt(process)
        self.assertEqual(INTERRUPTED, process.wait(60), self.text())
        with open(self.report(), encoding="utf-8") as file:
            tests = json.load(file)["tests"]
        self.assertEqual([(name, "passed") for name in names], [(test["name"], test["result"]) for test in tests])

    def test_it_counts_in_process(self):
        process = self.start("hang-until-shutdown", "--in-process")
        self.wait_for_report(process)
        self.interrupt(process)
        self.assertEqual(INTERRUPTED, process.wait(60), self.text())


def main(filterhost, testfilter, samples, *options):
    global FILTERHOST, TESTFILTER, SAMPLES
    FILTERHOST, TESTFILTER, SAMPLES = filterhost, testfilter, samples
    if os.name == "nt":
        print("skipped: a console of the system's own has no signals")
        return 77
    return 0 if unittest.main(argv=[__file__, *options], exit=False).result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
