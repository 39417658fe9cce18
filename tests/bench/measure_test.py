#!/usr/bin/env python3
"""Tests of bench/measure.py: that a disturbed machine is noticed, and that figures come out as what they are."""
import os
import subprocess
import sys
import time
import unittest
import zipfile
from tempfile import TemporaryDirectory
from unittest import mock

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(ROOT, "bench"))

import makejob  # noqa: E402
import measure  # noqa: E402
import tables  # noqa: E402
from quiet import Watch, share_one_processor  # noqa: E402

RESULTS = {
    "others": 0.01, "repeated": 2,
    "micro": {"PageFloorNone": [2, 2], "PageNone": [5, 7], "PageFloorSame": [100, 100], "PageSame": [150, 170],
              "PageFloorOther": [100, 200], "PageOther": [300, 500], "Merger/features:10": [30, 50],
              "Floor/MB:1": [10, 20, 10], "Rewrite/MB:1": [11, 30, 12]},
    "memory": {"floor/1": [1000, 2000], "rewrite/1": [1100, 2004]},
    "jobs": {"pages": 2000, "rows": [{"kind": "some pages", "pairs": [[0.2, 0.5], [0.3, 0.6], [0.2, 0.4]]}]},
    "growth": [{"kind": "plain", "pages": 500, "base": 2000, "start": 0.1, "runs": [[[4.1, 41984], [1.1, 40960]]]},
               {"kind": "dear", "pages": 500, "base": 2000, "start": 0.1, "runs": [[[8.1, 51200], [2.1, 40960]]]},
               {"kind": "dear", "pages": 8000, "base": 2000, "start": 0.1,
                "runs": [[[8.1, 51100], [48.1, 56320]], [[16.1, 51200], [32.1, 56300]], [[8.1, 51200], [32.1, 56320]]]}],
}


class Quiet(unittest.TestCase):
    def test_the_work_of_others_is_seen(self):
        watch = Watch("/nowhere")
        # It counts as another's until it is waited for.
        busy = subprocess.Popen([sys.executable, "-c", "while True: pass"])
        try:
            watch.start()
            time.sleep(1)
            others = watch.stop()
        finally:
            busy.kill()
            busy.wait()
        # Less than a whole processor where there is not one for each who works.
        self.assertGreater(others, 0.2)

    def test_own_processes_are_no_others(self):
        watch = Watch("/nowhere")
        watch.start()
        own = 0.5
        with mock.patch("quiet.busy_seconds", return_value=watch.before[1] + own), \
                mock.patch("quiet.own_seconds", return_value=watch.before[2] + own):
            self.assertAlmostEqual(0, watch.stop())

    def test_the_session_shares_one_processor_with_those_who_ask_it(self):
        before = os.sched_getaffinity(0)
        processes = [subprocess.Popen(["sleep", "60"], env={**os.environ, "WINEPREFIX": prefix})
                     for prefix in ("/nowhere/ours", "/nowhere/others")]
        try:
            share_one_processor("/nowhere/ours")
            one = {max(before)}
            self.assertEqual([one, one, before],
                             [os.sched_getaffinity(process) for process in (0, *(each.pid for each in processes))])
        finally:
            os.sched_setaffinity(0, before)
            for process in processes:
                process.kill()
                process.wait()

    def bench(self, others):
        bench = object.__new__(measure.Bench)
        bench.allowed, bench.disturbance, bench.repeated = measure.QUIET, [], 0
        bench.watch = mock.Mock(stop=mock.Mock(side_effect=others))
        return bench

    def test_a_disturbed_pair_is_measured_again(self):
        bench = self.bench([0.5, 0.01])
        with mock.patch("time.sleep"):
            self.assertEqual("second", bench.quietly(mock.Mock(side_effect=["first", "second"])))
        self.assertEqual((1, [0.01]), (bench.repeated, bench.disturbance))

    def test_without_quiet_there_is_no_figure(self):
        with mock.patch("time.sleep"), self.assertRaises(measure.NotQuiet):
            self.bench([0.5] * 10).quietly(lambda: "disturbed")


class Tables(unittest.TestCase):
    def test_a_ratio_is_the_median_of_the_pairs(self):
        self.assertEqual("2.00 (2.00 to 2.50)", tables.ratio([0.2, 0.3, 0.2], [0.5, 0.6, 0.4]))
        self.assertIn("| some pages | 0.20 s | 0.50 s | 2.00 (2.00 to 2.50) |", tables.jobs(RESULTS["jobs"]))

    def test_a_page_is_told_above_its_floor(self):
        self.assertIn("| a ticket unlike that of the page before | 150 µs | 400 µs | 250 µs |",
                      tables.pages(RESULTS["micro"]))

    def test_growth_is_told_without_the_start(self):
        self.assertIn("| 500, plain | 1.10 s | 2.00 ms | 1.00 (1.00 to 1.00) | 40.0 MB | -1.0 MB |",
                      tables.growth(RESULTS["growth"]))

    def test_growth_is_told_against_the_smaller_job_of_the_same_pair(self):
        self.assertIn("| 8,000, dear | 32.10 s | 4.00 ms | 1.00 (0.50 to 1.50) | 55.0 MB | +5.0 MB |",
                      tables.growth(RESULTS["growth"]))

    def test_the_job_that_others_are_told_against_stands_among_them(self):
        rows = [line.split("|")[1].strip() for line in tables.growth(RESULTS["growth"]).splitlines()[2:]]
        self.assertEqual(["500, plain", "2,000, plain", "500, dear", "2,000, dear", "8,000, dear"], rows)
        self.assertIn("| 2,000, dear | 8.10 s | 4.00 ms | 1.00 | 50.0 MB | +0.0 MB |", tables.growth(RESULTS["growth"]))

    def test_a_rewrite_is_told_with_its_memory(self):
        self.assertIn("| 1 MB | 10.0 ms | 12.0 ms | 1.20 (1.10 to 1.50) | 100 KB | 4 KB |",
                      tables.rewrite(RESULTS["micro"], RESULTS["memory"]))

    def test_the_document_takes_the_figures_and_keeps_the_rest(self):
        with open(os.path.join(ROOT, "docs", "performance.md"), encoding="utf-8") as file:
            text = file.read()
        written = tables.put_into(text, RESULTS, measure.QUIET)

        def without_figures(document):
            return [line for line in document.splitlines() if not line.startswith(("|", "Measured on:"))]

        self.assertEqual(without_figures(text), without_figures(written))
        for figures in tables.all_tables(RESULTS).values():
            self.assertIn(figures, written)
        self.assertEqual(written, tables.put_into(written, RESULTS, measure.QUIET))

    def test_figures_of_a_machine_that_was_not_quiet_say_so(self):
        self.assertIn("not quiet", tables.headline(dict(RESULTS, others=0.5), measure.QUIET))
        self.assertNotIn("not quiet", tables.headline(RESULTS, measure.QUIET))


class Jobs(unittest.TestCase):
    def test_tickets_are_none_the_same_or_never_that_of_the_page_before(self):
        with TemporaryDirectory() as folder:
            texts = {}
            for tickets in ("none", "same", "other"):
                path = os.path.join(folder, tickets)
                makejob.make(path, 4, 40, tickets)
                with zipfile.ZipFile(path) as package:
                    texts[tickets] = [package.read(f"1/{page}.xml") for page in range(1, 5)
                                      if f"1/{page}.xml" in package.namelist()]
                    self.assertEqual(40, package.read("1/3.fpage").count(b"<Path "))
        self.assertEqual([], texts["none"])
        self.assertEqual(1, len(set(texts["same"])))
        self.assertEqual(4, len(texts["other"]))
        self.assertTrue(all(a != b for a, b in zip(texts["other"], texts["other"][1:])))


if __name__ == "__main__":
    sys.exit(0 if unittest.main(exit=False).result.wasSuccessful() else 1)
