"""Small PNG pictures, made with zlib."""

import struct
import zlib


def _chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def make_png(width, height, pixel):
    """An RGB picture at 96 dots per inch; pixel(x, y) gives its colours."""
    rows = b"".join(
        b"\0" + bytes(channel for x in range(width) for channel in pixel(x, y)) for y in range(height))
    header = struct.pack(">2I5B", width, height, 8, 2, 0, 0, 0)
    resolution = struct.pack(">2IB", 3780, 3780, 1)
    return (b"\x89PNG\r\n\x1a\n" + _chunk(b"IHDR", header) + _chunk(b"pHYs", resolution) +
            _chunk(b"IDAT", zlib.compress(rows, 9)) + _chunk(b"IEND", b""))


def corners(width=64, height=48):
    """Red, green, blue and yellow quarters, top left to bottom right, so that a turned picture shows."""
    colours = ((220, 40, 40), (40, 160, 60), (40, 80, 220), (240, 200, 40))
    return make_png(width, height,
                    lambda x, y: colours[(1 if x >= width // 2 else 0) + (2 if y >= height // 2 else 0)])
