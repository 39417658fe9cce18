"""Reads the five settings of a print ticket, by the rules of the product and with nothing of its code: the XML is
ElementTree's, and only the list of media sizes is taken from the sources, because it is data.

Names are compared as they stand in the ticket, prefix included, with the prefixes that its root declares.
"""

import io
import re
import xml.etree.ElementTree as ElementTree

FRAMEWORK = "http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework"
KEYWORDS = "http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords"
INSTANCE = "http://www.w3.org/2001/XMLSchema-instance"
SCHEMA = "http://www.w3.org/2001/XMLSchema"

E_FAIL = "0x80004005"
E_UNEXPECTED = "0x8000FFFF"
NOT_FOUND = "0x80070490"
INVALID_DATA = "0x8007000D"

BINS = ["AutoSelect", "Manual", "Cassette", "Tractor", "AutoSheetFeeder"] + ["Tray%d" % n for n in range(1, 6)]
ORIENTATIONS = ["Landscape", "Portrait", "ReverseLandscape", "ReversePortrait"]
SCALINGS = ["Custom", "CustomSquare", "FitApplicationBleedSizeToPageImageableSize",
            "FitApplicationContentSizeToPageImageableSize", "FitApplicationMediaSizeToPageImageableSize",
            "FitApplicationMediaSizeToPageMediaSize", "None"]
PRIVATE_SCALING = "FitApplicationImageableSizeToImageableSize"


class ReadError(Exception):
    """What a setting cannot be read for: a code, or a message."""


class Absent(Exception):
    """There is no such value, or it is none; the code tells which."""


def media_sizes(source):
    """[(keyword, width, height)] by id, without the unknown size, from the text of the C++ list."""
    rows = re.findall(r'\{(-?\d+), L"MediaSizeSchema::(\w+)", \{(-?\d+), (-?\d+)\}\}', source)
    sizes = {int(number): (keyword, int(width), int(height)) for number, keyword, width, height in rows}
    del sizes[-1]
    if sorted(sizes) != list(range(172)):
        raise ValueError("the list of media sizes is not as expected")
    return [sizes[number] for number in range(172)]


class Ticket:
    """A ticket with the prefixes of its root. ElementTree.ParseError when the bytes are not well formed."""

    def __init__(self, data, private):
        if b"<!DOCTYPE" in data.replace(b"\0", b""):
            raise ElementTree.ParseError("a document type is refused")
        declarations = []
        self.root = None
        for event, item in ElementTree.iterparse(io.BytesIO(data), events=("start-ns", "start")):
            if event == "start-ns" and self.root is None:
                declarations.append(item)
            elif event == "start" and self.root is None:
                self.root = item
        self.framework = self.keywords = None
        self.private = private + ":"
        self.failure = self._find_prefixes(declarations)
        self.order = {element: index for index, element in enumerate(self.root.iter())}

    def _find_prefixes(self, declarations):
        if self.root.tag != self._tag("PrintTicket"):
            return E_FAIL
        found = {}
        for prefix, uri in declarations:
            found.setdefault(uri, prefix)
        if any(found.get(uri) == "" for uri in (FRAMEWORK, KEYWORDS, INSTANCE, SCHEMA)):
            return E_FAIL
        if FRAMEWORK not in found:
            return E_FAIL
        self.framework = found[FRAMEWORK] + ":"
        if KEYWORDS not in found:
            return E_UNEXPECTED
        self.keywords = found[KEYWORDS] + ":"
        return None

    @staticmethod
    def _tag(name):
        return "{%s}%s" % (FRAMEWORK, name)

    def _features(self, name):
        return [each for each in self.root.iter(self._tag("Feature")) if each.get("name") == name]

    def _stripped(self, text, private):
        """Without the first known prefix; a private option's is looked for among the private ones alone."""
        prefixes = [self.private, "ns0000:"]
        if not private:
            prefixes = [self.keywords, self.framework] + prefixes
        for prefix in prefixes:
            if prefix in text:
                return text.replace(prefix, "", 1)
        return text

    def _selected(self, feature, private):
        """The element that says which option is selected; None when there is none."""
        option_name = (self.private if private else self.keywords) + "OptionName"
        candidates = []
        for each in self._features(feature):
            candidates += each.findall(self._tag("Option"))
            for scored in each.findall(self._tag("ScoredProperty")):
                if scored.get("name") == option_name:
                    candidates += scored.findall(self._tag("Value"))
        return min(candidates, key=self.order.get, default=None)

    def option(self, feature, private):
        """The selected option; None when there is none."""
        selected = self._selected(feature, private)
        if selected is None:
            return None
        name = selected.get("name")
        if name is None:
            name = "".join(selected.itertext()).strip()
        return self._stripped(name, private) if name else None

    def _value_of(self, element):
        value = element.find(self._tag("Value"))
        if value is not None:
            return "".join(value.itertext())
        reference = element.find(self._tag("ParameterRef"))
        if reference is None or reference.get("name") is None:
            raise Absent(NOT_FOUND)
        for parameter in self.root.iter(self._tag("ParameterInit")):
            if parameter.get("name") == reference.get("name"):
                value = parameter.find(self._tag("Value"))
                if value is None:
                    break
                return "".join(value.itertext())
        raise Absent(NOT_FOUND)

    def text(self, feature, element, name, private=False):
        """The text of a property inside the selected option of the feature; what others say is nobody's."""
        for candidate in self._selected(feature, private).iter(self._tag(element)):
            if candidate.get("name") == name:
                return self._value_of(candidate)
        raise Absent(NOT_FOUND)

    def integer(self, feature, element, name, private=False):
        text = self.text(feature, element, name, private).strip(" \t\r\n")
        if not re.fullmatch(r"[+-]?[0-9]+", text) or not -2**31 <= int(text) < 2**31:
            raise Absent(INVALID_DATA)
        return int(text)

    def scored(self, feature, name):
        return self.integer(feature, "ScoredProperty", self.keywords + name)


def scaling(ticket, _sizes):
    feature = ticket.keywords + "PageScaling"
    option = ticket.option(feature, False)
    if option is None:
        option = ticket.option(feature, True)
        if option == PRIVATE_SCALING:
            return ["PageScaling", option, 0, 0, 0, 0]
        option = None
    if option not in SCALINGS:
        return ["PageScaling", "FitApplicationMediaSizeToPageMediaSize", 0, 0, 0, 0]
    if not option.startswith("Custom"):
        return ["PageScaling", option, 0, 0, 0, 0]
    names = ["OffsetWidth", "OffsetHeight"]
    names += ["Scale", "Scale"] if option == "CustomSquare" else ["ScaleWidth", "ScaleHeight"]
    try:
        return ["PageScaling", option] + [ticket.scored(feature, name) for name in names]
    except Absent as absent:
        raise ReadError(str(absent)) from absent


def input_bin(ticket, _sizes):
    for name in ("JobInputBin", "DocumentInputBin", "PageInputBin"):
        feature = ticket.keywords + name
        option = ticket.option(feature, False)
        if option is None:
            continue
        if option not in BINS:
            break
        direction = "ShortEdgeFirst"
        try:
            text = ticket.text(feature, "ScoredProperty", ticket.keywords + "FeedDirection").strip(" \t\r\n")
            local = text.split(":", 1)[-1]
            direction = local if local in ("LongEdgeFirst", "ShortEdgeFirst") else direction
        except Absent:
            pass
        return [name, option, direction]
    return ["JobInputBin", "AutoSelect", "ShortEdgeFirst"]


def media_size(ticket, sizes):
    feature = ticket.keywords + "PageMediaSize"
    option = ticket.option(feature, False)
    keywords = [keyword for keyword, _, _ in sizes]
    if option not in keywords:
        return ["PageMediaSize", "ISOA4", 210000, 297000]
    number = keywords.index(option)
    if number >= 2:
        # Of several options of one size the first stands for all.
        number = [size[1:] for size in sizes].index(sizes[number][1:])
    keyword, width, height = sizes[number]
    try:
        height, width = (ticket.scored(feature, name) for name in ("MediaSizeHeight", "MediaSizeWidth"))
    except Absent as absent:
        if number < 2:
            raise ReadError("Unexpected print ticket format. informations lack.") from absent
    return ["PageMediaSize", keyword, width, height]


def orientation(ticket, _sizes):
    option = ticket.option(ticket.keywords + "PageOrientation", False)
    return ["PageOrientation", option if option in ORIENTATIONS else "Portrait"]


def printable(ticket, _sizes):
    for name in ("JobPrintableMediaSize", "DocumentPrintableMediaSize", "PagePrintableMediaSize"):
        feature = ticket.private + name
        option = ticket.option(feature, True)
        if option is None:
            continue
        if option != "PrintableMediaSize":
            break
        bounds = []
        for bound in ("Min", "Max"):
            try:
                bounds += [ticket.integer(feature, "Property", ticket.private + bound + length, True)
                           for length in ("Width", "Height")]
            except Absent:
                bounds += [0, 0]
        if bounds[0] > bounds[2] or bounds[1] > bounds[3]:
            raise ReadError("printticket is in invalid state.")
        return [name, option] + bounds
    return ["JobPrintableMediaSize", "PrintableMediaSize", 0, 0, 0, 0]


READERS = [("scaling", scaling), ("bin", input_bin), ("media", media_size), ("orientation", orientation),
           ("printable", printable)]


def settings(data, sizes, private="krk"):
    """One line for each setting, in the form that ticketsettings prints."""
    try:
        ticket = Ticket(data, private)
    except ElementTree.ParseError:
        return ["unreadable " + E_FAIL]
    lines = []
    for name, read in READERS:
        try:
            if ticket.failure:
                raise ReadError(ticket.failure)
            lines.append(" ".join([name] + [str(item) for item in read(ticket, sizes)]))
        except ReadError as failure:
            lines.append("%s error %s" % (name, failure))
    return lines
