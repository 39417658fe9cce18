"""Jobs with random print tickets at every scope: settings that the device has or lacks, features with several options,
values missing, misplaced or written in another way."""
import random

from ticketmodel import DOCUMENT, JOB, KRK, PAGE, PSF, PSK, XSD, XSI

ORIENTATIONS = ("Landscape", "Portrait", "ReverseLandscape", "ReversePortrait", "Sideways")
BINS = ("AutoSelect", "Manual", "Cassette", "Tractor", "AutoSheetFeeder", "Tray1", "Tray2", "Tray3", "Tray4", "Tray9")
SCALINGS = ("Custom", "CustomSquare", "FitApplicationBleedSizeToPageImageableSize",
            "FitApplicationContentSizeToPageImageableSize", "FitApplicationMediaSizeToPageImageableSize",
            "FitApplicationMediaSizeToPageMediaSize", "FitApplicationMediaSizeToPageMediaSize", "None", "Weird")
SIZES = {"ISOA4": (210000, 297000), "NorthAmericaLetter": (215900, 279400), "ISOA5": (148000, 210000),
         "NorthAmericaLegal": (215900, 355600), "ISOA3": (297000, 420000), "ISOA4Rotated": (297000, 210000),
         "JISB5": (182000, 257000), "ISOA6": (105000, 148000), "BusinessCard": (55000, 91000),
         "NorthAmericaNote": (215900, 279400), "Roll08Inch": (203200, 0)}
# None of these lengths is one of a sheet that a device has, so that no likeness leads to one.
LENGTHS = (76199, 76200, 90000, 126999, 127000, 200000, 200001, 215901, 300000, 355601, 500000)


class TicketWriter:
    """Writes one ticket after the other with one random generator."""

    def __init__(self, rng):
        self.rng = rng

    def ticket(self, scope):
        """The text of a random ticket, or None for a part without one."""
        rng = self.rng
        if rng.random() < {JOB: 0.15, DOCUMENT: 0.4, PAGE: 0.3}[scope]:
            return None
        self.keywords = rng.choice(("psk",) * 8 + ("k",)) if scope == PAGE else "psk"
        items = [self.parameter("krk:JobStamp", 7)] if rng.random() < 0.2 else []
        for likely, write in ((0.45, self.bin), (0.6, self.media), (0.4, self.orientation), (0.45, self.scaling),
                              (0.12, self.range), (0.3, self.other)):
            if rng.random() < likely:
                items.append(write(scope))
        rng.shuffle(items)
        declarations = [f' xmlns:psf="{PSF}"', f' xmlns:{self.keywords}="{PSK}"', f' xmlns:xsi="{XSI}"', f' xmlns:xsd="{XSD}"',
                        f' xmlns:krk="{KRK}"', ' xmlns:ns0000="http://schemas.example.com/printing/trays/v1"', ' version="1"']
        rng.shuffle(declarations)
        blank = rng.choice(("", "\n ", "\r\n\t"))
        return f'<psf:PrintTicket{"".join(declarations)}>{blank}{blank.join(items)}{blank}</psf:PrintTicket>'

    def qualified(self, name):
        return name if ":" in name else f"{self.keywords}:{name}"

    def feature(self, name, options):
        content = "".join(f'<psf:Option name="{self.qualified(option)}">{values}</psf:Option>' if values else
                          f'<psf:Option name="{self.qualified(option)}"/>' for option, values in options)
        return f'<psf:Feature name="{self.qualified(name)}">{content}</psf:Feature>'

    def scored(self, name, value, kind="integer"):
        return (f'<psf:ScoredProperty name="{self.qualified(name)}"><psf:Value xsi:type="xsd:{kind}">{value}</psf:Value>'
                "</psf:ScoredProperty>")

    def parameter(self, name, value):
        return f'<psf:ParameterInit name="{name}"><psf:Value xsi:type="xsd:integer">{value}</psf:Value></psf:ParameterInit>'

    def several(self, make):
        """One option, at times with others behind it, whose values nobody may read."""
        count = self.rng.choice((1, 1, 1, 2, 3))
        options = [make() for _ in range(count)]
        # No two options of one name: the first would take what the others say.
        return list({option: (option, values) for option, values in reversed(options)}.values())[::-1]

    def bin(self, scope):
        rng = self.rng
        names = {JOB: (JOB,) * 4 + (DOCUMENT, PAGE), DOCUMENT: (DOCUMENT,) * 4 + (JOB, PAGE), PAGE: (PAGE,) * 4 + (JOB, DOCUMENT)}

        def option():
            name = rng.choice(BINS)
            name = "ns0000:" + name if name == "Tray2" and rng.random() < 0.5 else name
            feed = rng.choice(("LongEdgeFirst", "ShortEdgeFirst", None, None, "Sideways"))
            return name, self.scored("FeedDirection", self.qualified(feed), "QName") if feed else ""
        return self.feature(rng.choice(names[scope]) + "InputBin", self.several(option))

    def media(self, _scope):
        rng = self.rng

        def option():
            if rng.random() < 0.25:
                return "CustomMediaSize", self.size((rng.choice(LENGTHS), rng.choice(LENGTHS)))
            name = rng.choice(list(SIZES))
            size = SIZES[name]
            # A device's own sheet is put right; one that it lacks fails the job when it is written.
            if rng.random() < 0.03:
                size = (size[0] + 1, size[1])
            return name, self.size(size) if rng.random() < 0.7 else ""
        return self.feature("PageMediaSize", self.several(option))

    def size(self, size):
        values = [self.scored("MediaSizeWidth", size[0]), self.scored("MediaSizeHeight", size[1])]
        self.rng.shuffle(values)
        return "".join(values)

    def orientation(self, _scope):
        return self.feature("PageOrientation", self.several(lambda: (self.rng.choice(ORIENTATIONS), "")))

    def scaling(self, scope):
        rng = self.rng
        parameters = []

        def option():
            name = rng.choice(SCALINGS)
            if name == "Weird" and rng.random() < 0.5:
                return "krk:FitApplicationImageableSizeToImageableSize", ""
            names = {"Custom": ["OffsetWidth", "OffsetHeight", "ScaleWidth", "ScaleHeight"],
                     "CustomSquare": ["OffsetWidth", "OffsetHeight", "Scale"]}.get(name, [])
            if names and rng.random() < 0.02:
                names.pop()
            rng.shuffle(names)
            if rng.random() < 0.5:
                return name, "".join(self.scored(each, rng.randrange(-5000, 5000)) for each in names)
            text = ""
            for each in names:
                parameter = f"{rng.choice(('krk', self.keywords))}:PageScaling{each}"
                text += f'<psf:ScoredProperty name="{self.qualified(each)}"><psf:ParameterRef name="{parameter}"/></psf:ScoredProperty>'
                if all(parameter not in other for other in parameters):
                    parameters.append(self.parameter(parameter, rng.randrange(-5000, 5000)))
            return name, text
        feature = self.feature("PageScaling", self.several(option))
        return "".join(rng.sample(parameters, len(parameters))) + feature

    def range(self, scope):
        rng = self.rng
        bounds = {"MinWidth": rng.choice((50000, 100000)), "MinHeight": rng.choice((50000, 127001)),
                  "MaxWidth": rng.choice((215900, 300000, 210000)), "MaxHeight": rng.choice((297000, 420000))}
        if rng.random() < 0.03:
            bounds["MinWidth"] = 400000
        names = [name for name in bounds if rng.random() < 0.8]
        values = "".join(f'<psf:Property name="krk:{name}"><psf:Value xsi:type="xsd:integer">{bounds[name]}</psf:Value>'
                         "</psf:Property>" for name in names)
        return self.feature(f"krk:{rng.choice((JOB, DOCUMENT, PAGE))}PrintableMediaSize", [("krk:PrintableMediaSize", values)])

    def other(self, scope):
        name = self.rng.choice(("krk:%sStamp", "PageMediaColor", "krk:%sBinding"))
        name = name % scope if "%" in name else name
        return self.feature(name, [("krk:Draft" if "krk" in name else "White", self.scored("krk:Level", self.rng.randrange(9)))])


class GeneratedJob:
    """documents: (ticket, [page ticket]) pairs."""

    def __init__(self, seed, number):
        writer = TicketWriter(random.Random(f"{seed}/{number}"))
        rng = writer.rng
        self.ticket = writer.ticket(JOB)
        self.documents = []
        for _ in range(rng.choice((1, 1, 2, 3))):
            ticket = writer.ticket(DOCUMENT)
            self.documents.append((ticket, [writer.ticket(PAGE) for _ in range(rng.randrange(1, 6))]))


class WrittenJob:
    """A job of one page on a portrait sheet that says by itself on which devices the page is turned."""

    def __init__(self, title, ticket, page_ticket, turned_on):
        self.title, self.ticket, self.documents, self.turned_on = title, ticket, [(None, [page_ticket])], turned_on


def written_jobs():
    writer = TicketWriter(random.Random(0))
    writer.keywords = "psk"

    def ticket(*items):
        return (f'<psf:PrintTicket xmlns:psf="{PSF}" xmlns:psk="{PSK}" xmlns:xsi="{XSI}" xmlns:xsd="{XSD}" xmlns:krk="{KRK}"'
                f' version="1">{"".join(items)}</psf:PrintTicket>')

    def tray(feature, *options):
        return writer.feature(feature, [
            (name, writer.scored("FeedDirection", "psk:" + feed, "QName") if feed else "") for name, feed in options])
    letter = writer.feature("PageMediaSize", [("NorthAmericaLetter", writer.size(SIZES["NorthAmericaLetter"]))])
    return [
        # What stands in for the tray does not say, so the short edge goes first, as for every job at its start. A device
        # without the feature does not refuse the tray.
        WrittenJob("the feed direction of a tray that was refused is nobody's",
                   ticket(letter, tray("JobInputBin", ("Tray4", "LongEdgeFirst"), ("Tray5", "LongEdgeFirst"))), None, ("bare",)),
        WrittenJob("a feed direction behind an option without one is nobody's",
                   ticket(letter), ticket(tray("PageInputBin", ("Manual", None), ("Tray1", "LongEdgeFirst"))), ()),
        WrittenJob("the feed direction of the selected option counts",
                   ticket(letter), ticket(tray("PageInputBin", ("Tray1", "LongEdgeFirst"), ("Manual", "ShortEdgeFirst"))), ("bare", "trays")),
    ]
