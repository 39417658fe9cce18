"""The tables of docs/performance.md, from what bench/measure.py measured."""
import datetime
import re
import statistics
import subprocess


def table(titles, rows):
    lines = ["| " + " | ".join(titles) + " |", "|---" + "|---:" * (len(titles) - 1) + "|"]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows])


def ratio(floors, figures):
    """The median of the pairs' ratios, with the least and the greatest."""
    ratios = [figure / floor for floor, figure in zip(floors, figures)]
    return f"{statistics.median(ratios):.2f} ({min(ratios):.2f} to {max(ratios):.2f})"


def time_of(microseconds):
    return f"{microseconds / 1000:.1f} ms" if microseconds >= 1000 else f"{microseconds:.0f} µs"


def jobs(results):
    rows = []
    for row in results["rows"]:
        floors, ours = zip(*row["pairs"])
        rows.append([row["kind"], f"{statistics.median(floors):.2f} s", f"{statistics.median(ours):.2f} s",
                     ratio(floors, ours)])
    return table([f"{results['pages']:,} pages of 40 paths", "Pass-through", "This filter", "Ratio"], rows)


def growth(rows):
    """A line for each size of job and, before those that are larger, one for the size that they are told against."""
    lines = []
    for kind in dict.fromkeys(row["kind"] for row in rows):
        same_kind = [row for row in rows if row["kind"] == kind]
        base_runs = [base for row in same_kind for base, _ in row["runs"]]
        base_peak = max(peak for _, peak in base_runs)

        def line(pages, start, seconds, peak, against, kind=kind, base_peak=base_peak):
            return pages, [f"{pages:,}, {kind}", f"{seconds:.2f} s", f"{1000 * (seconds - start) / pages:.2f} ms", against,
                           f"{peak / 1024:.1f} MB", f"{(peak - base_peak) / 1024:+.1f} MB"]

        of_kind = [line(same_kind[0]["base"], same_kind[0]["start"], statistics.median(seconds for seconds, _ in base_runs), base_peak,
                        "1.00")]
        for row in same_kind:
            of_one_page = [[(run[0] - row["start"]) / count for run, count in zip(pair, (row["base"], row["pages"]))]
                           for pair in row["runs"]]
            of_kind.append(line(row["pages"], row["start"], statistics.median(run[0] for _, run in row["runs"]),
                                max(run[1] for _, run in row["runs"]), ratio(*zip(*of_one_page))))
        lines += [text for _, text in sorted(of_kind)]
    return table(["Pages", "CPU", "Of one page", "Against 2,000 pages", "Peak memory", "Above 2,000 pages"], lines)


def pages(times):
    rows = []
    for name, text in (("None", "no ticket of its own"), ("Same", "the ticket of the page before"),
                       ("Other", "a ticket unlike that of the page before")):
        floors, figures = times[f"PageFloor{name}"], times[f"Page{name}"]
        rows.append([text, time_of(statistics.median(floors)), time_of(statistics.median(figures)),
                     time_of(statistics.median(b - a for a, b in zip(floors, figures)))])
    return table(["A page that needs nothing, with", "Floor", "This filter", "Above the floor"], rows)


def merger(times):
    rows = []
    for name, values in times.items():
        if name.startswith("Merger/"):
            features = int(name.split(":")[1])
            median = statistics.median(values)
            rows.append([f"{features:,}", f"{median / 1000:.2f} ms", f"{median / features:.1f} µs"])
    return table(["Features of the ticket", "Merger", "Of one feature"], rows)


def rewrite(times, memory):
    rows = []
    for name, floors in times.items():
        if name.startswith("Floor/"):
            size = name.split(":")[1]
            figures = times["Rewrite/MB:" + size]
            above = [b - a for a, b in zip(memory["floor/" + size], memory["rewrite/" + size])]
            rows.append([f"{size} MB", f"{statistics.median(floors):.1f} ms", f"{statistics.median(figures):.1f} ms",
                         ratio(floors, figures), f"{above[0]} KB", f"{above[1]} KB"])
    return table(["Page", "Floor", "Rewrite", "Ratio", "Working set above the floor", "Committed above the floor"], rows)


def machine():
    text = subprocess.run(["lscpu"], capture_output=True, text=True, check=True).stdout
    fields = dict(line.split(":", 1) for line in text.splitlines() if ":" in line)
    wine = subprocess.run(["dpkg-query", "-Wf", "${Version}", "wine64"], capture_output=True, text=True).stdout
    return f"{fields['Model name'].strip()}, {fields['CPU(s)'].strip()} CPUs, Wine {wine or 'unknown'}"


def headline(results, quiet):
    noise = "" if results["others"] <= quiet else "**the machine was not quiet, these figures are worth little**; "
    return (f"Measured on: {noise}{machine()}, {datetime.date.today()}; other processes used at most {results['others']:.2f} of a "
            f"processor, {results['repeated']} measurements were repeated.")


def all_tables(results):
    """The tables by the headings of the document that they stand under."""
    times = results["micro"]
    return {"Jobs": jobs(results["jobs"]), "Growth": growth(results["growth"]), "A page that needs nothing": pages(times),
            "The merger": merger(times), "Rewriting a page": rewrite(times, results["memory"])}


def document(results, quiet):
    parts = [headline(results, quiet)]
    for heading, text in all_tables(results).items():
        parts += ["## " + heading, text]
    return "\n\n".join(parts)


def put_into(text, results, quiet):
    """The document with new figures: nothing but its tables and the line on the machine changes."""
    text = re.sub(r"^Measured on: .*$", headline(results, quiet).replace("\\", r"\\"), text, flags=re.MULTILINE)
    for heading, figures in all_tables(results).items():
        section = re.compile(rf"(^## {re.escape(heading)}\n(?:(?!## |\|).*\n)*)((?:\|.*\n)+)", re.MULTILINE)
        text, count = section.subn(lambda found, new=figures: found.group(1) + new + "\n", text)
        if count != 1:
            raise ValueError(f"no table below the heading {heading}")
    return text
