#!/usr/bin/env python3
"""Shows that the comparison of pictures sees what it must see: picture_test.py MAKE_SAMPLES.py [--all]

The pages of the samples, and of every third document of the corpus (of every one with --all), are turned by a script:
rightly, which the comparison must accept, and wrong on purpose, which it must refuse on every page where it shows.
"""
import collections
import os
import subprocess
import sys
import tempfile
import xml.parsers.expat
from concurrent.futures import ThreadPoolExecutor

from host import corpus_files
from pages import Package, difference, render, turned
from turnedpages import DAMAGES, turned_parts, write_package

SAMPLES = ("sample.xps", "resources.xps", "utf16.xps")
# A frame looks the same upside down, and a run may have nearly the colour behind it.
MAY_BE_LOST = {"turned by 90": 0.05, "without a glyph run": 0.1}


class Outcome:
    """What became of one document's pages: {damage: [caught, visible]}, and the pages that were refused or missed."""

    def __init__(self, document):
        self.name = "/".join(document.split(os.sep)[-2:])
        self.pages = 0
        self.refused = []
        self.missed = []
        self.counts = collections.defaultdict(lambda: [0, 0])


def try_document(document, folder):
    """None for a document that cannot be drawn, or has a page that is no XML."""
    outcome = Outcome(document)
    pictures = render(document)
    if pictures is None:
        return None
    package = Package(document)
    try:
        names = [package.key(name) for name in package.pages()]
        right = turned_parts(package)
    except (xml.parsers.expat.ExpatError, IndexError, TypeError):
        return None
    expected = [turned(picture) for picture in pictures]
    drawn = draw(package, right, folder)
    if drawn is None or len(drawn) != len(expected) or len(names) != len(expected):
        return None
    outcome.pages = len(names)
    for number, (first, second) in enumerate(zip(expected, drawn), 1):
        complaint = difference(first, second)
        if complaint:
            outcome.refused.append(f"page {number}: {complaint}")
    for damage, change in DAMAGES.items():
        changed = {name: change(right[name], package.parts[name]) for name in right}
        pictures = draw(package, {name: text or right[name] for name, text in changed.items()}, folder)
        for number, name in enumerate(names):
            if changed[name] is None or same(pictures[number], drawn[number]):
                continue
            caught = difference(expected[number], pictures[number]) is not None
            outcome.counts[damage][0] += caught
            outcome.counts[damage][1] += 1
            if not caught:
                outcome.missed.append(f"page {number + 1}, {damage}: not seen")
    return outcome


def draw(package, changed, folder):
    with tempfile.TemporaryDirectory(dir=folder) as place:
        path = os.path.join(place, "turned.xps")
        write_package(package, path, changed)
        return render(path)


def same(first, second):
    return first.size == second.size and first.tobytes() == second.tobytes()


def report(title, outcomes, is_strict):
    """Prints the counts of some documents; how many checks passed, and how many failed."""
    outcomes = [outcome for outcome in outcomes if outcome]
    pages = sum(outcome.pages for outcome in outcomes)
    refused = sum(len(outcome.refused) for outcome in outcomes)
    print(f"{title}: {len(outcomes)} documents, {pages} pages turned rightly, {refused} of them refused")
    for outcome in outcomes:
        for text in outcome.refused + outcome.missed:
            print(f"  {outcome.name}: {text}")
    failed = int(refused > 0 or pages == 0)
    for damage in DAMAGES:
        caught, visible = (sum(outcome.counts[damage][index] for outcome in outcomes) for index in (0, 1))
        allowed = 0 if is_strict else MAY_BE_LOST.get(damage, 0)
        is_good = visible > 0 and visible - caught <= allowed * visible
        failed += not is_good
        print(f"  {damage}: seen on {caught} of the {visible} pages where it shows{'' if is_good else ', too few'}")
    return len(DAMAGES) + 1 - failed, failed


def main(make_samples, *options):
    with tempfile.TemporaryDirectory() as folder, ThreadPoolExecutor(os.cpu_count()) as pool:
        samples = os.path.join(folder, "samples")
        subprocess.run([sys.executable, make_samples, samples], check=True)
        names = [os.path.join(samples, name) for name in SAMPLES]
        passed, failed = report("samples", pool.map(lambda name: try_document(name, folder), names), True)
        corpus = corpus_files()
        if corpus is None:
            print("skipped: the pages of the corpus, because there is no corpus folder (CORPUS_FOLDER)")
        else:
            chosen = corpus if "--all" in options else corpus[::3]
            more = report("corpus", pool.map(lambda name: try_document(name, folder), chosen), False)
            passed, failed = passed + more[0], failed + more[1]
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
