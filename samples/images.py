"""Small PNG pictures."""

import io

from PIL import Image


def corners(width=64, height=48):
    """Red, green, blue and yellow quarters, top left to bottom right, so that a turned picture shows; 96 dots an inch."""
    colours = ((220, 40, 40), (40, 160, 60), (40, 80, 220), (240, 200, 40))
    picture = Image.new("RGB", (2, 2))
    picture.putdata(colours)
    data = io.BytesIO()
    picture.resize((width, height), Image.Resampling.NEAREST).save(data, "PNG", dpi=(96, 96))
    return data.getvalue()
