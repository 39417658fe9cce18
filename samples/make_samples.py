#!/usr/bin/env python3
"""Makes the sample documents: make_samples.py FOLDER. The same files come out every time.

sample.xps        three documents, ten pages, print tickets at all levels, Microsoft's XPS
sample.oxps       the same in OpenXPS
streamed.xps      the same, interleaved in pieces and with data descriptors, as written by a producer that cannot seek
resources.xps     two pages: brushes from the page's own resources and from a dictionary part
names.xps         one page: references relative to their part, in another letter case than the entries, percent-encoded,
                  content types by overrides
utf16.xps         one page: every markup part in UTF-16, the content types included
minimal.xps       one page, stored, nothing that a document can do without
"""

import os
import sys

sys.dont_write_bytecode = True

import archives
import blockfont
import document
import images
import pages
import tickets
from vocabulary import CONTENT_TYPES, MICROSOFT_XPS, OPEN_XPS


def sample_parts(vocabulary):
    guid = os.path.splitext(os.path.basename(pages.FONT))[0]
    resources = {
        pages.FONT: blockfont.obfuscate(blockfont.make_font(), guid),
        pages.IMAGE: images.corners(),
    }
    job_ticket = tickets.ticket(tickets.copies(2), tickets.A4, tickets.feature("psk:JobInputBin", "psk:AutoSelect"),
                                tickets.stamp("Job", "Confidential"))
    return document.build(vocabulary, pages.sample_documents(vocabulary), resources, job_ticket,
                          images.corners(96, 72))


def one_page(content="", encoding="utf-8"):
    """The markup of a page with an F on it."""
    width, height = pages.A4
    return document.Page(width, height, pages.letter_f(100, 100, 400, "#FF203080") + content,
                         encoding=encoding).markup(MICROSOFT_XPS)


def minimal_parts():
    ns = MICROSOFT_XPS.namespace
    return [
        ("[Content_Types].xml", document.content_types(
            {key: CONTENT_TYPES[key] for key in ("rels", "fdseq", "fdoc", "fpage")})),
        ("_rels/.rels", document.relationships([(MICROSOFT_XPS.start_part, "/s.fdseq")])),
        ("s.fdseq", b'<FixedDocumentSequence xmlns="%s"><DocumentReference Source="d.fdoc"/></FixedDocumentSequence>' %
         ns.encode()),
        ("d.fdoc", b'<FixedDocument xmlns="%s"><PageContent Source="p.fpage"/></FixedDocument>' % ns.encode()),
        ("p.fpage", one_page()),
    ]


def names_parts():
    ns = MICROSOFT_XPS.namespace.encode()
    overrides = [
        ("/DOCS/Sequence.xml", CONTENT_TYPES["fdseq"]),
        ("/docs/one/document.xml", CONTENT_TYPES["fdoc"]),
        ("/docs/one/a page.xml", CONTENT_TYPES["fpage"]),
        ("/docs/tickets/job.xml", CONTENT_TYPES["xml"]),
        ("/docs/tickets/page.xml", CONTENT_TYPES["xml"]),
    ]
    job = tickets.ticket(tickets.A4)
    page = tickets.ticket(tickets.orientation("Portrait"))
    return [
        ("docs/one/A%20Page.xml", one_page()),
        ("docs/one/_rels/A%20Page.xml.rels",
         document.relationships([(MICROSOFT_XPS.print_ticket, "../Tickets/Page.xml")])),
        ("docs/tickets/page.xml", page),
        ("docs/one/document.xml", b'<FixedDocument xmlns="%s"><PageContent Source="./a%%20page.XML"/></FixedDocument>' %
         ns),
        ("docs/sequence.xml",
         b'<FixedDocumentSequence xmlns="%s"><DocumentReference Source="ONE/document.xml"/></FixedDocumentSequence>' %
         ns),
        ("docs/_rels/sequence.xml.rels",
         document.relationships([(MICROSOFT_XPS.print_ticket, "tickets/job.xml")])),
        ("docs/tickets/job.xml", job),
        ("_RELS/.rels", document.relationships([(MICROSOFT_XPS.start_part, "docs/Sequence.xml")])),
        ("[content_types].XML", document.content_types({"RELS": CONTENT_TYPES["rels"]}, overrides)),
    ]


def utf16_parts():
    """The minimal document with every part in UTF-16, half of them without a declaration."""
    parts = []
    for number, (name, data) in enumerate(minimal_parts()):
        text = data.decode("utf-8").replace('encoding="utf-8"', 'encoding="utf-16"')
        if number % 2 and text.startswith("<?xml"):
            text = text[text.index("?>") + 2:].lstrip()
        parts.append((name, text.encode("utf-16")))
    return parts


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: make_samples.py FOLDER")
    folder = sys.argv[1]
    os.makedirs(folder, exist_ok=True)

    def path(name):
        return os.path.join(folder, name)

    parts = sample_parts(MICROSOFT_XPS)
    archives.write_archive(path("sample.xps"), parts)
    archives.write_archive(path("streamed.xps"), archives.pieces_of(parts, 512), streamed=True)
    archives.write_archive(path("sample.oxps"), sample_parts(OPEN_XPS))
    archives.write_archive(path("resources.xps"),
                           document.build(MICROSOFT_XPS, pages.resource_documents(MICROSOFT_XPS),
                                          {pages.DICTIONARY: pages.dictionary(MICROSOFT_XPS)}))
    archives.write_archive(path("names.xps"), names_parts())
    archives.write_archive(path("utf16.xps"), utf16_parts())
    archives.write_archive(path("minimal.xps"), minimal_parts(), stored=True)


if __name__ == "__main__":
    main()
