"""The mutants that no test can kill, each with its reason: tests/mutants.md."""
import re

ENTRY = re.compile(r"- (`+) ?(?P<before>.*?) ?\1 → (`+) ?(?P<after>.*?) ?\3: (?P<reason>\S.*)")


class Malformed(Exception):
    pass


def read(path):
    """(file, function, before, after): reason, of a document with a heading for each file and each function."""
    reasons = {}
    file = function = last = None
    with open(path, encoding="utf-8") as document:
        for number, line in enumerate(document, 1):
            line = line.rstrip("\n")
            if line.startswith("## "):
                file, function, last = line[3:].strip("` "), None, None
            elif line.startswith("### "):
                function, last = line[4:].strip("` "), None
            elif line.startswith("- "):
                found = ENTRY.fullmatch(line)
                if not found or not file or not function:
                    raise Malformed(f"{path}({number}): expected - `line` → `changed line`: reason, below its function")
                last = file, function, found["before"], found["after"]
                reasons[last] = found["reason"]
            elif line.startswith("  ") and last:
                reasons[last] += " " + line.strip()
            elif line.strip() and file:
                raise Malformed(f"{path}({number}): neither a heading nor an entry")
    return reasons


def entry(mutant):
    """The line of the document for a mutant, its reason left to be written."""
    return f"- {quoted(mutant.before)} → {quoted(mutant.after)}: "


def quoted(text):
    return f"`` {text} ``" if "`" in text else f"`{text}`"
