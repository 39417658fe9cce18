"""A TrueType font of block letters, made from the bitmaps below, so that the samples need no font of anybody's."""

import struct

UNITS_PER_EM = 1000
PIXEL = 100
ADVANCE = 600

# Seven rows of five pixels each, top row first.
BITMAPS = {
    "A": "01110 10001 10001 11111 10001 10001 10001",
    "B": "11110 10001 10001 11110 10001 10001 11110",
    "C": "01110 10001 10000 10000 10000 10001 01110",
    "D": "11110 10001 10001 10001 10001 10001 11110",
    "E": "11111 10000 10000 11110 10000 10000 11111",
    "F": "11111 10000 10000 11110 10000 10000 10000",
    "G": "01110 10001 10000 10111 10001 10001 01110",
    "H": "10001 10001 10001 11111 10001 10001 10001",
    "I": "01110 00100 00100 00100 00100 00100 01110",
    "J": "00111 00010 00010 00010 00010 10010 01100",
    "K": "10001 10010 10100 11000 10100 10010 10001",
    "L": "10000 10000 10000 10000 10000 10000 11111",
    "M": "10001 11011 10101 10101 10001 10001 10001",
    "N": "10001 11001 10101 10011 10001 10001 10001",
    "O": "01110 10001 10001 10001 10001 10001 01110",
    "P": "11110 10001 10001 11110 10000 10000 10000",
    "Q": "01110 10001 10001 10001 10101 10010 01101",
    "R": "11110 10001 10001 11110 10100 10010 10001",
    "S": "01111 10000 10000 01110 00001 00001 11110",
    "T": "11111 00100 00100 00100 00100 00100 00100",
    "U": "10001 10001 10001 10001 10001 10001 01110",
    "V": "10001 10001 10001 10001 10001 01010 00100",
    "W": "10001 10001 10001 10101 10101 11011 10001",
    "X": "10001 10001 01010 00100 01010 10001 10001",
    "Y": "10001 10001 01010 00100 00100 00100 00100",
    "Z": "11111 00001 00010 00100 01000 10000 11111",
    "0": "01110 10001 10011 10101 11001 10001 01110",
    "1": "00100 01100 00100 00100 00100 00100 01110",
    "2": "01110 10001 00001 00110 01000 10000 11111",
    "3": "11110 00001 00001 01110 00001 00001 11110",
    "4": "00010 00110 01010 10010 11111 00010 00010",
    "5": "11111 10000 11110 00001 00001 10001 01110",
    "6": "01110 10000 10000 11110 10001 10001 01110",
    "7": "11111 00001 00010 00100 01000 01000 01000",
    "8": "01110 10001 10001 01110 10001 10001 01110",
    "9": "01110 10001 10001 01111 00001 00001 01110",
    ".": "00000 00000 00000 00000 00000 01100 01100",
    ",": "00000 00000 00000 00000 00110 00100 01000",
    ":": "00000 01100 01100 00000 01100 01100 00000",
    "-": "00000 00000 00000 11111 00000 00000 00000",
    "/": "00001 00001 00010 00100 01000 10000 10000",
    "(": "00010 00100 01000 01000 01000 00100 00010",
    ")": "01000 00100 00010 00010 00010 00100 01000",
    "{": "00010 00100 00100 01000 00100 00100 00010",
    "}": "01000 00100 00100 00010 00100 00100 01000",
    "<": "00010 00100 01000 10000 01000 00100 00010",
    ">": "01000 00100 00010 00001 00010 00100 01000",
    "&": "01100 10010 10100 01000 10101 10010 01101",
    '"': "01010 01010 01010 00000 00000 00000 00000",
    "'": "00100 00100 00100 00000 00000 00000 00000",
    "\u00e9": "00010 00100 01110 10001 11111 10000 01110",
    "\U0001f600": "01110 10001 11011 10001 10101 11011 01110",
}


def _rectangles(bitmap):
    """One clockwise rectangle for each run of pixels in a row."""
    contours = []
    for row, pixels in enumerate(bitmap.split()):
        bottom = (6 - row) * PIXEL
        column = 0
        while column < len(pixels):
            if pixels[column] == "0":
                column += 1
                continue
            start = column
            while column < len(pixels) and pixels[column] == "1":
                column += 1
            left, right, top = start * PIXEL, column * PIXEL, bottom + PIXEL
            contours.append([(left, bottom), (left, top), (right, top), (right, bottom)])
    return contours


def _glyph(contours):
    if not contours:
        return b""
    points = [point for contour in contours for point in contour]
    xs, ys = [x for x, _ in points], [y for _, y in points]
    data = struct.pack(">5h", len(contours), min(xs), min(ys), max(xs), max(ys))
    end = -1
    for contour in contours:
        end += len(contour)
        data += struct.pack(">H", end)
    data += struct.pack(">H", 0)  # no instructions
    data += b"\x01" * len(points)  # on the curve, both coordinates as 16-bit differences
    for values in (xs, ys):
        previous = 0
        for value in values:
            data += struct.pack(">h", value - previous)
            previous = value
    return data + b"\0" * (-len(data) % 4)


def _character_map(characters):
    """A format 4 table for the basic plane and a format 12 table for everything, one segment a character."""
    basic = [(code, glyph) for code, glyph in characters if code < 0x10000] + [(0xFFFF, 0)]
    count = len(basic)
    search = 1 << (count.bit_length() - 1)
    body = struct.pack(">4H", count * 2, search * 2, search.bit_length() - 1, (count - search) * 2)
    codes = b"".join(struct.pack(">H", code) for code, _ in basic)
    deltas = b"".join(struct.pack(">H", (glyph - code) % 0x10000 if glyph else 1) for code, glyph in basic)
    body += codes + b"\0\0" + codes + deltas + b"\0\0" * count
    format4 = struct.pack(">3H", 4, 6 + len(body), 0) + body
    format12 = struct.pack(">HHIII", 12, 0, 16 + 12 * len(characters), 0, len(characters))
    format12 += b"".join(struct.pack(">3I", code, code, glyph) for code, glyph in characters)
    header = struct.pack(">HH", 0, 2)
    header += struct.pack(">HHI", 3, 1, 20) + struct.pack(">HHI", 3, 10, 20 + len(format4))
    return header + format4 + format12


def _names():
    texts = {1: "Blocks", 2: "Regular", 3: "Blocks Regular 1.0", 4: "Blocks Regular", 5: "Version 1.0", 6: "Blocks"}
    records, strings = b"", b""
    for number, text in texts.items():
        encoded = text.encode("utf-16-be")
        records += struct.pack(">6H", 3, 1, 0x409, number, len(encoded), len(strings))
        strings += encoded
    return struct.pack(">3H", 0, len(texts), 6 + len(records)) + records + strings


def _checksum(data):
    data += b"\0" * (-len(data) % 4)
    return sum(struct.unpack(">%dI" % (len(data) // 4), data)) & 0xFFFFFFFF


def _characters():
    """Code points with their glyphs; small letters look like capitals. Glyph 0 is a box, glyph 1 a space."""
    glyph_of = {" ": 1}
    for index, character in enumerate(BITMAPS):
        glyph_of[character] = index + 2
        if character.isascii() and character.isalpha():
            glyph_of[character.lower()] = index + 2
    return sorted((ord(character), glyph) for character, glyph in glyph_of.items())


def make_font():
    """The bytes of the font."""
    box = [[(0, 0), (0, 700), (500, 700), (500, 0)], [(100, 100), (400, 100), (400, 600), (100, 600)]]
    glyphs = [_glyph(box), b""] + [_glyph(_rectangles(bitmap)) for bitmap in BITMAPS.values()]
    offsets = [0]
    for glyph in glyphs:
        offsets.append(offsets[-1] + len(glyph))
    most_contours = max(len(_rectangles(bitmap)) for bitmap in BITMAPS.values())

    tables = {
        b"OS/2": struct.pack(">HhHHH11h10s4I4sHHH3hHH2I", 3, ADVANCE, 400, 5, 0, 650, 600, 0, 75, 650, 600, 0, 350, 50,
                             250, 0, b"\0" * 10, 1, 0, 0, 0, b"BLCK", 0x40, 0x20, 0xFFFF, 700, -100, 100, 700, 100,
                             1, 0) + struct.pack(">2h3H", 500, 700, 0, 0x20, 1),
        b"cmap": _character_map(_characters()),
        b"glyf": b"".join(glyphs),
        b"head": struct.pack(">4I2H2Q4h2H3h", 0x00010000, 0x00010000, 0, 0x5F0F3CF5, 0x0B, UNITS_PER_EM, 0, 0, 0, 0,
                             500, 700, 0, 8, 2, 1, 0),
        b"hhea": struct.pack(">I3hH11hH", 0x00010000, 800, -200, 0, ADVANCE, 0, 100, 500, 1, 0, 0, 0, 0, 0, 0, 0,
                             len(glyphs)),
        b"hmtx": struct.pack(">Hh", ADVANCE, 0) * len(glyphs),
        b"loca": b"".join(struct.pack(">I", offset) for offset in offsets),
        b"maxp": struct.pack(">I14H", 0x00010000, len(glyphs), most_contours * 4, most_contours, 0, 0, 2, 0, 0, 0, 0, 0,
                             0, 0, 0),
        b"name": _names(),
        b"post": struct.pack(">IihhI4I", 0x00030000, 0, -100, 50, 1, 0, 0, 0, 0),
    }
    count = len(tables)
    search = 1 << (count.bit_length() - 1)
    header = struct.pack(">I4H", 0x00010000, count, search * 16, search.bit_length() - 1, (count - search) * 16)
    offset = len(header) + 16 * count
    directory, body = b"", b""
    head_offset = 0
    for tag, data in tables.items():
        if tag == b"head":
            head_offset = offset + len(body)
        directory += struct.pack(">4s3I", tag, _checksum(data), offset + len(body), len(data))
        body += data + b"\0" * (-len(data) % 4)
    font = bytearray(header + directory + body)
    struct.pack_into(">I", font, head_offset + 8, (0xB1B0AFBA - _checksum(bytes(font))) & 0xFFFFFFFF)
    return bytes(font)


def obfuscate(font, guid):
    """The font as XPS embeds it: the first 32 bytes mixed with the GUID that is the part's name."""
    key = bytes.fromhex(guid.replace("-", ""))[::-1]
    return bytes(byte ^ key[index % 16] for index, byte in enumerate(font[:32])) + font[32:]
