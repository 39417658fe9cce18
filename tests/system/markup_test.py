#!/usr/bin/env python3
"""Generated pages through the filter, compared byte for byte with a model of the rewrite:
markup_test.py FILTERHOST [--pages N] [--seed S] [--page NUMBER]

--page prints one generated page and what the model makes of it, and runs nothing.
"""
import argparse
import os
import sys
import tempfile
import zipfile

import generatedpages
import pagemodel
from host import Host
from pages import Package

XPS = generatedpages.XPS
PACKAGE = "http://schemas.openxmlformats.org/package/2006"
# A start of filterhost costs more than a page.
PAGES_PER_DOCUMENT = 1000
DEVICE = "longedge"


def relationships(kind, target):
    return (f'<Relationships xmlns="{PACKAGE}/relationships">'
            f'<Relationship Id="R1" Type="{kind}" Target="{target}"/></Relationships>')


def page_name(number):
    return f"/Pages/{number}.fpage"


def write_document(path, pages):
    """A document of (number, markup) pages without a ticket, which the device therefore has turned."""
    parts = {
        "[Content_Types].xml": f'<Types xmlns="{PACKAGE}/content-types">'
        '<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>'
        '<Default Extension="fdseq" ContentType="application/vnd.ms-package.xps-fixeddocumentsequence+xml"/>'
        '<Default Extension="fdoc" ContentType="application/vnd.ms-package.xps-fixeddocument+xml"/>'
        '<Default Extension="fpage" ContentType="application/vnd.ms-package.xps-fixedpage+xml"/></Types>',
        "_rels/.rels": relationships(XPS + "/fixedrepresentation", "/Sequence.fdseq"),
        "Sequence.fdseq": f'<FixedDocumentSequence xmlns="{XPS}"><DocumentReference Source="/Document.fdoc"/>'
        "</FixedDocumentSequence>",
        "Document.fdoc": f'<FixedDocument xmlns="{XPS}">' + "".join(
            f'<PageContent Source="{page_name(number)}"/>' for number, _ in pages) + "</FixedDocument>",
    }
    with zipfile.ZipFile(path, "w") as archive:
        for name, content in parts.items():
            archive.writestr(name, content)
        for number, markup in pages:
            archive.writestr(page_name(number).lstrip("/"), markup)


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
    pages = [(number, generatedpages.page(seed, number)) for number in numbers]
    document, output = os.path.join(folder, "in.xps"), os.path.join(folder, "out.xps")
    write_document(document, pages)
    status, report, errors = host.run(document, output, "--device", DEVICE, timeout=280)
    if status != 0:
        sys.exit(f"filterhost ended with {status} at the pages {numbers[0]} to {numbers[-1]}: {errors}")
    after = Package(output)
    sent = {part["uri"]: part for part in report["parts"] if part["kind"] == "FixedPage"}
    complaints = []
    for number, markup in pages:
        name = page_name(number)
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
