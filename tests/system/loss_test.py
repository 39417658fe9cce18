#!/usr/bin/env python3
"""Whatever ends the host, nothing is lost: loss_test.py FILTERHOST SAMPLES

The host is killed at random moments, finds the disk full at every place, a folder that cannot be written and another
host at the same files. An output is then the old one, none, or whole; so is a report; and no temporary file is left.
"""
import json
import os
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
import xml.etree.ElementTree

from host import ROOT, Host, processes_of, windows_path

sys.path.insert(0, os.path.join(ROOT, "bench"))

import makejob  # noqa: E402

SEED = 1
WRONG_USAGE = 2
OLD = b"what was there before"
# Enough for what the filter writes to go to the host's temporary file as well.
PAGES, PATHS = 500, 100


def has_begun(process):
    """Whether a process runs code of the program: Wine leaves one that was just being started, when who starts it is
    killed, waiting for good with its one thread."""
    try:
        with open(f"/proc/{process}/status", encoding="utf-8") as file:
            return "\nThreads:\t1\n" not in file.read()
    except OSError:
        return False


def end(process):
    try:
        os.kill(process, signal.SIGKILL)
    except ProcessLookupError:
        pass


def content(path):
    if not os.path.exists(path):
        return None
    with open(path, "rb") as file:
        return file.read()


class LossTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.inputs = [os.path.join(folder.name, name) for name in ("job.xps", "minimal.xps")]
        makejob.make(cls.inputs[0], PAGES, PATHS, "none")
        shutil.copy(os.path.join(SAMPLES, "minimal.xps"), cls.inputs[1])
        cls.good = {}
        started = time.monotonic()
        out = os.path.join(folder.name, "out")
        status = subprocess.run([*HOST.command, "run", *map(windows_path, cls.inputs), "--out-dir", windows_path(out),
                                 "--device", "longedge", "--quiet"], check=False).returncode
        assert status == 0, status
        cls.duration = time.monotonic() - started
        for name in os.listdir(out):
            cls.good[name] = content(os.path.join(out, name))

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        os.mkdir(self.path("tmp"))
        os.mkdir(self.path("out"))

    def path(self, name):
        return os.path.join(self.folder, name)

    def reset(self):
        """One output and one report are there from before."""
        for name in (*("out/" + each for each in self.good), "report.json", "report.xml", "trace.json"):
            if os.path.exists(self.path(name)):
                os.remove(self.path(name))
        for name in ("out/minimal.xps", "report.json"):
            with open(self.path(name), "wb") as file:
                file.write(OLD)

    def arguments(self, *options):
        return [*HOST.command, "run", *map(windows_path, self.inputs), "--device", "longedge", "--quiet", "-j", "2", *options]

    def all_outputs(self):
        return ["--out-dir", windows_path(self.path("out")), "--json", windows_path(self.path("report.json")), "--junit",
                windows_path(self.path("report.xml"))]

    def start(self, arguments, mark="", limit=None):
        """The host, which writes no byte of a file beyond the limit."""
        def in_child():
            if limit is not None:
                import resource
                resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))
        environment = {**os.environ, "TMP": windows_path(self.path("tmp")), "TEMP": windows_path(self.path("tmp")),
                       "HOST_MARK": mark}
        if limit is not None:
            # A build that counts what runs would spoil its counters, and complain of it where errors are looked for.
            environment |= {"GCOV_PREFIX": windows_path(self.path("counters")), "GCOV_ERROR_FILE": "NUL"}
        # A file, no pipe: a Wine server that the program starts would hold a pipe open for good. The signal of the
        # limit stays ignored, as this interpreter has it.
        with open(self.path("errors.txt"), "wb") as errors:
            return subprocess.Popen(arguments, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=errors,
                                    env=environment, preexec_fn=in_child, restore_signals=False)

    def errors(self):
        with open(self.path("errors.txt"), encoding="utf-8", errors="replace") as file:
            return file.read().splitlines()

    def wait_until(self, holds, what, seconds=15):
        end = time.monotonic() + seconds
        while not holds():
            self.assertLess(time.monotonic(), end, what)
            time.sleep(0.01)

    def temporary_files(self):
        return os.listdir(self.path("tmp")) + [name for name in os.listdir(self.path("out")) if name not in self.good]

    def expect_nothing_lost(self):
        self.wait_until(lambda: not self.temporary_files(), f"left: {self.temporary_files()}")
        for name, good in self.good.items():
            old = OLD if name == "minimal.xps" else None
            self.assertIn(content(self.path("out/" + name)), (old, good), name)
        report = content(self.path("report.json"))
        if report != OLD:
            inputs = json.loads(report)["inputs"]
            self.assertEqual([windows_path(name) for name in self.inputs[:len(inputs)]], [each["input"] for each in inputs])
        report = content(self.path("report.xml"))
        if report is not None:
            self.assertEqual("testsuite", xml.etree.ElementTree.fromstring(report).tag)

    def kill(self, processes, whom):
        """The child, the parent (which is the oldest), or both."""
        chosen = {"parent": processes[:1], "child": processes[1:2], "both": processes}[whom]
        for process in chosen:
            end(process)

    def test_when_it_is_killed(self):
        chance = random.Random(SEED)
        moments = 200 if os.environ.get("PAGEVALIDATE_LONG") else 20
        killed, whole = 0, 0
        for number in range(moments):
            self.reset()
            whom = ("child", "parent", "both")[number % 3]
            mark = f"loss-{os.getpid()}-{number}-"
            process = self.start(self.arguments(*self.all_outputs()), mark)
            delay = chance.uniform(0, self.duration)
            if number % 2:
                # While an output is being written.
                self.wait_until(lambda: process.poll() is not None or any(name.endswith(".tmp") for name in
                                                                          os.listdir(self.path("out"))), "no output")
                delay = chance.uniform(0, self.duration / 10)
            time.sleep(delay)
            self.kill(sorted(processes_of(mark)), whom)
            killed += process.poll() is None
            process.wait(60)
            self.wait_until(lambda: not any(map(has_begun, processes_of(mark))), "a process goes on")
            for process in processes_of(mark):
                end(process)
            with self.subTest(number=number, whom=whom, delay=delay):
                self.expect_nothing_lost()
            whole += all(content(self.path("out/" + name)) == good for name, good in self.good.items())
        print(f"killed at {killed} of {moments} moments (seed {SEED}); {whole} times all outputs were there", flush=True)
        self.assertLess(moments / 2, killed)
        # And it is as if nothing had been.
        self.reset()
        self.assertEqual(0, self.start(self.arguments(*self.all_outputs())).wait(120), self.errors())
        self.assertEqual(self.good, {name: content(self.path("out/" + name)) for name in self.good})

    def expect_refused(self, line):
        """One line for each thing that cannot be written."""
        lines = self.errors()
        self.assertTrue(lines)
        for each in lines:
            self.assertTrue(each.startswith("filterhost: ") and line in each, lines)
        self.assertEqual(len(set(lines)), len(lines))

    def test_when_the_disk_is_full_under_an_output(self):
        size = len(self.good["job.xps"])
        steps = 40 if os.environ.get("PAGEVALIDATE_LONG") else 8
        for step in range(steps):
            limit = 4096 + (size - 4097) * step // (steps - 1)
            self.reset()
            process = self.start([*HOST.command, "run", windows_path(self.inputs[0]), "-o",
                                  windows_path(self.path("out/job.xps")), "--device", "longedge", "--quiet"], limit=limit)
            with self.subTest(limit=limit):
                self.assertEqual(WRONG_USAGE, process.wait(120), self.errors())
                self.expect_refused(": the output cannot be written: ")
                self.assertEqual(1, len(self.errors()))
                self.expect_nothing_lost()
                self.assertIsNone(content(self.path("out/job.xps")))

    def test_when_the_disk_is_full_under_a_report(self):
        for option, name in (("--json", "report.json"), ("--junit", "report.xml"), ("--trace", "trace.json")):
            arguments = [*HOST.command, "run", windows_path(self.inputs[1]), "--quiet", "--no-output", option,
                         windows_path(self.path(name))]
            self.reset()
            self.assertEqual(0, self.start(arguments).wait(120), self.errors())
            size = os.path.getsize(self.path(name))
            for limit in (16, size // 3, size // 2, size * 9 // 10):
                self.reset()
                process = self.start(arguments, limit=limit)
                with self.subTest(option=option, limit=limit):
                    self.assertEqual(WRONG_USAGE, process.wait(120), self.errors())
                    if limit > 256:
                        self.expect_refused(f"{option}: cannot be written: ")
                    self.expect_nothing_lost()

    def test_when_the_folder_cannot_be_written(self):
        folder = self.path("readonly")
        os.mkdir(folder, 0o555)
        if os.access(folder, os.W_OK):
            # Root may write anywhere but where the system makes the files.
            folder = "/sys/kernel"
        before = sorted(os.listdir(folder))
        for options, line in ((["-o", windows_path(folder + "/a.xps")], ": the output cannot be written: "),
                              (["--no-output", "--json", windows_path(folder + "/a.json")], "--json: cannot be written: "),
                              (["--no-output", "--junit", windows_path(folder + "/a.xml")], "--junit: cannot be written: "),
                              (["--no-output", "--trace", windows_path(folder + "/t.json")], "--trace: cannot be written: ")):
            with self.subTest(line):
                process = self.start([*HOST.command, "run", windows_path(self.inputs[1]), "--quiet", *options])
                self.assertEqual(WRONG_USAGE, process.wait(60), self.errors())
                self.expect_refused(line)
                self.assertEqual(1, len(self.errors()))
                self.assertEqual(before, sorted(os.listdir(folder)))

    def test_when_two_hosts_write_the_same_files(self):
        for _ in range(3):
            self.reset()
            processes = [self.start(self.arguments(*self.all_outputs())) for _ in range(2)]
            statuses = sorted(process.wait(120) for process in processes)
            # The report of one keeps the other out, or it is over before the other begins.
            self.assertIn(statuses, ([0, 0], [0, WRONG_USAGE]), self.errors())
            self.expect_nothing_lost()
            self.assertEqual(self.good, {name: content(self.path("out/" + name)) for name in self.good})
            self.assertEqual(2, len(json.loads(content(self.path("report.json")))["inputs"]))

    def test_when_two_hosts_write_one_output(self):
        for _ in range(3):
            self.reset()
            arguments = self.arguments("--out-dir", windows_path(self.path("out")))
            processes = [self.start(arguments) for _ in range(2)]
            self.assertEqual([0, 0], [process.wait(120) for process in processes], self.errors())
            self.expect_nothing_lost()
            self.assertEqual(self.good, {name: content(self.path("out/" + name)) for name in self.good})


def main(filterhost, samples, *options):
    global HOST, SAMPLES
    HOST, SAMPLES = Host(filterhost), samples
    if os.name == "nt":
        print("skipped: the limits and signals that it takes are those of other systems")
        return 77
    return 0 if unittest.main(argv=[__file__, *options], exit=False, verbosity=2).result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
