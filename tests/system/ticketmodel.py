"""Print tickets as trees of qualified names, and what happens to them on the way through a job, worked out a second time:
what the simulated provider makes of two tickets for a device without parameters and constraints, and how what it dropped is
put back. Nothing of the product or the dev kit is used; expat reads.
"""
import copy
import os
import xml.parsers.expat

PSF = "http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework"
PSK = "http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords"
XSI = "http://www.w3.org/2001/XMLSchema-instance"
XSD = "http://www.w3.org/2001/XMLSchema"
KRK = "http://schemas.pagevalidate.example/printing/ptpc/2008/11"
JOB, DOCUMENT, PAGE = "Job", "Document", "Page"
# What a ticket of a scope may hold.
HELD = {JOB: (JOB, DOCUMENT, PAGE), DOCUMENT: (DOCUMENT, PAGE), PAGE: (PAGE,)}


class Node:
    """An element with its qualified name, or a text, whose name is None."""

    def __init__(self, name, attributes=(), children=(), text=""):
        self.name = name
        self.attributes = dict(attributes)
        self.children = list(children)
        self.text = text

    def named(self, name):
        return [child for child in self.children if child.name == name]

    def walk(self):
        """The elements below, in document order."""
        for child in self.children:
            if child.name is not None:
                yield child
                yield from child.walk()

    def content(self):
        return self.text if self.name is None else "".join(child.content() for child in self.children)

    def markup(self):
        """One text for one tree; the order of attributes says nothing."""
        if self.name is None:
            return repr(self.text)
        attributes = "".join(f" {name}={value!r}" for name, value in sorted(self.attributes.items()))
        return f"<{self.name}{attributes}>" + "".join(child.markup() for child in self.children) + "</>"


def element(name, attributes=(), *children):
    return Node(name, attributes, children)


def parse(data):
    """The root of a ticket; text of nothing but white space is left out."""
    document = Node("#document")
    stack = [document]

    def start(name, flat):
        node = Node(name, zip(flat[::2], flat[1::2]))
        stack[-1].children.append(node)
        stack.append(node)

    def characters(text):
        if text.strip():
            stack[-1].children.append(Node(None, text=text))

    parser = xml.parsers.expat.ParserCreate()
    parser.ordered_attributes = parser.buffer_text = True
    parser.StartElementHandler, parser.CharacterDataHandler = start, characters
    parser.EndElementHandler = lambda _: stack.pop()
    parser.Parse(data, True)
    return document.children[0]


def put_back(base, target):
    """Adds to the base what it lacks of the target."""
    if not base.children or not target.children:
        return
    there, missing = list(base.children), []
    for wanted in target.children:
        alike = [child for child in there if is_same(child, wanted)]
        for child in alike:
            child.attributes.update(sorted((name, value) for name, value in wanted.attributes.items()
                                           if name.startswith("xmlns:")))
            put_back(child, wanted)
        if not alike:
            missing.append(copy.deepcopy(wanted))
    base.children += missing


def merged(base, target):
    """A copy of a root element with what it lacks of another one."""
    document = Node("#document", children=[copy.deepcopy(base)])
    put_back(document, Node("#document", children=[target]))
    return document.children[0]


def is_same(first, second):
    return first.name == second.name and first.attributes.get("name") == second.attributes.get("name")


class Device:
    """A device model of the simulated provider whose capabilities hold features alone."""

    def __init__(self, folder):
        def read(name):
            with open(os.path.join(folder, name), "rb") as file:
                return parse(file.read())
        self.user_ticket = read("default-ticket.xml")
        capabilities = read("capabilities.xml")
        self.features = capabilities.named("psf:Feature")
        self.defaults = {meaning(self.user_ticket, feature): feature.named("psf:Option")[0]
                         for feature in self.user_ticket.named("psf:Feature")}
        self.root = capabilities
        self.namespaces = {uri for name, uri in capabilities.attributes.items() if name.startswith("xmlns:")}

    def validate(self, parent, delta, scope):
        """The ticket that holds for the scope, of that of the wider one and the part's own."""
        asked = {}
        for root in (parent, delta):
            asked.update((meaning(root, feature), (root, feature)) for feature in root.named("psf:Feature"))
        result = Node("psf:PrintTicket", {**{name: uri for name, uri in self.root.attributes.items()}})
        for feature in self.features:
            key = meaning(self.root, feature)
            if key[1].startswith(HELD[scope]):
                option = self.choose(feature, *asked.get(key, (None, None))) or self.default(key, feature)
                properties = [copy.deepcopy(each) for each in option.named("psf:ScoredProperty")]
                result.children.append(element("psf:Feature", {"name": feature.attributes["name"]},
                                               Node("psf:Option", {"name": option.attributes["name"]}, properties)))
        return result

    def default(self, key, feature):
        name = self.defaults[key].attributes["name"]
        return next(option for option in feature.named("psf:Option") if option.attributes["name"] == name)

    def choose(self, feature, root, asked):
        """The device's option that is most like the one that is asked for; None when none is."""
        options = asked.named("psf:Option") if asked else []
        options = [option for option in options if meaning(root, option)[0] in self.namespaces]
        if not options:
            return None
        def score(option):
            name = 1000 if meaning(self.root, option) == meaning(root, options[0]) else 0
            values, wanted = scored(self.root, option), scored(root, options[0])
            return name + sum(10 for key in values if values[key] == wanted.get(key))
        best = max(feature.named("psf:Option"), key=score)
        return best if score(best) > 0 else None


def meaning(root, node):
    """A name as (namespace, local name), by the prefixes of its root."""
    prefix, _, local = node.attributes["name"].partition(":")
    return root.attributes.get("xmlns:" + prefix), local


def scored(root, option):
    """{name: value} of an option's scored properties, with names in values by their meaning, too."""
    found = {}
    for item in option.named("psf:ScoredProperty"):
        for value in item.named("psf:Value"):
            text = value.content().strip()
            if value.attributes.get("xsi:type", "").endswith(":QName"):
                prefix, _, text = text.partition(":")
                text = (root.attributes.get("xmlns:" + prefix), text)
            found[meaning(root, item)] = text
    return found


def value(kind, text):
    return element("psf:Value", {"xsi:type": "xsd:" + kind}, Node(None, text=str(text)))


def default_ticket():
    """The printer-default ticket of a driver that names no language."""
    def feature(name, option, **properties):
        items = [element("psf:Property", {"name": "krk:" + key}, value("integer", number))
                 for key, number in properties.items()]
        return element("psf:Feature", {"name": name}, Node("psf:Option", {"name": option}, items))
    return Node("psf:PrintTicket", {"xmlns:xsd": XSD, "xmlns:xsi": XSI, "xmlns:psf": PSF, "xmlns:psk": PSK, "xmlns:krk": KRK}, [
        feature("psk:PageScaling", "psk:FitApplicationMediaSizeToPageMediaSize"),
        feature("krk:JobIcmMode", "krk:QvAcct"),
        feature("krk:JobCompress", "krk:Type2", Threshold=52428800, AlignementBytes=8),
        feature("krk:PagePrintableMediaSize", "krk:PrintableMediaSize", MinWidth=76200, MinHeight=127000, MaxWidth=215900,
                MaxHeight=355600),
        feature("krk:JobRtabContentType", "krk:RtabIndex", Image=1, Text=1, Graphics=1),
        feature("krk:JobTeskType", "krk:Type7"),
        feature("krk:JobTeskVersion", "krk:Version1"),
        feature("krk:JobBitsPerPixel", "krk:Bits8"),
    ])


class EffectiveTickets:
    """The tickets that hold while a job goes through: the job's, the document's, the page's."""

    def __init__(self, device):
        self.device = device
        self.extra = default_ticket()
        self.tickets = {None: device.user_ticket}

    def enter(self, scope, own):
        """Enters a part of a scope, with its own ticket or None."""
        parent = self.tickets[{JOB: None, DOCUMENT: JOB, PAGE: DOCUMENT}[scope]]
        if own is None:
            self.tickets[scope] = merged(parent, self.extra)
            return
        result = self.device.validate(parent, own, scope)
        self.tickets[scope] = merged(merged(result, own), self.extra)
