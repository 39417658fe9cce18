"""A TrueType font of block letters, made from the bitmaps below, so that the samples need no font of anybody's."""

import io

from fontTools.fontBuilder import FontBuilder
from fontTools.pens.ttGlyphPen import TTGlyphPen

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
    pen = TTGlyphPen(None)
    for first, *rest in contours:
        pen.moveTo(first)
        for point in rest:
            pen.lineTo(point)
        pen.closePath()
    return pen.glyph()


def _characters():
    """Code points with the names of their glyphs; small letters look like capitals."""
    characters = {ord(" "): "space"}
    for character in BITMAPS:
        characters[ord(character)] = "block%04X" % ord(character)
        if character.isascii() and character.isalpha():
            characters[ord(character.lower())] = characters[ord(character)]
    return characters


def make_font():
    """The bytes of the font."""
    box = [[(0, 0), (0, 700), (500, 700), (500, 0)], [(100, 100), (400, 100), (400, 600), (100, 600)]]
    glyphs = {".notdef": _glyph(box), "space": _glyph([])}
    glyphs.update(("block%04X" % ord(character), _glyph(_rectangles(bitmap))) for character, bitmap in BITMAPS.items())

    font = FontBuilder(UNITS_PER_EM, isTTF=True)
    font.setupGlyphOrder(list(glyphs))
    font.setupCharacterMap(_characters())
    font.setupGlyf(glyphs)
    font.setupHorizontalMetrics({name: (ADVANCE, glyph.xMin if glyph.numberOfContours else 0)
                                 for name, glyph in glyphs.items()})
    font.setupHorizontalHeader(ascent=800, descent=-200)
    font.setupNameTable({"familyName": "Blocks", "styleName": "Regular", "uniqueFontIdentifier": "Blocks Regular 1.0",
                         "fullName": "Blocks Regular", "version": "Version 1.0", "psName": "Blocks"}, mac=False)
    font.setupOS2(sTypoAscender=700, sTypoDescender=-100, sTypoLineGap=100, usWinAscent=700, usWinDescent=100,
                  xAvgCharWidth=ADVANCE, achVendID="BLCK", fsSelection=0x40, sxHeight=500, sCapHeight=700)
    font.setupPost(isFixedPitch=1)
    # The same font comes out whenever it is made: dated 1970, in seconds since 1904.
    font.updateHead(created=2082844800, modified=2082844800)
    font.font.recalcTimestamp = False
    data = io.BytesIO()
    font.save(data)
    return data.getvalue()


def obfuscate(font, guid):
    """The font as XPS embeds it: the first 32 bytes mixed with the GUID that is the part's name."""
    key = bytes.fromhex(guid.replace("-", ""))[::-1]
    return bytes(byte ^ key[index % 16] for index, byte in enumerate(font[:32])) + font[32:]
