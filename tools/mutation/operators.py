"""What can be wrong with one line: every mutant of a source file."""
import hashlib
import re
from dataclasses import dataclass

from .cpptokens import tokens_of

KINDS = ("arithmetic", "boolean", "boundary", "check", "comparison", "condition", "constant", "logic", "off by one",
         "statement", "status", "swap")

COMPARISONS = {"==": "!=", "!=": "==", "<": ">=", ">=": "<", ">": "<=", "<=": ">"}
BOUNDARIES = {"<": "<=", "<=": "<", ">": ">=", ">=": ">"}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "|": "&", "&": "|", "+=": "-=", "-=": "+=", "|=": "&=",
              "&=": "|="}
BOOLEANS = {"true": "false", "false": "true", "TRUE": "FALSE", "FALSE": "TRUE", "VARIANT_TRUE": "VARIANT_FALSE",
            "VARIANT_FALSE": "VARIANT_TRUE"}
NAMES = {"min": "max", "max": "min"}
# Constants of the platform: each becomes the next of its row.
ROWS = (("kPTPageScope", "kPTDocumentScope", "kPTJobScope"), ("STREAM_SEEK_SET", "STREAM_SEEK_CUR", "STREAM_SEEK_END"),
        ("VT_BSTR", "VT_I4", "VT_BYREF", "VT_UNKNOWN"), ("NODE_ELEMENT", "NODE_TEXT", "NODE_ATTRIBUTE"),
        ("COINIT_MULTITHREADED", "COINIT_APARTMENTTHREADED"), ("CLSCTX_ALL", "CLSCTX_INPROC_SERVER", "CLSCTX_LOCAL_SERVER"),
        ("CP_UTF8", "CP_ACP"), ("LOCALE_INVARIANT", "LOCALE_USER_DEFAULT"))
NEXT = {name: row[(place + 1) % len(row)] for row in ROWS for place, name in enumerate(row)}

STATUS = re.compile(r"(S_OK|S_FALSE|(E|DISP_E|CLASS_E|STG_E|ERROR)_[A-Z_]+)$")
NO_STATEMENT = {"return", "if", "else", "for", "while", "do", "switch", "case", "default", "break", "continue", "using",
                "throw", "goto", "static_assert", "typedef", "public", "protected", "private", "try", "catch"}
VALUE_ENDS = {")", "]", "}"}
NOT_A_CALL = {"if", "while", "for", "switch", "return", "catch", "sizeof", "decltype", "noexcept", "alignof", "typeid"}


@dataclass(frozen=True)
class Mutant:
    file: str
    line: int
    kind: str
    function: str
    before: str  # the line as it stands, without the space around it
    after: str
    text: str  # the whole changed line
    declared: bool = False  # outside of functions: a constant, an enumerator, what a member starts with

    @property
    def key(self):
        """What names it for good: not the line's number, which every edit above it changes."""
        return self.file, self.function, self.before, self.after

    @property
    def id(self):
        return hashlib.sha256("\0".join(self.key).encode()).hexdigest()[:8]


def mutants_of(file, text):
    """All mutants of the file, in the order of their lines, no two alike."""
    found = {}
    for mutant in Source(file, text).mutants():
        found.setdefault((mutant.line, mutant.text), mutant)
    return sorted(found.values(), key=lambda m: (m.line, KINDS.index(m.kind), m.text))


def apply(mutant, text):
    lines = text.split("\n")
    lines[mutant.line - 1] = mutant.text
    return "\n".join(lines)


class Source:
    def __init__(self, file, text):
        self.file = file
        self.lines = text.split("\n")
        self.starts = [0]
        for line in self.lines:
            self.starts.append(self.starts[-1] + len(line) + 1)
        self.text = text
        self.tokens = tokens_of(text)

    def mutants(self):
        for index, token in enumerate(self.tokens):
            if token.scope.endswith("static_assert") or not (token.in_code or token.in_value):
                continue
            yield from self.of_operator(index)
            yield from self.of_literal(index)
            if token.in_code:
                yield from self.of_name(index)
                yield from self.of_condition(index)
                yield from self.of_statement(index)
                yield from self.of_list(index)

    # --- making one

    def mutant(self, kind, index, start, end, replacement):
        """The mutant that has the replacement in place of text[start:end], which lies on one line."""
        line = self.tokens[index].line
        first = self.starts[line - 1]
        old = self.lines[line - 1]
        new = old[:start - first] + replacement + old[end - first:]
        if start < first or end > first + len(old) or new.strip() == old.strip():
            return
        yield Mutant(self.file, line, kind, self.tokens[index].scope, old.strip(), new.strip(), new.rstrip(),
                     not self.tokens[index].in_code)

    def replaced(self, kind, index, replacement):
        token = self.tokens[index]
        return self.mutant(kind, index, token.start, token.end, replacement)

    def text_of(self, first, last):
        """From the token first to the token last, both included."""
        return self.text[self.tokens[first].start:self.tokens[last].end]

    def one_line(self, first, last):
        return self.tokens[first].line == self.tokens[last].line and "\n" not in self.text_of(first, last)

    def word(self, index):
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    # --- the kinds

    def of_operator(self, index):
        token = self.tokens[index]
        if token.kind != "punctuator":
            return
        if token.text in ("++", "--"):
            yield from self.replaced("arithmetic", index, "--" if token.text == "++" else "++")
            return
        before = self.tokens[index - 1]
        binary = token.spaced and (before.kind != "punctuator" or before.text in VALUE_ENDS)
        # At the end of a line the operand follows on the next one.
        if not binary or before.text in NO_STATEMENT:
            return
        if token.text in COMPARISONS:
            yield from self.replaced("comparison", index, COMPARISONS[token.text])
        if token.text in BOUNDARIES:
            yield from self.replaced("boundary", index, BOUNDARIES[token.text])
        if token.text in ("&&", "||"):
            yield from self.replaced("logic", index, "||" if token.text == "&&" else "&&")
        texts = {before.kind, self.tokens[index + 1].kind}
        if token.text in ARITHMETIC and not texts & {"string", "character"}:
            yield from self.replaced("arithmetic", index, ARITHMETIC[token.text])

    def of_literal(self, index):
        token = self.tokens[index]
        if token.kind == "number":
            yield from self.of_number(index)
        elif token.kind == "string" and self.word(index - 1) != "extern":
            quote = token.text.rfind('"')
            raw = token.text.find('R"') in (0, 1, 2) and token.text.find('R"') < token.text.find('"')
            if "\n" in token.text:
                return
            if raw:
                quote = token.text.rfind(")")
            yield from self.replaced("constant", index, token.text[:quote] + "~" + token.text[quote:])
        elif token.kind == "character":
            yield from self.replaced("constant", index, token.text[:token.text.index("'")] + "'~'")
        elif token.text in BOOLEANS and self.word(index - 2) != "noexcept":
            yield from self.replaced("boolean", index, BOOLEANS[token.text])

    def of_number(self, index):
        text = self.tokens[index].text
        found = re.match(r"(0[xX][0-9a-fA-F']+|[\d.']+(?:[eE][+-]?\d+)?)(\w*)$", text)
        if not found:
            return
        digits, suffix = found.groups()
        digits = digits.replace("'", "")
        if digits.lower().startswith("0x"):
            value = int(digits, 16)
            yield from self.replaced("constant", index, f"0x{value ^ 1:x}{suffix}")
        elif re.fullmatch(r"\d+", digits):
            value = int(digits)
            yield from self.replaced("constant", index, f"{value + 1}{suffix}")
            if value > 0:
                yield from self.replaced("off by one", index, f"{value - 1}{suffix}")
        else:
            yield from self.replaced("constant", index, f"{float(digits) + 1!r}{suffix}")

    def of_name(self, index):
        token = self.tokens[index]
        if token.kind != "name":
            return
        if token.text in NEXT:
            yield from self.replaced("constant", index, NEXT[token.text])
        if token.text in NAMES and self.word(index - 1) == "::" and self.word(index - 2) == "std":
            yield from self.replaced("comparison", index, NAMES[token.text])
        if STATUS.match(token.text):
            other = {"S_OK": "S_FALSE", "S_FALSE": "S_OK", "E_UNEXPECTED": "E_ABORT"}.get(token.text, "E_UNEXPECTED")
            if token.text.startswith("ERROR_"):
                other = "ERROR_INVALID_FUNCTION"
            yield from self.replaced("status", index, other)

    def of_condition(self, index):
        token = self.tokens[index]
        if token.text in ("if", "while"):
            opening = index + 1 + (self.word(index + 1) == "constexpr")
            if self.word(opening) != "(" or self.tokens[opening].match < 0:
                return
            yield from self.negated(opening + 1, self.tokens[opening].match - 1)
        elif token.text == "?":
            first = index
            while self.word(first - 1) not in ("return", "=", "(", ",", "{", ";", ":", "?", "<<"):
                first = self.tokens[first - 1].match if self.word(first - 1) in VALUE_ENDS else first - 1
                if first <= 0:
                    return
            if first < index:
                yield from self.negated(first, index - 1)

    def negated(self, first, last):
        """The condition from first to last, what an if statement declares before it left out."""
        index = first
        while index <= last:
            if self.word(index) == ";":
                first = index + 1
            index = self.tokens[index].match + 1 if self.word(index) in ("(", "[", "{") else index + 1
        index = first
        while index <= last:
            if self.word(index) == "=":
                return  # a declaration, which cannot be negated
            index = self.tokens[index].match + 1 if self.word(index) in ("(", "[", "{") else index + 1
        words = [self.word(i) for i in range(first, last + 1)]
        # One comparison alone is turned round as a comparison.
        if first > last or not self.one_line(first, last) or COMPARISONS.keys() & set(words) and not {"&&", "||"} & set(words):
            return
        if words[0] == "!" and not {"&&", "||"} & set(words):
            replacement = self.text_of(first + 1, last)
        else:
            replacement = f"!({self.text_of(first, last)})"
        yield from self.mutant("condition", first, self.tokens[first].start, self.tokens[last].end, replacement)

    def of_statement(self, index):
        if not self.starts_statement(index):
            return
        if self.word(index) == "if":
            yield from self.of_guard(index)
            return
        end = self.statement_end(index)
        if self.word(index) in NO_STATEMENT or end < 0:
            return
        called = self.called_name(index)
        if self.word(called) == "ThrowIfFailed":
            yield from self.mutant("check", index, self.tokens[index].start, self.tokens[called].end,
                                   "static_cast<void>")
        if self.word(called) == "ThrowIfNull":
            yield from self.removed("check", index, end)
        elif self.word(index - 1) == ")" and self.word(called).startswith("Throw"):
            return  # the guard as a whole is left out
        elif self.is_expression(index, end) or self.is_unused_owner(index, end):
            yield from self.removed("statement", index, end)

    def called_name(self, index):
        """The last name of name::name::… at the index."""
        while self.tokens[index].kind == "name" and self.word(index + 1) == "::":
            index += 2
        return index

    def removed(self, kind, index, end):
        if self.one_line(index, end):
            yield from self.mutant(kind, index, self.tokens[index].start, self.tokens[end].end, ";")
        else:
            start = self.tokens[index].start
            yield from self.mutant(kind, index, start, start, "if (false) ")

    def starts_statement(self, index):
        before = self.word(index - 1)
        if before in (";", "{", "}", "else", "do"):
            return self.braces_hold_statements(index - 1)
        if before == ")":
            opening = self.tokens[index - 1].match
            return self.word(opening - 1) in ("if", "for", "while", "constexpr")
        if before == ":":  # a label
            back = index - 2
            while back > 0 and self.word(back) not in (";", "{", "}", "case", "default", "?"):
                back -= 1
            return self.word(back) in ("case", "default")
        return False

    def braces_hold_statements(self, index):
        """Whether the opening brace at the index, or that of the closing one, is not that of an initialiser."""
        opening = index if self.word(index) == "{" else self.tokens[index].match if self.word(index) == "}" else -1
        if opening <= 0:
            return True
        before = self.word(opening - 1)
        return before in (")", "else", "do", "try", "const", "noexcept", "override", "final", "mutable", ";", "{", "}",
                          ":") or self.tokens[opening].scope != self.tokens[opening - 1].scope

    def statement_end(self, index):
        """The statement's semicolon, -1 when it has none of its own."""
        while index < len(self.tokens):
            text = self.word(index)
            if text == ";":
                return index
            if text in ("(", "[", "{"):
                if self.tokens[index].match < 0:
                    return -1
                index = self.tokens[index].match
            elif text in VALUE_ENDS:
                return -1
            index += 1
        return -1

    def of_guard(self, index):
        """if (…) return …; on one line and without an else: left out."""
        opening = index + 1 + (self.word(index + 1) == "constexpr")
        then = self.tokens[opening].match + 1
        leaves = self.word(then) in ("return", "throw", "break", "continue") or any(
            self.word(i).startswith("Throw") for i in range(then, then + 3))
        if self.word(opening) != "(" or not leaves:
            return
        end = self.statement_end(then)
        if end > 0 and self.one_line(index, end) and self.word(end + 1) != "else":
            yield from self.mutant("check", index, self.tokens[index].start, self.tokens[end].end, ";")

    def is_expression(self, index, end):
        """A call, an assignment or a step, and not a declaration."""
        while self.word(index) in ("*", "++", "--", "::", "("):
            if self.word(index) != "(":
                index += 1
            elif index + 1 < end and self.tokens[index].match > 0:
                index = self.tokens[index].match
                break
        if self.word(index) == "delete":
            return True
        if self.tokens[index].kind != "name" and self.word(index) != ")":
            return False
        index += 1
        called = False
        while index < end:
            text = self.word(index)
            if text in ("::", ".", "->"):
                index += 2
                called = False
            elif text in ("(", "["):
                index = self.tokens[index].match + 1
                called = text == "("
            elif text == "<" and not self.tokens[index].spaced:
                while index < end and self.word(index) not in (">", ">>"):
                    index += 1
                index += 1
            elif text in ("=", "<<", ">>", "++", "--") or re.fullmatch(r"[-+*/%&|^]=|<<=|>>=", text):
                return True
            else:
                return False
        return called or self.word(end - 1) in ("++", "--") or self.word(end - 2) in ("++", "--") \
            or self.word(index - 2) in ("++", "--")

    def is_unused_owner(self, index, end):
        """A declaration of an object that does its work by living: its name is used nowhere else."""
        bracket = next((i for i in range(index, end) if self.word(i) in ("(", "{")), end)
        declared = bracket - 1
        if declared <= index or self.tokens[declared].kind != "name" or "=" in map(self.word, range(index, end)):
            return False
        if self.tokens[declared - 1].kind != "name" and self.word(declared - 1) != ">":
            return False
        name, scope = self.word(declared), self.tokens[index].scope
        return sum(t.text == name and t.scope == scope for t in self.tokens) == 1

    def of_list(self, index):
        token = self.tokens[index]
        if token.text not in ("(", "{") or token.match < 0 or not self.one_line(index, token.match):
            return
        before = self.tokens[index - 1]
        if token.text == "(" and (before.kind != "name" or before.text in NOT_A_CALL) and before.text != ">":
            return
        if token.text == "{" and (before.text in (")", "else", "do", ";", "{", "}") and before.text != "{"):
            return
        parts = self.list_parts(index)
        if len(parts) < 2 or token.text == "{" and len(parts) != 2:
            return
        if before.text == "swap":
            return
        for left, right in zip(parts, parts[1:]):
            kinds = [self.tokens[part[0]].kind == "string" or self.word(part[0]) in ("nullptr", "__uuidof")
                     for part in (left, right)]
            if kinds[0] != kinds[1]:
                continue  # would not compile
            first, second = self.text_of(*left), self.text_of(*right)
            between = self.text[self.tokens[left[1]].end:self.tokens[right[0]].start]
            yield from self.mutant("swap", index, self.tokens[left[0]].start, self.tokens[right[1]].end,
                                   second + between + first)

    def list_parts(self, opening):
        """(first, last) of each part between commas; none when it is no list of expressions."""
        parts, first, index = [], opening + 1, opening + 1
        end = self.tokens[opening].match
        while index < end:
            text = self.word(index)
            if text == ";":
                return []
            if text == ",":
                parts.append((first, index - 1))
                first = index + 1
            elif text in ("(", "[", "{"):
                index = self.tokens[index].match
            elif text == "<" and not self.tokens[index].spaced:
                depth = index
                while depth < end and self.word(depth) not in (">", ">>"):
                    depth += 1
                if depth < end:
                    index = depth
            index += 1
        if first < end:
            parts.append((first, end - 1))
        return parts if all(a <= b for a, b in parts) else []
