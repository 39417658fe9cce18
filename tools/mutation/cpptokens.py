"""C++ source as tokens, each with the function that it stands in.

No parser of the language: enough to find statements, conditions, calls and literals in code that clang-format has laid
out, where a comparison has a space on both sides and a template argument list has none.
"""
import re
from dataclasses import dataclass

TOKEN = re.compile(
    r"""(?P<directive>^[ \t]*\#(?:[^\n]*\\\n)*[^\n]*)
    | (?P<comment>//[^\n]*|/\*.*?\*/)
    | (?P<string>(?:u8|[LuU])?R"(?P<delimiter>[^(\s]*)\(.*?\)(?P=delimiter)"|(?:u8|[LuU])?"(?:[^"\\\n]|\\.)*")
    | (?P<character>(?:u8|[LuU])?'(?:[^'\\\n]|\\.)+')
    | (?P<number>0[xX][0-9a-fA-F']+[uUlL]*|(?:\d[\d']*\.?\d*|\.\d+)(?:[eE][+-]?\d+)?[uUlLfF]*)
    | (?P<name>[A-Za-z_]\w*)
    | (?P<punctuator><=>|->\*|<<=|>>=|\.\.\.|::|->|\+\+|--|<<|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|\S)""",
    re.VERBOSE | re.MULTILINE | re.DOTALL)

OPENING = {"(": ")", "[": "]", "{": "}"}
TYPE_KEYWORDS = {"class", "struct", "union", "enum"}


@dataclass
class Token:
    kind: str
    text: str
    start: int
    line: int  # from 1
    spaced: bool = False  # has white space on both sides
    match: int = -1  # of a bracket: the index of its partner
    scope: str = ""  # the function, or the constant or class, that it stands in
    in_code: bool = False  # within a function's body or what a constructor starts its members with
    in_value: bool = False  # within what a constant or a member outside of functions starts with

    @property
    def end(self):
        return self.start + len(self.text)


def tokens_of(text):
    """All tokens but comments and directives."""
    tokens = []
    line, counted = 1, 0
    for found in TOKEN.finditer(text):
        if found.lastgroup in ("comment", "directive"):
            continue
        line += text.count("\n", counted, found.start())
        counted = found.start()
        before = text[found.start() - 1:found.start()] or " "
        after = text[found.end():found.end() + 1] or " "
        kind = "string" if found.group("string") else found.lastgroup
        tokens.append(Token(kind, found.group(), found.start(), line, before.isspace() and after.isspace()))
    match_brackets(tokens)
    name_scopes(tokens, 0, len(tokens), [])
    return tokens


def match_brackets(tokens):
    opened = []
    for index, token in enumerate(tokens):
        if token.kind != "punctuator":
            continue
        if token.text in OPENING:
            opened.append(index)
        elif opened and token.text == OPENING[tokens[opened[-1]].text]:
            token.match = opened.pop()
            tokens[token.match].match = index


def name_before(tokens, index):
    """The qualified name that ends before the index: base::Thing::Act, Thing::~Thing, Thing::operator==."""
    first = index - 1
    while first > 0 and index - first < 4 and tokens[first].text != "operator" and \
            "operator" in (tokens[first - 1].text, tokens[max(first - 2, 0)].text):
        first -= 1
    if tokens[first - 1].text == "~":
        first -= 1
    while first >= 2 and tokens[first - 1].text == "::" and tokens[first - 2].kind == "name":
        first -= 2
    name = "".join(token.text for token in tokens[first:index])
    return re.sub(r"\boperator(?=[a-z])", "operator ", name)


def name_scopes(tokens, index, end, path):
    """Walks declarations outside of functions and names what they and their bodies belong to."""
    while index < end:
        index = declaration(tokens, index, end, path)


def declaration(tokens, start, end, path):
    """One declaration from start; the index behind it."""
    index = start
    parameters = -1  # the opening parenthesis of a function's parameters
    initialised = -1  # the first token of an initialiser
    while index < end:
        token = tokens[index]
        if token.text == ";":
            index += 1
            break
        if token.text == ":" and index > start and tokens[index - 1].text in ("public", "private", "protected"):
            index += 1
            break
        if token.text == "=" and initialised < 0 and tokens[index - 1].text != "operator":
            initialised = index
        if token.text == "(" and parameters < 0 and initialised < 0:
            parameters = index
        if token.text == "{":
            kind = body_kind(tokens, start, index, parameters, initialised)
            if kind == "block":
                name_scopes(tokens, index + 1, token.match, path)
                return token.match + 1
            if kind == "type":
                name = next((t.text for t in reversed(tokens[start:type_name_end(tokens, start, index)])
                             if t.kind == "name" and t.text != "final"), "")
                mark(tokens, start, index, path + [name], False)
                if "enum" in [t.text for t in tokens[start:index]]:
                    mark(tokens, index, token.match, path + [name], False, True)
                else:
                    name_scopes(tokens, index + 1, token.match, path + [name])
                return token.match + 1
            if kind == "function":
                name = name_before(tokens, parameters)
                mark(tokens, start, parameters + 1, path + [name], False)
                close = tokens[parameters].match
                mark(tokens, parameters, close + 1, path + [name], False)
                mark(tokens, close + 1, token.match + 1, path + [name], True)
                return token.match + 1
            if initialised < 0 and parameters < 0:
                initialised = index
            index = token.match + 1
            continue
        index = token.match + 1 if token.text in ("(", "[") and token.match > index else index + 1
    if parameters >= 0:
        mark(tokens, start, index, path + [name_before(tokens, parameters)], False)
    else:
        value = initialised if initialised >= 0 else index
        name = path + [declared_name(tokens, start, value)]
        mark(tokens, start, value, name, False)
        mark(tokens, value, index, name, False, True)
    return max(index, start + 1)


def type_name_end(tokens, start, brace):
    """Where a class's bases or an enumeration's type begin."""
    for index in range(start, brace):
        if tokens[index].text == ":":
            return index
    return brace


def declared_name(tokens, start, end):
    """The last name before an initialiser or the end of the declaration, array bounds left out."""
    names = [token.text for token in tokens[start:end] if token.kind == "name"]
    return names[-1] if names else ""


def body_kind(tokens, start, brace, parameters, initialised):
    """What the brace opens: block (namespace, extern "C"), type, function, or the braces of an initialiser."""
    words = [t.text for t in tokens[start:brace]]
    if words and words[0] in ("namespace", "extern") and parameters < 0 and initialised < 0:
        return "block" if words[0] == "namespace" or words[-1].startswith('"') else "initialiser"
    if words[:2] == ["inline", "namespace"]:
        return "block"
    if parameters < 0 and initialised < 0:
        return "type" if TYPE_KEYWORDS & set(words) else "initialiser"
    if initialised >= 0 and "operator" not in words:
        return "initialiser"
    if TYPE_KEYWORDS & set(words) and parameters >= 0 and tokens[parameters - 1].text not in words[-1:] \
            and starts_type(tokens, start, parameters):
        return "type"
    # A member that a constructor starts with braces: the name before the brace follows ':' or ','.
    close = tokens[parameters].match
    separators = [i for i in range(close, brace) if tokens[i].text == ":"]
    if separators and tokens[brace - 1].kind == "name" and tokens[brace - 2].text in (":", ","):
        return "initialiser"
    return "function"


def starts_type(tokens, start, parameters):
    """Whether the parentheses belong to a macro or alignment between a type's keyword and its name."""
    return any(t.text in TYPE_KEYWORDS for t in tokens[start:parameters]) and \
        tokens[parameters - 2].text in TYPE_KEYWORDS


def mark(tokens, start, end, path, in_code, in_value=False):
    scope = "::".join(part for part in path if part)
    for token in tokens[start:end]:
        token.scope = scope
        token.in_code = in_code
        token.in_value = in_value
