"""Zip archives of named parts, written in the ways that producers write them."""

import io
import zipfile

_DATE = (1980, 1, 1, 0, 0, 0)


class _Stream(io.RawIOBase):
    """An output that cannot seek: the archive then has data descriptors behind its entries, as a printer's has."""

    def __init__(self, target):
        self._target = target

    def writable(self):
        return True

    def write(self, data):
        return self._target.write(data)


def pieces_of(parts, size):
    """The parts cut into pieces of a size, in turn one piece of each, as a producer sends them that has all of them
    in work at once."""
    waiting = [(name, [data[start:start + size] for start in range(0, len(data), size)] or [b""])
               for name, data in parts]
    pieces, number = [], 0
    while waiting:
        for name, chunks in waiting:
            last = ".last" if number + 1 == len(chunks) else ""
            pieces.append(("%s/[%d]%s.piece" % (name, number, last), chunks[number]))
        number += 1
        waiting = [(name, chunks) for name, chunks in waiting if number < len(chunks)]
    return pieces


def write_archive(path, parts, streamed=False, stored=False):
    """Writes (name, bytes) pairs in their order; the names have no leading slash."""
    method = zipfile.ZIP_STORED if stored else zipfile.ZIP_DEFLATED
    with open(path, "wb") as file:
        with zipfile.ZipFile(_Stream(file) if streamed else file, "w") as archive:
            for name, data in parts:
                info = zipfile.ZipInfo(name, _DATE)
                info.compress_type = method
                archive.writestr(info, data)
