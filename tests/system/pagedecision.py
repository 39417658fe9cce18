"""What the filter decides for each page of a job, and the ticket that it writes, worked out a second time from the
effective tickets of ticketmodel. Lengths are micrometres.
"""
import copy

from ticketmodel import DOCUMENT, JOB, PAGE, PSF, PSK, XSD, XSI, EffectiveTickets, Node, element, value

ORIENTATIONS = ("Landscape", "Portrait", "ReverseLandscape", "ReversePortrait")
BINS = ("AutoSelect", "Manual", "Cassette", "Tractor", "AutoSheetFeeder", "Tray1", "Tray2", "Tray3", "Tray4", "Tray5")
SCALINGS = ("Custom", "CustomSquare", "FitApplicationBleedSizeToPageImageableSize",
            "FitApplicationContentSizeToPageImageableSize", "FitApplicationMediaSizeToPageImageableSize",
            "FitApplicationMediaSizeToPageMediaSize", "None")
FIT_MEDIA = "FitApplicationMediaSizeToPageMediaSize"
FEEDS = ("LongEdgeFirst", "ShortEdgeFirst")
SCOPES = (JOB, DOCUMENT, PAGE)
LARGEST = 2 ** 31 - 1


class JobFails(Exception):
    """The filter must end the job here."""


def option_of(ticket, feature):
    """The selected option of a feature, which is the first."""
    for item in ticket.walk():
        if item.name == "psf:Feature" and item.attributes.get("name") == feature:
            for option in item.named("psf:Option"):
                return option
    return None


def bare_name(option, is_private=False):
    text = option.attributes["name"]
    for prefix in ("krk:", "ns0000:") if is_private else ("psk:", "psf:", "krk:", "ns0000:"):
        if prefix in text:
            return text.replace(prefix, "", 1)
    return text


def text_of(ticket, option, kind, name):
    """The text of a property below the option; None where there is none."""
    item = next((each for each in option.walk() if each.name == kind and each.attributes.get("name") == name), None)
    if item is None:
        return None
    for found in item.named("psf:Value"):
        return found.content()
    for reference in item.named("psf:ParameterRef"):
        for parameter in ticket.walk():
            if parameter.name == "psf:ParameterInit" and parameter.attributes["name"] == reference.attributes["name"]:
                return "".join(found.content() for found in parameter.named("psf:Value")[:1])
    return None


def number_of(ticket, option, kind, name):
    try:
        return int(text_of(ticket, option, kind, name) or "")
    except ValueError:
        return None


class Media:
    """A sheet: its id in the table of media sizes, and its size."""

    def __init__(self, table):
        self.table = table
        self.id, self.size = table_id(table, "ISOA4"), (210000, 297000)

    def is_standard(self):
        return self.id >= 2

    def set_size(self, size):
        found = next((number for number, row in enumerate(self.table) if row[1:] == size), None)
        if found is not None and found >= 2:
            self.id = found
        elif found is None and self.is_standard():
            self.id = 0
        self.size = size

    def turn(self):
        self.set_size(self.size[::-1])

    def read(self, ticket):
        option = option_of(ticket, "psk:PageMediaSize")
        number = table_id(self.table, bare_name(option)) if option else None
        if number is None:
            return
        self.id = number
        if self.is_standard():
            self.set_size(self.table[number][1:])
        size = tuple(number_of(ticket, option, "psf:ScoredProperty", "psk:MediaSize" + side) for side in ("Width", "Height"))
        if None not in size:
            self.size = size
        elif not self.is_standard():
            raise JobFails("a custom sheet without a size")

    def record(self):
        """(id, size) as a fallback."""
        return (self.id, self.table[self.id][1:] if self.is_standard() else self.size)


def table_id(table, keyword):
    return next((number for number, row in enumerate(table) if row[0] == keyword), None)


class Settings:
    """The five settings, which keep what a ticket does not say."""

    def __init__(self, table):
        self.scaling, self.offset, self.scale = FIT_MEDIA, (0, 0), (0, 0)
        self.feed = "ShortEdgeFirst"
        self.media = Media(table)
        self.orientation = "Portrait"
        self.range = (0, 0, 0, 0)

    def read(self, ticket):
        self.read_scaling(ticket)
        self.read_feed(ticket)
        self.media.read(ticket)
        option = option_of(ticket, "psk:PageOrientation")
        if option and bare_name(option) in ORIENTATIONS:
            self.orientation = bare_name(option)
        self.read_range(ticket)

    def read_scaling(self, ticket):
        option = option_of(ticket, "psk:PageScaling")
        # The private option is looked up among the public ones.
        if not option or bare_name(option) not in SCALINGS:
            return
        self.scaling = bare_name(option)
        if not self.scaling.startswith("Custom"):
            self.offset, self.scale = (0, self.offset[1]), (0, self.scale[1])
            return
        names = ("OffsetWidth", "OffsetHeight") + (("Scale",) * 2 if self.scaling == "CustomSquare" else
                                                   ("ScaleWidth", "ScaleHeight"))
        values = [number_of(ticket, option, "psf:ScoredProperty", "psk:" + name) for name in names]
        if None in values:
            raise JobFails("a custom scaling without its values")
        self.offset, self.scale = tuple(values[:2]), tuple(values[2:])

    def read_feed(self, ticket):
        for scope in SCOPES:
            option = option_of(ticket, f"psk:{scope}InputBin")
            if not option:
                continue
            if bare_name(option) in BINS:
                text = text_of(ticket, option, "psf:ScoredProperty", "psk:FeedDirection")
                name = (text or "").strip().rpartition(":")[2]
                self.feed = name if name in FEEDS else self.feed
            return

    def read_range(self, ticket):
        for scope in SCOPES:
            option = option_of(ticket, f"krk:{scope}PrintableMediaSize")
            if not option:
                continue
            if bare_name(option, True) == "PrintableMediaSize":
                bounds = ()
                for end in ("Min", "Max"):
                    pair = tuple(number_of(ticket, option, "psf:Property", f"krk:{end}{side}") for side in ("Width", "Height"))
                    bounds += (0, 0) if None in pair else pair
                if bounds[0] > bounds[2] or bounds[1] > bounds[3]:
                    raise JobFails("a range that is upside down")
                self.range = bounds
            return

    def holds(self, size):
        return self.range[0] <= size[0] <= self.range[2] and self.range[1] <= size[1] <= self.range[3]


class Decision:
    """What becomes of a page."""

    def __init__(self, is_turned, ticket):
        self.is_turned = is_turned
        self.ticket = ticket  # the new one, or None


class Job:
    """One job on its way through the filter. default_sheet is that of the user's locale."""

    def __init__(self, device, table, default_sheet):
        self.tickets = EffectiveTickets(device)
        self.table, self.default_sheet = table, default_sheet
        self.settings = Settings(table)

    def enter(self, scope, own):
        self.tickets.enter(scope, own)
        self.settings.read(self.tickets.tickets[scope])

    def page(self, own):
        """Enters a page with its own ticket, and decides."""
        self.enter(PAGE, own)
        settings = copy.deepcopy(self.settings)
        fallback = self.fallback()
        media = settings.media
        if settings.orientation in ("Landscape", "ReverseLandscape"):
            media.turn()
            settings.orientation = ORIENTATIONS[ORIENTATIONS.index(settings.orientation) + 1]
        width, height = media.size
        is_turned = width <= height if settings.feed == "LongEdgeFirst" else width > height
        if is_turned:
            media.turn()
        is_outside = not settings.holds(media.size)
        if is_outside:
            self.fall_back(settings, fallback)
        return Decision(is_turned, new_ticket(own, settings) if is_turned or is_outside else None)

    def fallback(self):
        """(id, size) of the sheet for pages that are out of range."""
        for scope in (DOCUMENT, JOB):
            media = Media(self.table)
            media.read(self.tickets.tickets[scope])
            if self.settings.holds(media.size):
                return media.record()
        number = table_id(self.table, self.default_sheet)
        if self.settings.holds(self.table[number][1:]):
            return number, self.table[number][1:]
        media = Media(self.table)
        media.id = 0
        media.set_size(self.settings.range[:2])
        return media.record()

    def fall_back(self, settings, fallback):
        number, size = fallback
        if settings.scaling == FIT_MEDIA:
            lengths = settings.media.size + size
            factor = min(size[0] / lengths[0], size[1] / lengths[1]) if min(lengths) > 0 else 1.0
            settings.scaling, settings.offset = "Custom", (0, 0)
            settings.scale = (min(int(factor * 100), LARGEST),) * 2
        settings.media.id, settings.media.size = number, self.table[number][1:]


def new_ticket(own, settings):
    """The page's ticket with the settings in the place of its own."""
    if own is None:
        own = Node("psf:PrintTicket", {"version": "1", "xmlns:xsd": XSD, "xmlns:xsi": XSI, "xmlns:psf": PSF, "xmlns:psk": PSK})
    ticket = copy.deepcopy(own)
    keywords = next(name[6:] for name, uri in ticket.attributes.items() if uri == PSK) + ":"
    media = settings.media
    keyword, *nominal = media.table[media.id]
    if media.is_standard() and tuple(nominal) != media.size:
        raise JobFails("a standard sheet of another size")
    write(ticket, keywords, "PageMediaSize", keyword, [
        element("psf:ScoredProperty", {"name": keywords + "MediaSize" + side}, value("integer", length))
        for side, length in (("Height", media.size[1]), ("Width", media.size[0]))])
    write(ticket, keywords, "PageOrientation", settings.orientation, [])
    names, values = {
        "Custom": (("OffsetWidth", "OffsetHeight", "ScaleWidth", "ScaleHeight"), settings.offset + settings.scale),
        "CustomSquare": (("OffsetWidth", "OffsetHeight", "Scale"), settings.offset + settings.scale[:1]),
    }.get(settings.scaling, ((), ()))
    parameters = [element("psf:ParameterInit", {"name": "krk:PageScaling" + name}, value("integer", number))
                  for name, number in zip(names, values)]
    write(ticket, keywords, "PageScaling", settings.scaling, [
        element("psf:ScoredProperty", {"name": keywords + name},
                element("psf:ParameterRef", {"name": "krk:PageScaling" + name})) for name in names], parameters)
    return ticket


def write(ticket, keywords, feature, option, properties, parameters=()):
    """Puts a feature in the place of all of its name, with its parameters in front of it."""
    old = [child for child in ticket.children if child.attributes.get("name") == keywords + feature
           and child.name == "psf:Feature"]
    gone = {item.attributes["name"] for child in old for item in child.walk() if item.name == "psf:ParameterRef"}
    ticket.children = [child for child in ticket.children if not any(child is each for each in old)
                       and not (child.name == "psf:ParameterInit" and child.attributes["name"] in gone)]
    ticket.children += list(parameters) + [
        element("psf:Feature", {"name": keywords + feature}, Node("psf:Option", {"name": keywords + option}, properties))]
