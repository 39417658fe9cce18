#!/usr/bin/env python3
"""Compares what the product reads from print tickets with what readtickets.py reads from the same bytes.

    comparetickets.py devices|generated|corpus TICKETSETTINGS FOLDER [LAUNCHER]

devices: the tickets of the kit's device models. generated: random tickets, always the same. corpus: every distinct ticket of the documents in the folder that
CORPUS_FOLDER names, or shared/corpus beside the project; status 77 without it. Each ticket is read as it is, and then
merged, by the product and the simulated provider of every device model, as the ticket of a job, a document and a page.
FOLDER is made anew and keeps the tickets. LAUNCHER runs TICKETSETTINGS where the system cannot.
"""

import collections
import hashlib
import os
import random
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree as ElementTree
import zipfile
import zlib

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "system"))
import generatedjobs
import readtickets

SKIPPED = 77
GENERATED = 200
ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
DEVICES = os.path.join(ROOT, "devkit", "devices")
# A ticket that is not well formed, and one that the platform does not take: E_FAIL, E_DELTA_PRINTTICKET_FORMAT.
REFUSALS = {"0x80004005", "0x80040005"}
# What the platform answers when the wider scope's effective ticket is not one that it takes.
E_PRINTTICKET_FORMAT = "0x80040003"
WIDER = {"document": "job", "page": "document"}


def models():
    return sorted(name for name in os.listdir(DEVICES) if os.path.isdir(os.path.join(DEVICES, name)))


def is_ticket(name, data, types):
    """Whether a part is a ticket, or is meant to be one."""
    if "printticket" in types.get("/" + name.lower(), ""):
        return True
    if b"PrintTicket" not in data.replace(b"\0", b""):
        return False
    try:
        return re.sub(r"\{.*\}", "", ElementTree.fromstring(data).tag) == "PrintTicket"
    except ElementTree.ParseError:
        return name.lower().endswith("_pt.xml")


def content_types(parts):
    try:
        root = ElementTree.fromstring(parts.get("[content_types].xml", b""))
    except ElementTree.ParseError:
        return {}
    return {each.get("PartName", "").lower(): each.get("ContentType", "") for each in root
            if each.tag.endswith("}Override")}


def parts_of(path):
    """The parts of a package by name, interleaved ones put together; empty when it is no package."""
    pieces = collections.defaultdict(dict)
    try:
        with zipfile.ZipFile(path) as package:
            for entry in package.infolist():
                try:
                    data = package.read(entry)
                except (zipfile.BadZipFile, zlib.error, NotImplementedError, RuntimeError, EOFError, OSError):
                    continue
                piece = re.fullmatch(r"(.*)/\[(\d+)\](\.last)?\.piece", entry.filename, re.IGNORECASE)
                name, number = (piece.group(1), int(piece.group(2))) if piece else (entry.filename, 0)
                pieces[name.lower()][number] = data
    except (zipfile.BadZipFile, OSError):
        return {}
    return {name: b"".join(numbered[number] for number in sorted(numbered)) for name, numbered in pieces.items()}


def tickets_of_corpus(corpus):
    tickets = {}
    for folder, _, files in sorted(os.walk(corpus)):
        for file in sorted(files):
            parts = parts_of(os.path.join(folder, file))
            types = content_types(parts)
            for name, data in sorted(parts.items()):
                if is_ticket(name, data, types):
                    tickets.setdefault(hashlib.sha1(data).hexdigest()[:12], data)
    return tickets


def tickets_of_devices():
    tickets = {}
    for model in models():
        path = os.path.join(DEVICES, model, "default-ticket.xml")
        if os.path.exists(path):
            with open(path, "rb") as file:
                tickets[model] = file.read()
    return tickets


def generated_tickets():
    writer = generatedjobs.TicketWriter(random.Random("tickets"))
    texts = filter(None, (writer.ticket(generatedjobs.JOB) for _ in range(GENERATED)))
    return {"generated%03d" % number: text.encode() for number, text in enumerate(texts)}


def printed_by(program, launcher, arguments):
    """{ticket: lines} as ticketsettings prints them."""
    output = subprocess.run(launcher + [program] + arguments, stdout=subprocess.PIPE, timeout=600, check=True).stdout
    printed = {}
    for line in output.decode("utf-8").splitlines():
        if line.startswith("ticket "):
            lines = printed.setdefault(line[len("ticket "):], [])
        else:
            lines.append(line)
    return printed


def has_two_values(path):
    """Whether a scored property has a value and a parameter, or two parameters, which is what putting back the one beside
    the other leaves."""
    framework = "{%s}" % readtickets.FRAMEWORK
    return any(len(each.findall(framework + "Value")) + len(each.findall(framework + "ParameterRef")) > 1
               for each in ElementTree.parse(path).iter(framework + "ScoredProperty"))


def is_explained(code, out, title):
    """Whether a merge may be refused with the code."""
    name, scope = title.rsplit(".", 1)
    if code == E_PRINTTICKET_FORMAT and scope in WIDER:
        return has_two_values(os.path.join(out, name + "." + WIDER[scope]))
    return code in REFUSALS


class Comparison:
    """Counts what was compared and alike, and prints what differs."""

    def __init__(self):
        with open(os.path.join(ROOT, "src", "base", "xps", "printschema", "mediasizerows.cpp"),
                  encoding="utf-8") as file:
            self.sizes = readtickets.media_sizes(file.read())
        self.compared = self.differences = 0
        self.outcomes = collections.Counter()

    def compare(self, title, data, lines):
        expected = readtickets.settings(data, self.sizes)
        for line in lines:
            words = line.split(" ", 2)
            self.outcomes[line if "error" in words or "unreadable" in words else "read"] += 1
        if lines != expected:
            self.fail(title, "the product reads %s, expected %s" % (lines, expected))
        else:
            self.compared += 1

    def fail(self, title, text):
        self.differences += 1
        print("%s: %s" % (title, text))


def compare_as_they_are(comparison, tickets, folder, run):
    printed = run(["read", folder])
    for name in sorted(tickets):
        comparison.compare(name, tickets[name], printed.get(name, []))
    if set(printed) != set(tickets):
        comparison.fail("read", "other tickets were read than there are")


def compare_merged(comparison, tickets, folder, run):
    for model in models():
        out = folder + "-" + model
        shutil.rmtree(out, ignore_errors=True)
        os.makedirs(out)
        printed = run(["merge", folder, os.path.join(DEVICES, model), out])
        for title, lines in sorted(printed.items()):
            if lines and lines[0].startswith("refused "):
                comparison.outcomes["merge " + lines[0]] += 1
                if not is_explained(lines[0].split()[1], out, title):
                    comparison.fail(model + " " + title, lines[0])
                continue
            with open(os.path.join(out, title), "rb") as file:
                comparison.compare(model + " " + title, file.read(), lines)
        if len({title.rsplit(".", 1)[0] for title in printed}) != len(tickets):
            comparison.fail(model, "not every ticket was merged")


def main():
    if len(sys.argv) < 4 or sys.argv[1] not in ("devices", "generated", "corpus"):
        sys.exit(__doc__)
    kind, program, folder = sys.argv[1:4]
    launcher = [each for each in sys.argv[4:] if each]
    tickets = generated_tickets() if kind == "generated" else tickets_of_devices()
    if kind == "corpus":
        corpus = os.environ.get("CORPUS_FOLDER", os.path.join(ROOT, "..", "shared", "corpus"))
        if not os.path.isdir(corpus):
            print("skipped: no corpus of documents at " + corpus)
            return SKIPPED
        tickets = tickets_of_corpus(corpus)
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    for name, data in tickets.items():
        with open(os.path.join(folder, name), "wb") as file:
            file.write(data)

    comparison = Comparison()

    def run(arguments):
        return printed_by(program, launcher, arguments)

    compare_as_they_are(comparison, tickets, folder, run)
    compare_merged(comparison, tickets, folder, run)
    print("%d tickets, on %d devices" % (len(tickets), len(models())))
    for outcome, count in sorted(comparison.outcomes.items()):
        print("%6d  %s" % (count, outcome))
    if not tickets:
        comparison.fail(kind, "there are no tickets")
    print("%d passed, %d failed" % (comparison.compared, comparison.differences))
    return 1 if comparison.differences else 0


if __name__ == "__main__":
    sys.exit(main())
