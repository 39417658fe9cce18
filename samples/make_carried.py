#!/usr/bin/env python3
"""Makes the documents that the host carries for the validation of filters: make_carried.py FOLDER. The same files come
out every time.

short.xps       one document, three pages: tickets at all levels, a sheet that lies across, a page without a ticket
everything.xps  three documents, as a producer writes them that cannot seek: tickets at all levels, fonts, pictures, a
                dictionary part, an outline, annotations, a thumbnail, UTF-16, sheets from a card to A0
pages.xps       200 pages, every third with a ticket
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
from document import Document, Page
from vocabulary import CONTENT_TYPES, MICROSOFT_XPS

A0 = (3178.56, 4493.76)
OUTLINE_TYPE = "application/vnd.ms-package.xps-documentstructure+xml"
ANNOTATIONS_TYPE = "application/vnd.ms-package.annotations+xml"
NAMESPACE = MICROSOFT_XPS.namespace

OUTLINE = """<?xml version="1.0" encoding="utf-8"?>
<DocumentStructure xmlns="%s/documentstructure"><DocumentStructure.Outline>
 <DocumentOutline xml:lang="en-US"><OutlineEntry OutlineLevel="1" Description="First" OutlineTarget="Pages/1.fpage"/>
 </DocumentOutline>
</DocumentStructure.Outline></DocumentStructure>
""" % NAMESPACE
ANNOTATIONS = """<?xml version="1.0" encoding="utf-8"?>
<Annotations xmlns="http://schemas.microsoft.com/windows/annotations/2003/11/core"/>
"""


def font_and_picture():
    guid = os.path.splitext(os.path.basename(pages.FONT))[0]
    return {pages.FONT: blockfont.obfuscate(blockfont.make_font(), guid), pages.IMAGE: images.corners()}


def relate(parts, source, kind, target):
    """The parts with one relationship more of the source."""
    name = document.relationships_name(source)
    link = '<Relationship Id="X" Type="%s" Target="%s"/></Relationships>' % (kind, target)
    for number, (part, data) in enumerate(parts):
        if part == name:
            return parts[:number] + [(name, data.replace(b"</Relationships>", link.encode()))] + parts[number + 1:]
    return parts + [(name, document.relationships([(kind, target)]))]


def job_ticket():
    return tickets.ticket(tickets.copies(2), tickets.A4, tickets.feature("psk:JobInputBin", "psk:AutoSelect"),
                          tickets.stamp("Job", "Confidential"))


def short_parts():
    across = pages.landscape(pages.A4)
    content = Document(ticket=tickets.ticket(tickets.A4, tickets.stamp("Document", "Internal")), pages=[
        Page(*pages.A4, pages.frame(*pages.A4, "A4", "#FF203080") + pages.picture(200, 600, 400, 300),
             ("Page1_PT.xml", tickets.ticket(tickets.A4, tickets.orientation("Portrait"))), [pages.FONT, pages.IMAGE]),
        Page(*across, pages.frame(*across, "A4 across", "#FF206030"),
             ("Page2_PT.xml", tickets.ticket(tickets.A4_ROTATED, tickets.stamp("Page", "Draft"))), [pages.FONT]),
        Page(*pages.A4, pages.frame(*pages.A4, "No ticket", "#FF802020"), None, [pages.FONT]),
    ])
    return document.build(MICROSOFT_XPS, [content], font_and_picture(), job_ticket())


def everything_parts():
    documents = pages.sample_documents(MICROSOFT_XPS)
    leaf = ' <Path Fill="{StaticResource Leaf}" Data="M 397,600 L 560,900 L 234,900 z"/>\n'
    documents[2].pages += [
        Page(*A0, pages.frame(*A0, "A0", "#FF203080"),
             ("Page4_PT.xml", tickets.ticket(tickets.media("psk:ISOA0", 841000, 1189000))), [pages.FONT]),
        Page(*pages.A4, pages.REMOTE_DICTIONARY + pages.frame(*pages.A4, "A dictionary part", "#FF206030") + leaf, None,
             [pages.FONT, pages.DICTIONARY]),
    ]
    resources = font_and_picture()
    resources[pages.DICTIONARY] = pages.dictionary(MICROSOFT_XPS)
    parts = document.build(MICROSOFT_XPS, documents, resources, job_ticket(), images.corners(96, 72))
    overrides = [("/Documents/1/Structure/outline.struct", OUTLINE_TYPE),
                 ("/Documents/1/Annotations/1.xml", ANNOTATIONS_TYPE)]
    parts[0] = (parts[0][0], document.content_types(CONTENT_TYPES, overrides))
    parts += [("Documents/1/Structure/outline.struct", OUTLINE.encode()),
              ("Documents/1/Annotations/1.xml", ANNOTATIONS.encode())]
    parts = relate(parts, "Documents/1/FixedDocument.fdoc", NAMESPACE + "/documentstructure",
                   "/Documents/1/Structure/outline.struct")
    return relate(parts, "Documents/1/Pages/1.fpage", NAMESPACE + "/annotations", "/Documents/1/Annotations/1.xml")


def many_pages_parts():
    sheets = [(pages.A4, tickets.A4), (pages.LETTER, tickets.LETTER), (pages.A3, tickets.A3), (pages.CARD, tickets.CARD)]
    made = []
    for number in range(200):
        size, sheet = sheets[number % len(sheets)]
        ticket = ("Page%d_PT.xml" % (number % 12), tickets.ticket(sheet)) if number % 3 == 0 else None
        made.append(Page(*size, pages.letter_f(20, 20, 100, "#FF203080"), ticket))
    return document.build(MICROSOFT_XPS, [Document(made)], {})


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: make_carried.py FOLDER")
    folder = sys.argv[1]
    os.makedirs(folder, exist_ok=True)
    archives.write_archive(os.path.join(folder, "short.xps"), short_parts())
    archives.write_archive(os.path.join(folder, "everything.xps"),
                           archives.pieces_of(everything_parts(), 4096), streamed=True)
    archives.write_archive(os.path.join(folder, "pages.xps"), many_pages_parts())


if __name__ == "__main__":
    main()
