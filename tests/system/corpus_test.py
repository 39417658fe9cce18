#!/usr/bin/env python3
"""Sends every document of the corpus through the filter: corpus_test.py FILTERHOST TABLE.tsv

No run may crash, hang or end with a status that is not documented. A document that mutool draws must come out with
status 0; a page that the filter left alone keeps its markup byte for byte and its picture, a page that it turned has
the markup that a model of the rewrite has, and the picture of the input turned by 270 degrees. A document that mutool
refuses, but the filter takes, is judged by its parts and its markup. What is refused must be refused with a reason, and
the table says it.
"""
import os
import re
import sys
import tempfile
import xml.etree.ElementTree as ElementTree
from concurrent.futures import ThreadPoolExecutor

import pagemodel
from host import Host, corpus_files
from markup_test import first_difference
from pages import Package, difference, render, turned

DEVICES = ("simprinter", "longedge")
BROKEN_PAGE = re.compile(r"at FixedPage (\S+)")


def compare(document, pictures, output, report):
    """What is wrong with a document that came out; the pictures are those of mutool, None where it refuses it."""
    before, after = Package(document), Package(output)
    pages = [part for part in report["parts"] if part["kind"] == "FixedPage"]
    complaints = compare_structure(before, after, pages)
    for number, page in enumerate(pages, 1):
        complaints += [f"page {number}: {text}" for text in compare_markup(before, after, page, report["findings"])]
    if pictures is None:
        return complaints
    new_pictures = render(output)
    if new_pictures is None or len(new_pictures) != len(pictures):
        return complaints + [f"mutool draws {len(pictures)} pages before and {len(new_pictures or [])} after"]
    if len(pages) != len(pictures):
        return complaints + [f"{len(pages)} pages were sent, mutool draws {len(pictures)}"]
    for number, (page, picture, new_picture) in enumerate(zip(pages, pictures, new_pictures), 1):
        text = compare_pictures(page, picture, new_picture)
        complaints += [f"page {number}: {text}"] if text else []
    return complaints


def compare_structure(before, after, pages):
    """Nothing may have changed but turned pages, and tickets with what names them."""
    complaints = []
    names = [before.key(page["uri"]) for page in pages]
    if None in names or len(set(names)) != len(names):
        complaints.append(f"the pages that were sent are {[page['uri'] for page in pages]}")
    turned_names = {before.key(page["uri"]) for page in pages if page["markup_rewritten"]}
    naming = {relationships_name(before.key(page["uri"])) for page in pages if page["ticket_replaced"]}
    old_tickets = {before.key(page["ticket_in"]) for page in pages if page["ticket_replaced"] and page["ticket_in"]}
    new_tickets = {after.key(after.ticket(page["uri"]) or "") for page in pages if page["ticket_replaced"]}
    if None in new_tickets:
        complaints.append("a new ticket is not in the output")
    free = turned_names | naming | old_tickets | {"/[content_types].xml"}
    for name in sorted(set(before.parts) - free):
        if name not in after.parts:
            complaints.append(f"{name} is missing")
        elif before.parts[name] != after.parts[name]:
            complaints.append(f"{name} changed")
    for name in sorted(set(after.parts) - set(before.parts) - naming - new_tickets - {"/[content_types].xml"}):
        complaints.append(f"{name} was not there")
    return complaints


def relationships_name(part):
    folder, file = os.path.split(part)
    return f"{folder.rstrip('/')}/_rels/{file}.rels"


def compare_markup(before, after, page, findings):
    old, new = before.read(page["uri"]), after.read(page["uri"])
    if not page["markup_rewritten"]:
        return [] if old == new else ["the markup changed"]
    complaints = []
    expected = pagemodel.turned_markup(old)
    if new != expected:
        complaints.append(first_difference(expected, new))
    # Unbound prefixes are errors to this parser too.
    named = any(page["uri"] in finding["text"] and "well-formed" in finding["text"] for finding in findings)
    if is_well_formed(after, page["uri"]) == named:
        complaints.append("well-formed or not, the findings say otherwise")
    return complaints


def compare_pictures(page, before, after):
    if page["markup_rewritten"]:
        return difference(turned(before), after)
    return None if before.tobytes() == after.tobytes() else "the picture changed"


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
        return compare(document, pictures, output, report)
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
    """For each device (device, status, pages, turned pages, reason, whether mutool refuses it, complaints)."""
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
            results.append((device, status, len(pages), rewritten, reason, pictures is None, complaints))
    return results


def main(program, table):
    documents = corpus_files()
    if documents is None:
        print("skipped: there is no corpus folder (CORPUS_FOLDER)")
        return 77
    host = Host(program)
    failed = turned_pages = runs = undrawn = 0
    with ThreadPoolExecutor(os.cpu_count()) as pool, open(table, "w", encoding="utf-8") as rows:
        rows.write("document\tdevice\tstatus\tpages\tturned\treason\n")
        for document, results in zip(documents, pool.map(lambda name: try_document(host, name), documents)):
            name = "/".join(document.split(os.sep)[-2:])
            for device, status, pages, rewritten, reason, is_undrawn, complaints in results:
                rows.write(f"{name}\t{device}\t{status}\t{pages}\t{rewritten}\t{reason}\n")
                turned_pages += rewritten
                failed += bool(complaints)
                runs += 1
                undrawn += is_undrawn and status == 0
                for complaint in complaints:
                    print(f"{name} ({device}): {complaint}", flush=True)
    # Nearly every sheet is a portrait one, and one of the devices wants the other.
    enough = turned_pages >= len(documents)
    print(f"{len(documents)} documents, {len(DEVICES)} devices, {turned_pages} pages turned{'' if enough else ', too few'}, "
          f"{undrawn} runs of documents that mutool refuses came out; table: {table}")
    print(f"{runs - failed} passed, {failed + (not enough)} failed")
    return 1 if failed or not enough else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2]))
