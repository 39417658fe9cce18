#!/usr/bin/env python3
"""Sends every document of the corpus through the filter: corpus_test.py FILTERHOST TABLE.tsv

No run may crash, hang or end with a status that is not documented. A document that mutool draws must come out with
status 0; a page that the filter left alone keeps its markup byte for byte and its picture, a page that it turned has
the picture of the input turned by 270 degrees. What is refused must be refused with a reason, and the table says it.
"""
import os
import re
import sys
import tempfile
import xml.etree.ElementTree as ElementTree
from concurrent.futures import ThreadPoolExecutor

from host import Host, corpus_files
from pages import Package, difference, render, turned

DEVICES = ("simprinter", "longedge")
# Of a page's pixels, how many may differ strongly after a turn: text and hair lines are hinted on another grid.
TURNED_TOLERANCE = 0.02
BROKEN_PAGE = re.compile(r"at FixedPage (\S+)")


def compare(document, pictures, output, report):
    complaints = []
    before, after = Package(document), Package(output)
    pages = [part for part in report["parts"] if part["kind"] == "FixedPage"]
    new_pictures = render(output)
    if new_pictures is None or len(new_pictures) != len(pictures):
        return [f"mutool draws {len(pictures)} pages before and {len(new_pictures or [])} after"]
    if len(pages) != len(pictures):
        return [f"{len(pages)} pages were sent, mutool draws {len(pictures)}"]
    for number, page in enumerate(pages):
        if page["markup_rewritten"]:
            # Unbound prefixes are errors to this parser too.
            named = any(page["uri"] in text and "well-formed" in text for text in report["findings"])
            if is_well_formed(after, page["uri"]) == named:
                complaints.append(f"page {number + 1}: well-formed or not, the findings say otherwise")
            share = difference(turned(pictures[number]), new_pictures[number])
            if share > TURNED_TOLERANCE:
                complaints.append(f"page {number + 1}: {share:.1%} of the turned picture differ")
            continue
        if before.read(page["uri"]) != after.read(page["uri"]):
            complaints.append(f"page {number + 1}: the markup of {page['uri']} changed")
        if pictures[number].tobytes() != new_pictures[number].tobytes():
            complaints.append(f"page {number + 1}: the picture changed")
    return complaints


def is_well_formed(package, name):
    try:
        ElementTree.fromstring(package.read(name))
        return True
    except ElementTree.ParseError:
        return False


def judge(document, pictures, status, report, reason, output):
    """What is wrong with a run, as a list of texts."""
    if status not in (0, 1, 2, 3, 4):
        return [f"status {status}: {reason}"]
    if status == 0:
        return compare(document, pictures, output, report) if pictures else []
    complaints = [] if reason else [f"status {status} without a reason"]
    if os.path.exists(output):
        complaints.append("an output was left behind")
    # A page that is no XML can be handed on, but not turned.
    last = report["parts"][-1]["uri"] if report and report["parts"] else None
    excused = status == 1 and BROKEN_PAGE.search(reason) and not is_well_formed(
        Package(document), BROKEN_PAGE.search(reason)[1])
    if pictures and not excused:
        complaints.append(f"mutool draws it, but the status is {status}: {reason} (last sent: {last})")
    return complaints


def try_document(host, document):
    """For each device (device, status, pages, turned pages, reason, complaints)."""
    pictures = render(document)
    results = []
    with tempfile.TemporaryDirectory() as folder:
        for device in DEVICES:
            output = os.path.join(folder, device + os.path.splitext(document)[1])
            status, report, errors = host.run(document, output, "--device", device)
            reason = errors.strip().splitlines()[-1] if status and errors.strip() else ""
            pages = [part for part in (report or {}).get("parts", []) if part["kind"] == "FixedPage"]
            rewritten = sum(page["markup_rewritten"] for page in pages)
            complaints = judge(document, pictures, status, report, reason, output)
            results.append((device, status, len(pages), rewritten, reason, complaints))
    return results


def main(program, table):
    documents = corpus_files()
    if documents is None:
        print("skipped: there is no corpus folder (CORPUS_FOLDER)")
        return 77
    host = Host(program)
    failed = turned_pages = 0
    with ThreadPoolExecutor(os.cpu_count()) as pool, open(table, "w", encoding="utf-8") as rows:
        rows.write("document\tdevice\tstatus\tpages\tturned\treason\n")
        for document, results in zip(documents, pool.map(lambda name: try_document(host, name), documents)):
            name = "/".join(document.split(os.sep)[-2:])
            for device, status, pages, rewritten, reason, complaints in results:
                rows.write(f"{name}\t{device}\t{status}\t{pages}\t{rewritten}\t{reason}\n")
                turned_pages += rewritten
                failed += bool(complaints)
                for complaint in complaints:
                    print(f"{name} ({device}): {complaint}", flush=True)
    print(f"{len(documents)} documents, {len(DEVICES)} devices, {turned_pages} pages turned, {failed} runs with "
          f"complaints; table: {table}")
    # Nearly every sheet is a portrait one, and one of the devices wants the other.
    return 1 if failed or turned_pages < len(documents) else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2]))
