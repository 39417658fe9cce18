#!/usr/bin/env python3
"""Measures the filter beside its floor and prints the tables of docs/performance.md: measure.py BUILD-FOLDER

bench/measure.sh builds what it needs and calls it. A figure and its floor are measured in turn (floor, filter, floor,
filter, …); a ratio is the median of the pairs, with the smallest and the largest beside it. A pair during which other
processes worked is measured again. When that does not help, it says so, prints no table and ends with status 1.
"""
import argparse
import json
import os
import re
import statistics
import subprocess
import sys
import time

import makejob
import tables
from quiet import Watch, share_one_processor

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
# Others may use this part of one processor.
QUIET = 0.05
PASS_THROUGH = "{6B1F0C8E-6D0B-4B57-9D0F-5C6F3E4A7D21}"
# The device that takes the pages as they are, and the one for which every page is turned.
DEVICES = {"nothing to change": "simprinter", "every page turned": "longedge"}
# Of the jobs that grow: what they have least of, and most.
GROWING = (("none", "nothing to change"), ("other", "every page turned"))
TICKETS = {"none": "no page tickets", "same": "the same ticket on each page", "other": "another ticket on each page"}


class NotQuiet(Exception):
    pass


class Bench:
    def __init__(self, build, smoke, noisy):
        self.build = os.path.abspath(build)
        self.folder = os.path.join(self.build, "bench")
        self.smoke = smoke
        self.pairs = 1 if smoke else 5
        self.allowed = float("inf") if smoke or noisy else QUIET
        self.environment = dict(os.environ)
        self.environment.setdefault("WINEPREFIX", os.path.join(ROOT, "build", "wine"))
        self.watch = Watch(self.environment["WINEPREFIX"])
        self.disturbance = []  # of every figure that was kept
        self.repeated = 0
        os.makedirs(self.folder, exist_ok=True)
        self.host_options = ["--in-process"] if "--in-process" in self.host_help() else []

    def program(self, name):
        return [os.path.join(ROOT, "cmake", "wine-run.sh"), os.path.join(self.build, "bin", name)]

    def host_help(self):
        path = os.path.join(self.folder, "help.txt")
        self.run([*self.program("filterhost.exe"), "run", "--help"], path)
        with open(path, encoding="utf-8", errors="replace") as file:
            return file.read()

    def run(self, command, output=os.devnull):
        """(CPU seconds of the process, its peak of memory in KB). What the Wine server does for it is not in it."""
        # A file and no pipe: the session's services would hold the pipe open.
        with open(output, "wb") as out:
            process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=out, stderr=subprocess.STDOUT,
                                       env=self.environment)
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode:
            with open(output, encoding="utf-8", errors="replace") as text:
                said = text.read() if output != os.devnull else ""
            sys.exit(f"measure: {' '.join(command)} ended with status {process.returncode}\n{said}")
        return usage.ru_utime + usage.ru_stime, usage.ru_maxrss

    def quietly(self, measure):
        """What `measure` returns from a run during which others did not work."""
        for attempt in range(8):
            self.watch.start()
            result = measure()
            others = self.watch.stop()
            if others <= self.allowed:
                self.disturbance.append(others)
                return result
            self.repeated += 1
            # What disturbs for a minute must not throw away a quarter of an hour.
            time.sleep(min(60, 5 * 2**attempt))
        raise NotQuiet(f"other processes used {others:.2f} of a processor; load average {os.getloadavg()[0]:.1f}")

    # --- jobs through filterhost

    def job(self, pages, tickets):
        path = os.path.join(self.folder, f"job-{pages}-{tickets}.xps")
        if not os.path.exists(path) or os.path.getmtime(path) < os.path.getmtime(makejob.__file__):
            makejob.make(path + ".new", pages, 40, tickets)
            os.replace(path + ".new", path)
        return path

    def host(self, job, device, filter_options=()):
        return self.run([*self.program("filterhost.exe"), "run", windows_path(job), "-o",
                         windows_path(os.path.join(self.folder, "out.xps")), "--device", device, "--quiet",
                         *self.host_options, *filter_options], os.path.join(self.folder, "host.txt"))

    def pass_through(self, job, device):
        return self.host(job, device, ["--filter", windows_path(os.path.join(self.build, "bin", "passthrough.dll")),
                                       "--clsid", PASS_THROUGH])

    def report(self, job, device):
        """What filterhost says of the run."""
        report = os.path.join(self.folder, "report.json")
        self.host(job, device, ["--json", windows_path(report)])
        with open(report, encoding="utf-8") as file:
            return json.load(file)["inputs"][0]

    def check_kind(self, job, pages, turned, device):
        """That every page was turned, or none: or the row would have another meaning than its name. And that the host
        has no fault to find, which takes its time."""
        report = self.report(job, device)
        faults = [fault["text"] for fault in report["breaches"] + report["findings"]]
        if faults:
            sys.exit(f"measure: {job} for {device}: {faults[0]}")
        rewritten = sum(part.get("markup_rewritten", False) for part in report["parts"])
        if rewritten != (pages if turned else 0):
            sys.exit(f"measure: {rewritten} of {pages} pages of {job} were turned for {device}")

    def jobs(self):
        pages = 20 if self.smoke else 2000
        rows = []
        for change, device in DEVICES.items():
            for tickets, text in TICKETS.items():
                job = self.job(pages, tickets)
                self.check_kind(job, pages, change == "every page turned", device)
                # The first one warms the caches.
                self.pass_through(job, device)
                pairs = [self.quietly(lambda: (self.pass_through(job, device)[0], self.host(job, device)[0]))
                         for _ in range(self.pairs)]
                rows.append({"kind": f"{text}, {change}", "pairs": pairs})
        return {"pages": pages, "rows": rows}

    def growth(self):
        rows = []
        for tickets, change in GROWING:
            device = DEVICES[change]
            # What a job takes that has hardly a page: the start of the process, the device model, the tickets of the job.
            start = statistics.median(self.quietly(lambda: self.host(self.job(1, tickets), device))[0]
                                      for _ in range(self.pairs))
            base = 10 if self.smoke else 2000
            base_job = self.job(base, tickets)
            for pages in (20,) if self.smoke else (500, 8000, 32000):
                job = self.job(pages, tickets)
                runs = [self.quietly(lambda: (self.host(base_job, device), self.host(job, device)))
                        for _ in range(min(self.pairs, 3) if pages > 8000 else self.pairs)]
                rows.append({"kind": f"{TICKETS[tickets]}, {change}", "pages": pages, "base": base, "start": start,
                             "runs": runs})
        return rows

    # --- bench_pagevalidate

    def micro(self):
        """{name: the times of the repetitions}. In each repetition a figure follows its floor."""
        times = {}
        for number in range(self.pairs):
            path = os.path.join(self.folder, f"time-{number}.json")
            command = [*self.program("bench_pagevalidate.exe"), "--benchmark_out_format=json",
                       "--benchmark_out=" + windows_path(path),
                       "--benchmark_min_time=" + ("0.001" if self.smoke else "0.3")]
            if self.smoke:
                command.append("--benchmark_filter=/(MB:1|features:10)/|^Page")
            self.quietly(lambda: self.run(command))
            with open(path, encoding="utf-8") as file:
                for run in json.load(file)["benchmarks"]:
                    if run["run_type"] == "iteration" and not run.get("error_occurred"):
                        name = re.sub(r"/(real_time|manual_time|iterations:\d+)", "", run["run_name"])
                        times.setdefault(name, []).append(run["real_time"])
        return times

    def memory(self):
        """Peaks in KB of processes that rewrite one page: of the working set and of the memory committed."""
        peaks = {}
        for megabytes in (1,) if self.smoke else (1, 10, 100):
            for what in ("floor", "rewrite"):
                found = []
                for _ in range(1 if self.smoke else 3):
                    path = os.path.join(self.folder, "memory.txt")
                    self.run([*self.program("bench_pagevalidate.exe"), "--memory", what, str(megabytes)], path)
                    with open(path, encoding="ascii") as file:
                        found.append([int(word) for word in file.read().split()])
                peaks[f"{what}/{megabytes}"] = [max(values) for values in zip(*found)]
        return peaks


def windows_path(path):
    return "Z:" + os.path.abspath(path).replace("/", "\\")


def step(text):
    print(f"== {text}", file=sys.stderr, flush=True)


def main():
    parser = argparse.ArgumentParser(description="Measures the filter beside its floor.")
    parser.add_argument("build", help="a finished release build")
    parser.add_argument("--noisy", action="store_true",
                        help="print the tables of a machine that is not quiet; they say so")
    parser.add_argument("--write", action="store_true", help="put the tables into docs/performance.md as well")
    parser.add_argument("--smoke", action="store_true", help="that it still runs: tiny jobs, once, quiet or not")
    options = parser.parse_args()

    bench = Bench(options.build, options.smoke, options.noisy)
    if not options.smoke:
        share_one_processor(bench.environment["WINEPREFIX"])
    results = {}
    try:
        for name, text in (("micro", "pages, merger and rewrite"), ("memory", "memory of a rewrite"),
                           ("jobs", "jobs of 2,000 pages"), ("growth", "jobs of 500 to 32,000 pages")):
            step(f"measuring {text}")
            results[name] = getattr(bench, name)()
    except NotQuiet as reason:
        print(f"No figures: the machine was not quiet ({reason}). Nothing else may run meanwhile; "
              "--noisy prints what was measured all the same.")
        return 1
    results["others"] = max(bench.disturbance)
    results["repeated"] = bench.repeated
    with open(os.path.join(bench.folder, "results.json"), "w", encoding="utf-8") as file:
        json.dump(results, file, indent=1)
    print(tables.document(results, QUIET))
    path = os.path.join(ROOT, "docs", "performance.md")
    with open(path, encoding="utf-8") as file:
        text = tables.put_into(file.read(), results, QUIET)
    if options.write:
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
    return 0


if __name__ == "__main__":
    sys.exit(main())
