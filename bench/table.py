"""Prints the tables of docs/performance.md from the results of bench/measure.sh: table.py TIME.json MEMORY.txt"""

import json
import os
import subprocess
import sys


def best_times(path):
    """The best of each benchmark's repetitions, in its unit: what disturbs a measurement only ever adds to it."""
    times = {}
    with open(path, encoding="utf-8") as file:
        for run in json.load(file)["benchmarks"]:
            if run["run_type"] == "iteration":
                name = run["run_name"].removesuffix("/real_time").removesuffix("/manual_time")
                times[name] = min(run["real_time"], times.get(name, run["real_time"]))
    return times


def peaks(path):
    """For each kind and size the largest peaks in KB: of the working set, and of the memory committed."""
    found = {}
    with open(path, encoding="utf-8") as file:
        for line in file:
            what, megabytes, working_set, committed = line.split()
            key = what, int(megabytes)
            old = found.get(key, (0, 0))
            found[key] = max(old[0], int(working_set)), max(old[1], int(committed))
    return found


def machine():
    text = subprocess.run(["lscpu"], capture_output=True, text=True, check=True).stdout
    fields = dict(line.split(":", 1) for line in text.splitlines() if ":" in line)
    wine = subprocess.run(["dpkg-query", "-Wf", "${Version}", "wine64"], capture_output=True, text=True).stdout
    load = os.getloadavg()[0]
    return (f"{fields['Model name'].strip()}, {fields['CPU(s)'].strip()} CPUs; Wine {wine}; "
            f"load average {load:.1f} at the end")


def main():
    times = best_times(sys.argv[1])
    memory = peaks(sys.argv[2])
    print(f"Machine: {machine()}.\n")
    print("| Page | Floor | Rewrite | Ratio | Working set above the floor | Committed above the floor |")
    print("|---:|---:|---:|---:|---:|---:|")
    for size in (1, 10, 100):
        floor, rewrite = times[f"Floor/MB:{size}"], times[f"Rewrite/MB:{size}"]
        above = [b - a for a, b in zip(memory["floor", size], memory["rewrite", size])]
        print(f"| {size} MB | {floor:.1f} ms | {rewrite:.1f} ms | {rewrite / floor:.2f} | {above[0]} KB | {above[1]} KB |")
    print("\n| Page that needs nothing | Time |\n|---|---:|")
    for name, label in (("PageMerge", "Merge of its ticket"), ("PageSettings", "Five settings"), ("PageDecision", "Decision")):
        print(f"| {label} | {times[name]:.0f} µs |")
    print("\n| Features of the ticket | Merger |\n|---:|---:|")
    for features in (10, 100, 1000):
        print(f"| {features} | {times[f'Merger/features:{features}'] / 1000:.2f} ms |")


if __name__ == "__main__":
    main()
