"""An XPS document as a list of documents with pages, and the parts that it becomes."""

from vocabulary import CONTENT_TYPES, THUMBNAIL
from xml.sax.saxutils import quoteattr


class Page:
    """The markup stands between the FixedPage tags; resources are part names. A page without a ticket has None."""

    def __init__(self, width, height, content, ticket=None, resources=(), attributes="", encoding="utf-8"):
        self.width, self.height = width, height
        self.content = content
        self.ticket = ticket
        self.resources = list(resources)
        self.attributes = attributes
        self.encoding = encoding

    def markup(self, vocabulary):
        text = '<?xml version="1.0" encoding="%s"?>\n' % self.encoding
        text += '<FixedPage Width="%s" Height="%s" %sxmlns="%s" xml:lang="en-US">\n%s</FixedPage>\n' % (
            self.width, self.height, self.attributes + " " if self.attributes else "", vocabulary.namespace,
            self.content)
        # The codec "utf-16" starts with a byte order mark, as XML asks.
        return text.encode(self.encoding)


class Document:
    def __init__(self, pages, ticket=None):
        self.pages = pages
        self.ticket = ticket


def relationships(links):
    """A relationships part of (type, target) pairs."""
    text = '<?xml version="1.0" encoding="utf-8"?>\n'
    text += '<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">'
    for number, (kind, target) in enumerate(links, 1):
        text += '<Relationship Id="R%d" Type=%s Target=%s/>' % (number, quoteattr(kind), quoteattr(target))
    return (text + "</Relationships>\n").encode("utf-8")


def relationships_name(part):
    folder, _, name = part.rpartition("/")
    return (folder + "/" if folder else "") + "_rels/" + name + ".rels"


def content_types(defaults=None, overrides=()):
    text = '<?xml version="1.0" encoding="utf-8"?>\n'
    text += '<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">'
    for extension, kind in (CONTENT_TYPES if defaults is None else defaults).items():
        text += '<Default Extension="%s" ContentType="%s"/>' % (extension, kind)
    for name, kind in overrides:
        text += '<Override PartName="%s" ContentType="%s"/>' % (name, kind)
    return (text + "</Types>\n").encode("utf-8")


class Package:
    """Collects the parts of a document in the order in which a producer writes them."""

    def __init__(self, vocabulary):
        self.vocabulary = vocabulary
        self.parts = []

    def add(self, name, data, links=()):
        self.parts.append((name, data))
        if links:
            self.parts.append((relationships_name(name), relationships(links)))

    def add_ticket(self, name, ticket):
        """Adds a ticket unless it is there already; several pages may share one. Returns its relationship."""
        if all(part != name for part, _ in self.parts):
            self.parts.append((name, ticket))
        return (self.vocabulary.print_ticket, "/" + name)


def build(vocabulary, documents, resources, job_ticket=None, thumbnail=None):
    """The parts of an XPS document. Page tickets are (name, bytes) pairs, resources a dictionary of bytes by name."""
    package = Package(vocabulary)
    package.parts.append(("[Content_Types].xml", content_types()))
    start = [(vocabulary.start_part, "/FixedDocumentSequence.fdseq")]
    if thumbnail:
        start.append((THUMBNAIL, "/Metadata/thumbnail.png"))
    package.parts.append(("_rels/.rels", relationships(start)))
    if thumbnail:
        package.parts.append(("Metadata/thumbnail.png", thumbnail))

    references = "".join('\n <DocumentReference Source="/Documents/%d/FixedDocument.fdoc"/>' % (number + 1)
                         for number in range(len(documents)))
    sequence = '<?xml version="1.0" encoding="utf-8"?>\n<FixedDocumentSequence xmlns="%s">%s\n' % (
        vocabulary.namespace, references)
    links = [package.add_ticket("Metadata/Job_PT.xml", job_ticket)] if job_ticket else []
    package.add("FixedDocumentSequence.fdseq", (sequence + "</FixedDocumentSequence>\n").encode("utf-8"), links)
    for name, data in resources.items():
        package.parts.append((name, data))
    for number, document in enumerate(documents, 1):
        _add_document(package, "Documents/%d/" % number, document)
    return package.parts


def _add_document(package, folder, document):
    references = "".join('\n <PageContent Source="Pages/%d.fpage" Width="%s" Height="%s"/>' % (
        number, page.width, page.height) for number, page in enumerate(document.pages, 1))
    markup = '<?xml version="1.0" encoding="utf-8"?>\n<FixedDocument xmlns="%s">%s\n</FixedDocument>\n' % (
        package.vocabulary.namespace, references)
    links = [package.add_ticket(folder + "Metadata/Document_PT.xml", document.ticket)] if document.ticket else []
    package.add(folder + "FixedDocument.fdoc", markup.encode("utf-8"), links)
    for number, page in enumerate(document.pages, 1):
        links = [(package.vocabulary.required_resource, "/" + name) for name in page.resources]
        if page.ticket:
            links.append(package.add_ticket(folder + "Metadata/" + page.ticket[0], page.ticket[1]))
        package.add(folder + "Pages/%d.fpage" % number, page.markup(package.vocabulary), links)
