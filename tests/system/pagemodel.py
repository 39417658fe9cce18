"""The markup of a turned page, worked out a second time: what the filter must write for the bytes of a FixedPage.

Kept apart from the product on purpose. Expat reads; the numbers are those of a machine with 32-bit floats, one rounding
an operation, as GDI+ has them.
"""
import math
import re
import struct
import xml.parsers.expat
from fractions import Fraction

DECLARATION = '<?xml version="1.0" encoding="utf-8"?>'
NUMBER = re.compile(r"[ \t\r\n]*([+-]?)((?:[0-9]+\.?[0-9]*|\.[0-9]+)(?:[eE][+-]?[0-9]+)?)")
ESCAPES = (("&", "&amp;"), ("<", "&lt;"), (">", "&gt;"), ('"', "&quot;"), ("'", "&apos;"))
FLOAT_MAX = Fraction(2 - 2 ** -23) * 2 ** 127


def single(value):
    """A number rounded to a 32-bit float."""
    try:
        return struct.unpack("<f", struct.pack("<f", value))[0]
    except OverflowError:
        return math.copysign(math.inf, value)


def next_single(value, step):
    """The float beside a positive one."""
    bits = struct.unpack("<I", struct.pack("<f", value))[0] + step
    return struct.unpack("<f", struct.pack("<I", bits))[0]


def read_number(text):
    """The 32-bit float nearest to the number that a text starts with; 0 where there is none that a float can hold."""
    found = NUMBER.match(text)
    if not found:
        return 0.0
    digits = found[2]
    exponent = int((re.search(r"[eE](.*)", digits) or ["", "0"])[1])
    if abs(exponent) > 400:
        return 0.0
    exact = Fraction(digits)
    if exact > FLOAT_MAX + Fraction(2) ** 103 - Fraction(1, 10 ** 9):
        return 0.0
    # Rounded once: through a double it would be twice.
    guess = single(float(exact))
    if 0 < guess < math.inf:
        near = [each for each in (guess, next_single(guess, 1), next_single(guess, -1)) if each < math.inf]
        guess = min(near, key=lambda each: (abs(Fraction(each) - exact), struct.unpack("<I", struct.pack("<f", each))[0] & 1))
    return -guess if found[1] == "-" else guess


class Turn:
    """The affine map of a page of the given size: a turn, and a shift that brings it back to the corner."""

    def __init__(self, width, height, degrees):
        angle = single(math.pi / 180.0 * degrees)
        cosine, sine = single(math.cos(angle)), single(math.sin(angle))
        self.m11, self.m12, self.m21, self.m22, self.dx, self.dy = cosine, sine, -sine, cosine, 0.0, 0.0
        corners = [self.point(x, y) for x, y in ((0.0, 0.0), (width, 0.0), (0.0, height), (width, height))]
        left, top = min(0.0, *(x for x, _ in corners)), min(0.0, *(y for _, y in corners))
        self.dx, self.dy = single(self.dx - left), single(self.dy - top)

    def point(self, x, y):
        return (single(single(single(x * self.m11) + single(y * self.m21)) + self.dx),
                single(single(single(x * self.m12) + single(y * self.m22)) + self.dy))

    def size(self, left, top, right, bottom):
        """Width and height of what two opposite corners become."""
        (x1, y1), (x2, y2) = self.point(left, top), self.point(right, bottom)
        return single(max(x1, x2) - min(x1, x2)), single(max(y1, y2) - min(y1, y2))

    def text(self):
        values = (self.m11, self.m12, self.m21, self.m22, self.dx, self.dy)
        return ",".join("%.2f" % (0.0 if abs(value) <= single(0.001) else value) for value in values)


def turned_box(text, turn, page_width, page_height, is_bleed):
    """A box's new value, or None when it goes."""
    values = text.split(",")
    if len(values) != 4 or not all(value.strip(" \t\r\n") for value in values):
        return None
    left, top, width, height = map(read_number, values)
    width, height = turn.size(left, top, single(left + width), single(top + height))
    right, bottom = single(left + width), single(top + height)
    width, height = single(right - left), single(bottom - top)
    if is_bleed:
        goes = left > 0 or top > 0 or page_width > width or page_height > height
    else:
        goes = left < 0 or top < 0 or width > page_width or height > page_height
    return None if goes else ",".join("%.2f" % value for value in (left, top, right, bottom))


def local_name(name):
    return name.rpartition(":")[2]


def is_declaration(name):
    return name == "xmlns" or name.startswith("xmlns:")


def attribute(name, value):
    if local_name(name) == "UnicodeString" and not is_declaration(name):
        for character, entity in ESCAPES:
            value = value.replace(character, entity)
    return f' {name}="{value}"'


def turned_root(name, attributes, degrees):
    """The start tags of a FixedPage, and of the Canvas that it gets."""
    table = dict(attributes)
    width, height = (read_number(table.setdefault(key, "")) for key in ("Width", "Height"))
    turn = Turn(width, height, degrees)
    table["Width"], table["Height"] = ("%.2f" % value for value in turn.size(0.0, 0.0, width, height))
    for key in ("BleedBox", "ContentBox"):
        if key in table:
            value = turned_box(table.pop(key), turn, width, height, key == "BleedBox")
            if value is not None:
                table[key] = value
    # The order is that of UTF-16 units.
    text = "".join(attribute(key, table[key]) for key in sorted(table, key=lambda key: key.encode("utf-16-be")))
    return f'<{name}{text}><Canvas RenderTransform="{turn.text()}">'


def turned_markup(markup, degrees=270.0):
    """The bytes of a page after the turn. xml.parsers.expat.ExpatError for what is no XML."""
    out = [DECLARATION]

    def start(name, flat):
        # Wine's reader does not report a declaration of the prefix xml, which needs none. Declarations come last.
        attributes = [item for item in zip(flat[::2], flat[1::2]) if item[0] != "xmlns:xml"]
        attributes.sort(key=lambda item: is_declaration(item[0]))
        if local_name(name) == "FixedPage":
            out.append(turned_root(name, attributes, degrees))
            return
        out.append("<" + written_name(name) + "".join(attribute(*item) for item in attributes) + ">")

    def end(name):
        out.append("</Canvas>" if local_name(name) == "FixedPage" else "")
        out.append("</" + written_name(name) + ">")

    def written_name(name):
        return "Canvas.Resources" if local_name(name) == "FixedPage.Resources" else name

    parser = xml.parsers.expat.ParserCreate()
    parser.ordered_attributes = True
    parser.StartElementHandler, parser.EndElementHandler = start, end
    parser.Parse(markup, True)
    return "".join(out).encode("utf-8")
