#!/usr/bin/env python3
"""Sends every document of the corpus through the filter: corpus_test.py FILTERHOST TABLE.tsv

No run may crash, hang or end with a status that is not documented. A document that mutool draws must come out with
status 0; a page that the filter left alone keeps its markup byte for byte and its picture, a page that it turned has
the picture of the input turned by 270 degrees. What is refused must be refused with a reason, and the table says it.
"""
import os
import sys
import tempfile

from host import Host, corpus_files
from pages import Package, difference, render, turned

DEVICES = ("simprinter", "longedge")
# Of a page's pixels, how many may differ strongly after a turn: text and hair lines are hinted on another grid.
TURNED_TOLERANCE = 0.02


def compare(document, output, report):
    complaints = []
    before, after = Package(document), Package(output)
    pages = [part for part in report["parts"] if part["kind"] == "FixedPage"]
    pictures, new_pictures = render(document), render(output)
    if new_pictures is None or len(new_pictures) != len(pictures):
        return [f"mutool draws {len(pictures)} pages before and {len(new_pictures or [])} after"]
    if len(pages) != len(pictures):
        return [f"{len(pages)} pages were sent, mutool draws {len(pictures)}"]
    for number, page in enumerate(pages):
        if page["markup_rewritten"]:
            share = difference(turned(pictures[number]), new_pictures[number])
            if share > TURNED_TOLERANCE:
                complaints.append(f"page {number + 1}: {share:.1%} of the turned picture differ")
            continue
        if before.read(page["uri"]) != after.read(page["uri"]):
            complaints.append(f"page {number + 1}: the markup of {page['uri']} changed")
        if difference(pictures[number], new_pictures[number]) > 0:
            complaints.append(f"page {number + 1}: the picture changed")
    return complaints


def try_document(host, document, device, folder):
    """(status, turned pages, reason, complaints)"""
    output = os.path.join(folder, "out" + os.path.splitext(document)[1])
    if os.path.exists(output):
        os.remove(output)
    status, report, errors = host.run(document, output, "--device", device)
    reason = errors.strip().splitlines()[-1] if errors.strip() else ""
    drawn = render(document) is not None
    if status not in (0, 1, 2, 3, 4):
        return status, 0, reason, [f"status {status}: {reason}"]
    if status != 0:
        complaints = []
        if drawn:
            complaints.append(f"mutool draws it, but the status is {status}: {reason}")
        if not reason:
            complaints.append(f"status {status} without a reason")
        if status == 3 and os.path.exists(output):
            complaints.append("an output was left behind")
        return status, 0, reason, complaints
    rewritten = sum(part.get("markup_rewritten", False) for part in report["parts"])
    return status, rewritten, "", compare(document, output, report) if drawn else []


def main(program, table):
    documents = corpus_files()
    if documents is None:
        print("skipped: there is no corpus folder (CORPUS_FOLDER)")
        return 77
    host = Host(program)
    failed = 0
    with tempfile.TemporaryDirectory() as folder, open(table, "w", encoding="utf-8") as rows:
        rows.write("document\tdevice\tstatus\tturned pages\treason\n")
        for document in documents:
            name = "/".join(document.split(os.sep)[-2:])
            for device in DEVICES:
                status, rewritten, reason, complaints = try_document(host, document, device, folder)
                rows.write(f"{name}\t{device}\t{status}\t{rewritten}\t{reason}\n")
                for complaint in complaints:
                    print(f"{name} ({device}): {complaint}")
                failed += bool(complaints)
    print(f"{len(documents)} documents, {len(DEVICES)} devices, {failed} runs with complaints; table: {table}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2]))
