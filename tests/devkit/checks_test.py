#!/usr/bin/env python3
"""docs/checks.md explains all that the kit can say of a filter, and everything that it explains is said in some test."""
import glob
import os
import re
import sys
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
ANY = "…"
LITERAL = re.compile(r'"((?:[^"\\]|\\.)*)"')
# Calls that tell of something; each has its text among the arguments.
TELLING = re.compile(r"\b(?:Breach|Found|LeftOpen|m_breaches\.push_back|findings\.push_back|findings\.emplace_back)\(")


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def sources(*folders):
    return sorted(name for folder in folders for kind in ("cpp", "h")
                  for name in glob.glob(os.path.join(ROOT, folder, "**", "*." + kind), recursive=True))


def rules():
    """{id: [what the host says]} of the tables whose first column is Id."""
    found, inside = {}, False
    for line in read(os.path.join(ROOT, "docs", "checks.md")).splitlines():
        inside = line.startswith("| Id |") or inside and line.startswith("|")
        cells = line.split(" | ")
        texts = re.findall(r"`([^`]+)`", cells[1]) if inside and len(cells) > 2 else []
        if texts:
            found[cells[0].strip("| ")] = texts
    return found


def table_lines():
    """What the table of modes has the host say, without the kind of the line."""
    text = read(os.path.join(ROOT, "docs", "checks.md")).partition("| Mode |")[2]
    return [re.sub(r"^(breach|finding): ", "", line) for line in re.findall(r"`((?:breach|finding): [^`]+)`", text)]


def unescaped(text):
    return re.sub(r"\\(.)", r"\1", text)


def arguments(text, start):
    """The arguments of the call whose parenthesis is open at start, and where it ends."""
    depth, begin, found, place = 0, start, [], start
    while place < len(text):
        letter = text[place]
        if letter == '"':
            place = LITERAL.match(text, place).end()
            continue
        if letter in "([{":
            depth += 1
        elif letter in ")]}":
            if depth == 0:
                break
            depth -= 1
        elif letter == "," and depth == 0:
            found.append(text[begin:place])
            begin = place + 1
        place += 1
    return found + [text[begin:place]], place


def shape(expression):
    """An expression that joins texts, with "…" for what is not a literal; nothing without a literal."""
    pieces = [piece.strip() for piece in re.split(r'("(?:[^"\\]|\\.)*")', expression)]
    if len(pieces) == 1:
        return ""
    text = ""
    for number, piece in enumerate(pieces):
        if number % 2:
            text += unescaped(piece[1:-1])
        elif re.sub(r"std::string\(|[+()\s]|^\{|\}$", "", piece):
            text += ANY
    return re.sub(ANY + "+", ANY, text)


def told():
    """(source, text) of each call that tells of something in words of its own."""
    for name in sources("devkit/pipeline", "devkit/filterhost", "devkit/prntvpt/api"):
        text = re.sub(r"//[^\n]*", "", read(name))
        for call in TELLING.finditer(text):
            for word in map(shape, arguments(text, call.end())[0]):
                if is_telling(word):
                    yield os.path.relpath(name, ROOT), word


def agree(one, other):
    """Whether some text is what both stand for, each with "…" for any text."""
    reached = {(0, 0)}
    todo = [(0, 0)]
    while todo:
        i, j = todo.pop()
        if i == len(one) and j == len(other):
            return True
        steps = []
        if i < len(one) and one[i] == ANY:
            steps += [(i + 1, j), (i, j + 1)]
        if j < len(other) and other[j] == ANY:
            steps += [(i, j + 1), (i + 1, j)]
        if i < len(one) and j < len(other) and one[i] == other[j]:
            steps.append((i + 1, j + 1))
        for step in steps:
            if step[0] <= len(one) and step[1] <= len(other) and step not in reached:
                reached.add(step)
                todo.append(step)
    return False


def shares_words(one, other):
    """Whether some words of one stand in the other: two texts of nearly nothing but "…" agree on anything."""
    return any(len(piece) >= 8 and piece in other for piece in one.split(ANY))


def explains(rule, text):
    return agree(rule, text) and (shares_words(rule, text) or shares_words(text, rule))


def is_telling(rule):
    """Not a rule that any text of somebody else's keeps."""
    return len(rule.replace(ANY, "")) > 8


class Checks(unittest.TestCase):
    def test_all_that_the_kit_says_is_explained(self):
        explained = [rule for texts in rules().values() for rule in texts if is_telling(rule)]
        telling = list(told())
        self.assertGreater(len(telling), 40)
        for name, text in telling:
            # What the provider tells of comes with its name in front.
            said = ANY + text if "prntvpt" in name else text
            self.assertTrue(any(explains(rule, said) for rule in explained), f"{name}: {text}")

    def test_all_that_is_explained_is_said_in_some_test(self):
        expected = set(table_lines())
        for name in sources("tests"):
            joined = re.sub(r'"\s*"', "", read(name))
            expected |= {unescaped(text) for text in LITERAL.findall(joined)}
        for identifier, texts in rules().items():
            # The tests of the provider know its breaches by their ids.
            if identifier.startswith("A0") and identifier in expected:
                continue
            for rule in filter(is_telling, texts):
                words = max(rule.split(ANY), key=len)
                self.assertTrue(any(words in text and agree(rule, ANY + text + ANY) for text in expected), identifier)

    def test_ids_are_words(self):
        self.assertEqual([], [each for each in rules() if not re.fullmatch(r"[a-z]+(-[a-z]+)*|A0[01][0-9A-F]", each)])


def main():
    return 0 if unittest.main(argv=sys.argv, exit=False).result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main())
