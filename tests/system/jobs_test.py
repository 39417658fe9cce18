#!/usr/bin/env python3
"""Generated jobs through the built DLL, compared with a model of the tickets and the decisions:
jobs_test.py FILTERHOST DEVICE-FOLDER MEDIASIZES.cpp [--jobs N] [--seed S] [--keep FOLDER]

For each page: whether it is turned, whether its ticket is replaced, the name of the new ticket, and its content and order
node by node. For each job: whether it comes to its end, and else, after which pages it fails. The tickets that hold at each
scope are worked out here too; of the host's report only what it says of each page is taken.
"""
import argparse
import collections
import os
import re
import sys
import tempfile

import ticketmodel
from generatedjobs import GeneratedJob, written_jobs
from host import ROOT, Host
from jobdocument import XPS, page_name, ticket_name, write_document
from pagedecision import Job, JobFails
from pages import Package

sys.path.insert(0, os.path.join(ROOT, "tests", "tickets"))
from readtickets import media_sizes

PAGE = f'<FixedPage xmlns="{XPS}" xml:lang="und" Width="480" Height="672"/>'
JOBS_PER_RUN = 50


def expect(job, device, table, default_sheet):
    """([(page name, own ticket's name or None, decision)] of the pages that are sent, why the job fails or None)."""
    def own(text):
        return None if text is None else ticketmodel.parse(text.encode())

    model, expected = Job(device, table, default_sheet), []
    try:
        model.enter(ticketmodel.JOB, own(job.ticket))
        for document, (ticket, pages) in enumerate(job.documents, 1):
            model.enter(ticketmodel.DOCUMENT, own(ticket))
            for page, ticket in enumerate(pages, 1):
                name = page_name(document, page)
                expected.append((name, ticket_name(name) if ticket is not None else None, model.page(own(ticket))))
    except JobFails as failure:
        return expected, str(failure)
    return expected, None


class Judge:
    """Compares what came out with what was expected, and counts."""

    def __init__(self, device):
        self.device = device
        self.counts = collections.Counter()
        self.failed = 0

    def judge(self, title, job, expected, failure, report, output):
        wrong = self.complaints(expected, failure, report, output)
        for _, _, decision in expected if hasattr(job, "turned_on") else ():
            if decision.is_turned != (self.device in job.turned_on):
                wrong.append("the model itself is wrong")
        for text in wrong:
            print(f"{title}: {text}", flush=True)
        self.failed += bool(wrong)
        self.counts["jobs"] += 1
        self.counts["jobs that fail"] += failure is not None
        self.counts["pages"] += len(expected)
        self.counts["turned"] += sum(decision.is_turned for _, _, decision in expected)
        self.counts["with a new ticket"] += sum(decision.ticket is not None for _, _, decision in expected)

    def complaints(self, expected, failure, report, output):
        sent = [part for part in report["parts"] if part["kind"] == "FixedPage"]
        if [part["uri"] for part in sent] != [name for name, _, _ in expected]:
            return [f"{len(sent)} pages were sent, not {len(expected)} ({failure}); {report['end']}, "
                    f"{report['errors']}, {report['crash']}"]
        if (report["end"] is None or not report["end"]["whole"]) != (failure is not None):
            return [f"the job ended with {report['end']}, expected: {failure or 'success'}"]
        after = Package(output) if failure is None else None
        number = None
        wrong = []
        for part, (name, own, decision) in zip(sent, expected):
            if part["markup_rewritten"] != decision.is_turned:
                wrong.append(f"{name} is {'turned' if part['markup_rewritten'] else 'not turned'}")
            if part["ticket_replaced"] != (decision.ticket is not None):
                wrong.append(f"the ticket of {name} is {'new' if part['ticket_replaced'] else 'its own'}")
            elif decision.ticket is not None:
                found = number_in(part["ticket_out"], own)
                if found is None or (number is not None and found != number + 1):
                    wrong.append(f"the ticket of {name} is named {part['ticket_out']}, after {number}")
                number = found
                if after:
                    wrong += compare_tickets(name, decision.ticket, after.read(after.ticket(name)))
        return wrong


def number_in(name, own):
    """The number in a new ticket's name; None when the name is not made as it must be."""
    if own is None:
        folder = file = ".xml"
    else:
        folder, file = own.rsplit("/", 1)
    found = re.fullmatch(re.escape(folder + "\\pagevalidator_") + "([0-9]+)" + re.escape("_" + file), name)
    return int(found[1]) if found else None


def compare_tickets(name, expected, data):
    actual = ticketmodel.parse(data)
    first, second = expected.markup(), actual.markup()
    if first == second:
        return []
    at = next((index for index, pair in enumerate(zip(first, second)) if pair[0] != pair[1]), min(len(first), len(second)))
    return [f"the new ticket of {name} has ...{second[max(0, at - 80):at + 120]}, not ...{first[max(0, at - 80):at + 120]}"]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program")
    parser.add_argument("device")
    parser.add_argument("sizes")
    parser.add_argument("--jobs", type=int, default=300)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--keep")
    options = parser.parse_args()
    with open(options.sizes, encoding="utf-8") as file:
        table = tuple(media_sizes(file.read()))
    # The locale decides on the sheet of last resort.
    os.environ["LC_ALL"] = "en_US.UTF-8"
    host, device, judge = Host(options.program), ticketmodel.Device(options.device), Judge(os.path.basename(options.device))
    jobs = {job.title: job for job in written_jobs()}
    jobs.update((f"job {number}", GeneratedJob(options.seed, number)) for number in range(options.jobs))
    titles = list(jobs)
    for start in range(0, len(titles), JOBS_PER_RUN):
        chosen = titles[start:start + JOBS_PER_RUN]
        with tempfile.TemporaryDirectory() as folder:
            folder = options.keep or folder
            os.makedirs(os.path.join(folder, "out"), exist_ok=True)
            documents = {title: os.path.join(folder, f"{number}.xps") for number, title in enumerate(chosen, start)}
            for title, path in documents.items():
                write_document(path, [(ticket, [(PAGE, own) for own in pages]) for ticket, pages in jobs[title].documents],
                               jobs[title].ticket)
            _, reports, errors = host.run_all(documents.values(), os.path.join(folder, "out"), "--device", options.device)
            if len(reports) != len(chosen):
                sys.exit(f"filterhost reports {len(reports)} of {len(chosen)} jobs: {errors}")
            for title, report in zip(chosen, reports):
                expected, failure = expect(jobs[title], device, table, "NorthAmericaLetter")
                output = os.path.join(folder, "out", os.path.basename(documents[title]))
                judge.judge(title, jobs[title], expected, failure, report, output)
    print(f"seed {options.seed}: " + ", ".join(f"{count} {name}" for name, count in judge.counts.items()))
    print(f"{judge.counts['jobs'] - judge.failed} passed, {judge.failed} failed")
    return 1 if judge.failed or not judge.counts["jobs"] else 0


if __name__ == "__main__":
    sys.exit(main())
