#!/usr/bin/env python3
"""Draws the pages of an XPS document as one picture of thumbnails: contactsheet.py DOCUMENT PICTURE.png"""
import sys

from PIL import Image, ImageDraw

from pages import render

CELL = 200
GAP = 16
COLUMNS = 5


def main(document, picture):
    images = render(document, dpi=36)
    if images is None:
        sys.exit(f"contactsheet.py: mutool cannot draw {document}")
    columns = min(COLUMNS, len(images))
    rows = -(-len(images) // columns)
    sheet = Image.new("RGB", (GAP + columns * (CELL + GAP), GAP + rows * (CELL + GAP + 12)), "#8090a0")
    draw = ImageDraw.Draw(sheet)
    for number, image in enumerate(images):
        image.thumbnail((CELL, CELL), Image.LANCZOS)
        left = GAP + number % columns * (CELL + GAP) + (CELL - image.width) // 2
        top = GAP + number // columns * (CELL + GAP + 12) + (CELL - image.height) // 2
        sheet.paste(image, (left, top))
        draw.rectangle((left - 1, top - 1, left + image.width, top + image.height), outline="black")
        draw.text((left, top + image.height + 1), str(number + 1), fill="white")
    sheet.save(picture)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit("usage: contactsheet.py DOCUMENT PICTURE.png")
    main(sys.argv[1], sys.argv[2])
