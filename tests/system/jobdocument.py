"""Writes XPS documents for tests from the markup of their pages and their tickets."""
import zipfile

XPS = "http://schemas.microsoft.com/xps/2005/06"
PACKAGE = "http://schemas.openxmlformats.org/package/2006"
CONTENT_TYPES = {
    "rels": "application/vnd.openxmlformats-package.relationships+xml",
    "fdseq": "application/vnd.ms-package.xps-fixeddocumentsequence+xml",
    "fdoc": "application/vnd.ms-package.xps-fixeddocument+xml",
    "fpage": "application/vnd.ms-package.xps-fixedpage+xml",
    "xml": "application/vnd.ms-printing.printticket+xml",
}


def document_name(document):
    return f"/Documents/{document}/Document.fdoc"


def page_name(document, page):
    return f"/Documents/{document}/Pages/{page}.fpage"


def ticket_name(part):
    """The name of a part's own ticket."""
    return part.rsplit(".", 1)[0] + "_PT.xml"


def write_document(path, documents, job_ticket=None):
    """documents: for each its ticket and its pages, pairs of markup and ticket; a part without a ticket has None."""
    parts = {}

    def add(name, markup, ticket):
        parts[name] = markup
        if ticket is not None:
            parts[ticket_name(name)] = ticket
            folder, file = name.rsplit("/", 1)
            parts[f"{folder}/_rels/{file}.rels"] = _relationships(XPS + "/printticket", ticket_name(name))

    parts["/[Content_Types].xml"] = f'<Types xmlns="{PACKAGE}/content-types">' + "".join(
        f'<Default Extension="{extension}" ContentType="{kind}"/>' for extension, kind in CONTENT_TYPES.items()) + "</Types>"
    parts["/_rels/.rels"] = _relationships(XPS + "/fixedrepresentation", "/Sequence.fdseq")
    add("/Sequence.fdseq", f'<FixedDocumentSequence xmlns="{XPS}">' + "".join(
        f'<DocumentReference Source="{document_name(number)}"/>' for number in range(1, len(documents) + 1)
    ) + "</FixedDocumentSequence>", job_ticket)
    for document, (ticket, pages) in enumerate(documents, 1):
        add(document_name(document), f'<FixedDocument xmlns="{XPS}">' + "".join(
            f'<PageContent Source="{page_name(document, page)}"/>' for page in range(1, len(pages) + 1)
        ) + "</FixedDocument>", ticket)
        for page, (markup, ticket) in enumerate(pages, 1):
            add(page_name(document, page), markup, ticket)
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as archive:
        for name, content in parts.items():
            archive.writestr(name[1:], content)


def _relationships(kind, target):
    return (f'<Relationships xmlns="{PACKAGE}/relationships">'
            f'<Relationship Id="R1" Type="{kind}" Target="{target}"/></Relationships>')
