"""Documents whose pages are turned by a script, right or wrong on purpose."""
import re
import zipfile

import pagemodel

TWO_MILLIMETRES = 2 / 25.4 * 96
CANVAS = re.compile(r'<Canvas RenderTransform="([^"]*)">')
GLYPHS = re.compile(r"<((?:\w+:)?Glyphs)\b[^>]*></\1>")


def turned_parts(package):
    """{part name: turned markup} of a package's pages."""
    return {part: pagemodel.turned_markup(package.parts[part]) for part in map(package.key, package.pages())}


def write_package(package, path, changed):
    """The package with other contents for some of its parts."""
    with zipfile.ZipFile(path, "w") as archive:
        for part, content in package.parts.items():
            archive.writestr(package.names[part].lstrip("/"), changed.get(part, content))


def empty(markup, _original):
    text = markup.decode()
    root = re.search(r"<((?:\w+:)?FixedPage)\b", text)[1]
    return (text[:CANVAS.search(text).end()] + f"</Canvas></{root}>").encode()


def moved(right, down):
    def change(markup, _original):
        text = markup.decode()
        values = CANVAS.search(text)[1].split(",")
        values[4:] = ["%.2f" % (float(values[4]) + right), "%.2f" % (float(values[5]) + down)]
        return CANVAS.sub(lambda _: f'<Canvas RenderTransform="{",".join(values)}">', text, 1).encode()
    return change


def without_run(markup, _original):
    """Without the middle one of the glyph runs that have three letters or more; None where there is none."""
    text = markup.decode()
    runs = [run for run in GLYPHS.finditer(text)
            if len(re.findall(r"\w", (re.search(r' UnicodeString="([^"]*)"', run[0]) or ["", ""])[1])) >= 3]
    if not runs:
        return None
    run = runs[len(runs) // 2]
    return (text[:run.start()] + text[run.end():]).encode()


def at_angle(degrees):
    def change(_markup, original):
        return pagemodel.turned_markup(original, degrees)
    return change


DAMAGES = {
    "empty": empty,
    "moved 2 mm to the right": moved(TWO_MILLIMETRES, 0),
    "moved 2 mm down": moved(0, TWO_MILLIMETRES),
    "without a glyph run": without_run,
    "turned by 90": at_angle(90.0),
    "turned by 180": at_angle(180.0),
    "not turned": at_angle(0.0),
}
