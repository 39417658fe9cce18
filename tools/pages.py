"""Reading and rendering XPS documents from scripts: which parts are pages, and what they look like.

Independent of the dev kit on purpose: packages are read with zipfile, markup with ElementTree, pages drawn by mutool.
"""
import glob
import os
import posixpath
import re
import subprocess
import tempfile
import urllib.parse
import xml.etree.ElementTree as ElementTree
import zipfile

from PIL import Image, ImageChops, ImageFilter

START_TYPES = ("http://schemas.microsoft.com/xps/2005/06/fixedrepresentation",
               "http://schemas.openxps.org/oxps/v1.0/fixedrepresentation")
TICKET_TYPES = ("http://schemas.microsoft.com/xps/2005/06/printticket",
                "http://schemas.openxps.org/oxps/v1.0/printticket")


class Package:
    """The parts of a package by name, without regard to letter case, pieces joined."""

    def __init__(self, path):
        self.parts = {}
        self.names = {}
        pieces = {}
        with zipfile.ZipFile(path) as archive:
            for entry in archive.infolist():
                entry.flag_bits &= ~1  # a lie in some files: nothing in an XPS document is encrypted
                name = "/" + entry.filename.lstrip("/").replace("\\", "/")
                piece = re.fullmatch(r"(.*)/\[(\d+)\](?:\.last)?\.piece", name, re.IGNORECASE)
                if piece:
                    pieces.setdefault(piece[1], {})[int(piece[2])] = archive.read(entry)
                elif not name.endswith("/"):
                    self._add(name, archive.read(entry))
        for name, found in pieces.items():
            self._add(name, b"".join(found[number] for number in sorted(found)))

    def _add(self, name, content):
        self.parts.setdefault(name.lower(), content)
        self.names.setdefault(name.lower(), name)

    def key(self, name):
        """The key of a part in parts; None when there is no such part."""
        return next((key for key in (urllib.parse.unquote(name).lower(), name.lower()) if key in self.parts), None)

    def read(self, name):
        return self.parts.get(self.key(name))

    def relationships(self, name):
        """(type, absolute target) of each relationship of a part; "/" is the package."""
        folder, file = posixpath.split(name)
        content = self.read(posixpath.join(folder, "_rels", file + ".rels"))
        if content is None:
            return []
        return [(item.get("Type"), posixpath.normpath(posixpath.join(folder, item.get("Target"))))
                for item in ElementTree.fromstring(content) if item.get("Target")]

    def ticket(self, name):
        return next((target for kind, target in self.relationships(name) if kind in TICKET_TYPES), None)

    def _targets(self, name, tag):
        root = ElementTree.fromstring(self.read(name))
        return [posixpath.normpath(posixpath.join(posixpath.dirname(name), item.get("Source")))
                for item in root if item.tag.rsplit("}", 1)[-1] == tag and item.get("Source")]

    def sequence(self):
        """The start part; of several the last, which is also what mutool draws."""
        return [target for kind, target in self.relationships("/") if kind in START_TYPES][-1]

    def documents(self):
        return self._targets(self.sequence(), "DocumentReference")

    def pages(self):
        return [page for document in self.documents() for page in self._targets(document, "PageContent")]


def page_size(markup):
    """Width and height of a FixedPage in 1/96 inch."""
    root = ElementTree.fromstring(markup)
    return float(root.get("Width")), float(root.get("Height"))


def render(path, dpi=72):
    """The pages of a document as PIL images, drawn by mutool; None when mutool refuses the document."""
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run(["mutool", "draw", "-q", "-r", str(dpi), "-o", os.path.join(folder, "%d.png"), path],
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=300)
        files = sorted(glob.glob(os.path.join(folder, "*.png")), key=lambda f: int(os.path.basename(f)[:-4]))
        if done.returncode != 0 or not files:
            return None
        return [Image.open(file).convert("RGB") for file in files]


def turned(image):
    """A page image after the turn of 270 degrees that the filter gives: the point (x, y) goes to (y, width - x)."""
    return image.transpose(Image.ROTATE_90)


# A pixel of a page that was drawn on another grid keeps its colour to this much, of 255, once its neighbours may lend
# theirs. Of more than a few such pixels something is gone or in another place; so it is of a page with less or more ink.
NEAR = 64
STRAY_PIXELS = 8
STRAY_SHARE = 0.1
WEIGHT_SHARE = 0.06


def difference(expected, actual):
    """What sets two pictures of a page apart beyond what drawing it on another grid explains (anti-aliasing, hints, a
    raster that is off by one pixel), as a text; None for pictures of the same page. What counts is the ink, what is not
    white: every pixel of the one must have its like in the other within a pixel's reach, and the other way round."""
    if abs(expected.width - actual.width) > 1 or abs(expected.height - actual.height) > 1:
        return f"the page is {actual.width} x {actual.height} pixels, not {expected.width} x {expected.height}"
    # Rounding a turned page can cost a pixel.
    corner = (0, 0, min(expected.width, actual.width), min(expected.height, actual.height))
    expected, actual = expected.crop(corner), actual.crop(corner)
    if expected.tobytes() == actual.tobytes():
        return None
    weights = [sum(level % 256 * count for level, count in enumerate(ImageChops.invert(each).histogram()))
               for each in (expected, actual)]
    if abs(weights[0] - weights[1]) > WEIGHT_SHARE * max(weights):
        return f"the page has {weights[1] / max(weights[0], 1):.0%} of its ink"
    # Lines of one pixel become two grey ones on another grid: in the mean of nine pixels they are alike.
    expected, actual = (each.filter(ImageFilter.BoxBlur(1)) for each in (expected, actual))
    for first, second, text in ((expected, actual, "are missing"), (actual, expected, "are not the page's")):
        stray = sum(_beyond(first, second).histogram()[NEAR:])
        ink = sum(_strongest(ImageChops.invert(first)).histogram()[NEAR:])
        if stray > min(STRAY_PIXELS, STRAY_SHARE * ink):
            return f"{stray} of {ink} pixels of ink {text}"
    return None


def _beyond(first, second):
    """By how much each pixel lies outside of the colours that the other picture has within a pixel's reach."""
    return _strongest(ImageChops.lighter(ImageChops.subtract(first, _reached(second, ImageChops.lighter)),
                                         ImageChops.subtract(_reached(second, ImageChops.darker), first)))


def _strongest(image):
    red, green, blue = image.split()
    return ImageChops.lighter(ImageChops.lighter(red, green), blue)


def _reached(image, choose):
    """The extreme of each pixel and its eight neighbours."""
    width, height = image.size
    for across in (True, False):
        size = (width - 1, height) if across else (width, height - 1)
        step = (1, 0) if across else (0, 1)
        before, after = image.crop((0, 0) + size), image.crop(step + (width, height))
        result = image.copy()
        result.paste(choose(before, after), (0, 0))
        result.paste(choose(before, result.crop(step + (width, height))), step)
        image = result
    return image
