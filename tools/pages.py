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

from PIL import Image, ImageChops

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

    def read(self, name):
        return self.parts.get(urllib.parse.unquote(name).lower(), self.parts.get(name.lower()))

    def relationships(self, name):
        """(type, absolute target) of each relationship of a part; "/" is the package."""
        folder, file = posixpath.split(name)
        content = self.read(posixpath.join(folder, "_rels", file + ".rels"))
        if content is None:
            return []
        return [(item.get("Type"), posixpath.normpath(posixpath.join(folder, item.get("Target"))))
                for item in ElementTree.fromstring(content)]

    def ticket(self, name):
        return next((target for kind, target in self.relationships(name) if kind in TICKET_TYPES), None)

    def _targets(self, name, tag):
        root = ElementTree.fromstring(self.read(name))
        return [posixpath.normpath(posixpath.join(posixpath.dirname(name), item.get("Source")))
                for item in root if item.tag.rsplit("}", 1)[-1] == tag and item.get("Source")]

    def sequence(self):
        return next(target for kind, target in self.relationships("/") if kind in START_TYPES)

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


def difference(first, second):
    """Share of the pixels that differ by more than anti-aliasing explains, 0 for equal pictures. Sizes may differ by
    the one pixel that rounding a turned page costs."""
    if abs(first.width - second.width) > 1 or abs(first.height - second.height) > 1:
        return 1.0
    size = (min(first.width, second.width), min(first.height, second.height))
    best = 1.0
    # A turned page's last column becomes its first row, so the two rasters may be off by one pixel.
    for left, top in ((0, 0), (first.width - size[0], first.height - size[1])):
        grey = ImageChops.difference(first.crop((left, top, left + size[0], top + size[1])),
                                     second.crop((0, 0) + size)).convert("L")
        share = sum(grey.histogram()[96:]) / float(size[0] * size[1])
        best = min(best, share)
    return best
