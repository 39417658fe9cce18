#!/usr/bin/env python3
"""What the host keeps of a page until the output is saved: growth_test.py FILTERHOST

A job of 8,000 pages is run beside one of 2,000, in the host's own process: the peaks of their working sets tell what a
page adds. The bounds lie a little above what was measured (docs/performance.md): 800 and 2,140 bytes. When all that is told
of a page was kept in memory it was 2,116 and 3,979.
"""
import os
import subprocess
import sys
import tempfile
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(ROOT, "bench"))

import makejob  # noqa: E402
from host import Host, windows_path  # noqa: E402

FEW, MANY = 2000, 8000
# Pages long enough that what a filter writes of the few goes to the host's temporary file as well.
PATHS = 25
HOST = None


class Growth(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def peak(self, pages, tickets, device):
        """KB of the whole process."""
        job = os.path.join(self.folder.name, f"{pages}-{tickets}.xps")
        if not os.path.exists(job):
            makejob.make(job, pages, PATHS, tickets)
        output = os.path.join(self.folder.name, "out.xps")
        said = os.path.join(self.folder.name, "said.txt")
        # A file, no pipe: a Wine server that the program starts would hold a pipe open for good.
        with open(said, "wb") as out:
            process = subprocess.Popen([*HOST.command, "run", windows_path(job), "-o", windows_path(output), "--device",
                                        device, "--quiet", "--in-process"],
                                       stdin=subprocess.DEVNULL, stdout=out, stderr=subprocess.STDOUT)
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
        with open(said, encoding="utf-8", errors="replace") as text:
            self.assertEqual((0, ""), (process.returncode, text.read()))
        self.assertTrue(os.path.exists(output))
        return usage.ru_maxrss

    def bytes_of_a_page(self, tickets, device):
        few, many = (self.peak(pages, tickets, device) for pages in (FEW, MANY))
        added = (many - few) * 1024 / (MANY - FEW)
        print(f"{tickets}, {device}: {few / 1000:.1f} and {many / 1000:.1f} MB, a page adds {added:.0f} bytes", flush=True)
        return added

    def test_of_a_page_that_needs_nothing_little_is_kept(self):
        self.assertLess(self.bytes_of_a_page("none", "simprinter"), 850)

    def test_of_a_page_that_is_turned_little_more_is_kept(self):
        self.assertLess(self.bytes_of_a_page("none", "longedge"), 2500)


def main(program):
    global HOST
    HOST = Host(program)
    return 0 if unittest.main(argv=[__file__, "-v"], exit=False).result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
