"""Small pictures of pages for a page of HTML."""
import base64
import io
import os
import shutil
import subprocess
import tempfile

from PIL import Image

HEIGHT = 150
WIDTH = 190
# 11 inches are then 198 pixels; what is drawn larger is made smaller.
DPI = 18


def thumbnails(document, numbers):
    """{page number from 1: data URI} of those pages that mutool can draw."""
    if not document or not numbers or not os.path.isfile(document) or not shutil.which("mutool"):
        return {}
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(["mutool", "draw", "-q", "-r", str(DPI * 2), "-o", os.path.join(folder, "%d.png"), document,
                        ranges(numbers)], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=300, check=False)
        found = {}
        for number in numbers:
            picture = os.path.join(folder, f"{number}.png")
            if os.path.exists(picture):
                found[number] = data_uri(picture)
        return found


def ranges(numbers):
    """The numbers as mutool takes them: "1-3,7"."""
    pieces = []
    for number in sorted(numbers):
        if pieces and pieces[-1][1] == number - 1:
            pieces[-1][1] = number
        else:
            pieces.append([number, number])
    return ",".join(f"{first}-{last}" if last > first else str(first) for first, last in pieces)


def data_uri(picture):
    with Image.open(picture) as opened:
        image = opened.convert("RGB")
    image.thumbnail((WIDTH, HEIGHT), Image.LANCZOS)
    content = io.BytesIO()
    image.save(content, "WEBP", quality=60, method=2)
    return "data:image/webp;base64," + base64.b64encode(content.getvalue()).decode("ascii")
