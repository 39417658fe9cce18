#!/usr/bin/env python3
"""Generated pages through the filter, compared byte for byte with a model of the rewrite:
markup_test.py FILTERHOST [--pages N] [--seed S] [--page NUMBER]

--page prints one generated page and what the model makes of it, and runs nothing.
"""
import argparse
import os
import sys
import tempfile

import generatedpages
import pagemodel
from host import Host
from jobdocument import page_name, write_document
from pages import Package

# A start of filterhost costs more than a page.
PAGES_PER_DOCUMENT = 1000
DEVICE = "longedge"


def first_difference(expected, actual):
    at = next((index for index, pair in enumerate(zip(expected, actual)) if pair[0] != pair[1]),
              min(len(expected), len(actual)))
    place = slice(max(0, at - 60), at + 60)
    return f"byte {at}: {actual[place]!r}, not {expected[place]!r}"


def complaint(expected, actual):
    """What sets the bytes of a page apart from those that the model has, None where nothing does."""
    return None if expected == actual else first_difference(expected, actual or b"")


def check_document(host, folder, numbers, seed):
    """The complaints about the pages of one document."""
    pages = [generatedpages.page(seed, number) for number in numbers]
    document, output = os.path.join(folder, "in.xps"), os.path.join(folder, "out.xps")
    # Without a ticket of their own the device has them turned.
    write_document(document, [(None, [(markup, None) for markup in pages])])
    status, report, errors = host.run(document, output, "--device", DEVICE, timeout=280)
    if status != 0:
        sys.exit(f"filterhost ended with {status} at the pages {numbers[0]} to {numbers[-1]}: {errors}")
    after = Package(output)
    sent = {part["uri"]: part for part in report["parts"] if part["kind"] == "FixedPage"}
    complaints = []
    for page, (number, markup) in enumerate(zip(numbers, pages), 1):
        name = page_name(1, page)
        text = None if sent[name]["markup_rewritten"] else "not turned"
        text = text or complaint(pagemodel.turned_markup(markup), after.read(name))
        if text:
            complaints.append(f"page {number}: {text}")
    return complaints


def show(seed, number):
    markup = generatedpages.page(seed, number)
    sys.stdout.buffer.write(markup + b"\n\n" + pagemodel.turned_markup(markup) + b"\n")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program")
    parser.add_argument("--pages", type=int, default=2000)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--page", type=int)
    options = parser.parse_args()
    if options.page is not None:
        show(options.seed, options.page)
        return 0
    host = Host(options.program)
    failed = 0
    for start in range(0, options.pages, PAGES_PER_DOCUMENT):
        numbers = range(start, min(start + PAGES_PER_DOCUMENT, options.pages))
        with tempfile.TemporaryDirectory() as folder:
            complaints = check_document(host, folder, numbers, options.seed)
        for text in complaints[:20]:
            print(text)
        failed += len(complaints)
    print(f"{options.pages} generated pages, seed {options.seed}")
    print(f"{options.pages - failed} passed, {failed} failed")
    return 1 if failed or options.pages == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
