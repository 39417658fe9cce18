#!/usr/bin/env python3
"""Makes an XPS document to measure with: makejob.py OUTPUT --pages N [--paths N] [--tickets none|same|other]

Every page is an A4 sheet in portrait with the given number of paths and no resources. With `same` each page has a print
ticket of its own with the same text, with `other` the text is never that of the page before. The same arguments give
the same bytes.
"""
import argparse
import zipfile

XPS = "http://schemas.microsoft.com/xps/2005/06"
PACKAGE = "http://schemas.openxmlformats.org/package/2006"
PRINT_TICKET = XPS + "/printticket"
PSF = "http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework"
PSK = "http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords"
XSI = "http://www.w3.org/2001/XMLSchema-instance"
XSD = "http://www.w3.org/2001/XMLSchema"
EPOCH = (1980, 1, 1, 0, 0, 0)

CONTENT_TYPES = f"""<?xml version="1.0" encoding="utf-8"?>
<Types xmlns="{PACKAGE}/content-types">
<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>
<Default Extension="fdseq" ContentType="application/vnd.ms-package.xps-fixeddocumentsequence+xml"/>
<Default Extension="fdoc" ContentType="application/vnd.ms-package.xps-fixeddocument+xml"/>
<Default Extension="fpage" ContentType="application/vnd.ms-package.xps-fixedpage+xml"/>
<Default Extension="xml" ContentType="application/vnd.ms-printing.printticket+xml"/>
</Types>"""


def relationship(kind, target):
    return (f'<?xml version="1.0" encoding="utf-8"?>\n<Relationships xmlns="{PACKAGE}/relationships">'
            f'<Relationship Id="R1" Type="{kind}" Target="{target}"/></Relationships>')


def page(number, paths):
    lines = [f'<FixedPage xmlns="{XPS}" Width="793.76" Height="1122.56" xml:lang="en-US">']
    for i in range(paths):
        left, top = 40 + (number * 7 + i * 17) % 640, 40 + i * 25 % 1040
        lines.append(f'<Path Fill="#FF{(number * 31 + i * 97) % 0x1000000:06X}" Data="M {left},{top} L {left + 60}.5,{top} '
                     f'{left + 60}.5,{top + 18}.25 {left},{top + 18}.25 Z" />')
    return "\r\n".join([*lines, "</FixedPage>"])


def ticket(color):
    # As any ticket of a driver it declares what typed values need, so that it can take those of a new one.
    return (f'<?xml version="1.0" encoding="utf-8"?>\n<psf:PrintTicket xmlns:psf="{PSF}" xmlns:psk="{PSK}" '
            f'xmlns:xsi="{XSI}" xmlns:xsd="{XSD}" version="1">'
            '<psf:Feature name="psk:PageOrientation"><psf:Option name="psk:Portrait"/></psf:Feature>'
            f'<psf:Feature name="psk:PageOutputColor"><psf:Option name="psk:{color}"/></psf:Feature></psf:PrintTicket>')


def make(path, pages, paths=40, tickets="none"):
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED, compresslevel=1) as package:
        def add(name, text):
            package.writestr(zipfile.ZipInfo(name, EPOCH), text, zipfile.ZIP_DEFLATED, 1)

        add("[Content_Types].xml", CONTENT_TYPES)
        add("_rels/.rels", relationship(XPS + "/fixedrepresentation", "/Job.fdseq"))
        add("Job.fdseq", f'<FixedDocumentSequence xmlns="{XPS}"><DocumentReference Source="/1/Document.fdoc"/>'
                         "</FixedDocumentSequence>")
        add("1/Document.fdoc", f'<FixedDocument xmlns="{XPS}">' + "".join(
            f'<PageContent Source="/1/{number}.fpage"/>' for number in range(1, pages + 1)) + "</FixedDocument>")
        for number in range(1, pages + 1):
            add(f"1/{number}.fpage", page(number, paths))
            if tickets != "none":
                add(f"1/_rels/{number}.fpage.rels", relationship(PRINT_TICKET, f"/1/{number}.xml"))
                add(f"1/{number}.xml", ticket("Monochrome" if tickets == "other" and number % 2 else "Color"))


def main():
    parser = argparse.ArgumentParser(description="Makes an XPS document to measure with.")
    parser.add_argument("output")
    parser.add_argument("--pages", type=int, required=True)
    parser.add_argument("--paths", type=int, default=40)
    parser.add_argument("--tickets", choices=("none", "same", "other"), default="none")
    options = parser.parse_args()
    make(options.output, options.pages, options.paths, options.tickets)


if __name__ == "__main__":
    main()
