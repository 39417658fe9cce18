"""What print tickets ask for, as settings that can be put side by side."""
import xml.etree.ElementTree as ElementTree

FRAMEWORK = "{http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework}"
KEYWORDS = "http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords"
LONGEST = 60


def settings_of(text):
    """{name: value} in the order of the ticket; None for a text that is no ticket."""
    try:
        root = ElementTree.fromstring(text.encode("utf-8"))
    except (ElementTree.ParseError, ValueError):
        return None
    prefixes = _prefixes(text)
    settings = {}
    for element in root:
        _add(element, prefixes, "", settings)
    return settings


def _prefixes(text):
    """The prefix by which the ticket names each namespace: names of features stand in attributes."""
    found = {}
    events = ElementTree.iterparse(_Once(text.encode("utf-8")), events=["start-ns"])
    for _, (prefix, uri) in events:
        found[prefix] = "" if uri == KEYWORDS else prefix + ":"
    return found


class _Once:
    """The bytes as a file."""

    def __init__(self, content):
        self.content = content

    def read(self, _size=-1):
        content, self.content = self.content, b""
        return content


def _name(element, prefixes):
    return _short(element.get("name") or "", prefixes)


def _short(name, prefixes):
    """Without the prefix of the public keywords, which everybody knows."""
    prefix, colon, local = name.partition(":")
    return prefixes.get(prefix, prefix + ":") + local if colon else name


def _value(element, prefixes):
    value = element.find(FRAMEWORK + "Value")
    reference = element.find(FRAMEWORK + "ParameterRef")
    if value is not None:
        text = (value.text or "").strip()
        return _short(text, prefixes) if len(text) <= LONGEST else f"{len(text)} characters"
    return "→ " + _name(reference, prefixes) if reference is not None else ""


def _add(element, prefixes, parent, settings):
    kind = element.tag.removeprefix(FRAMEWORK)
    name = parent + _name(element, prefixes)
    if kind == "Feature":
        options = [_option(option, prefixes) for option in element.findall(FRAMEWORK + "Option")]
        if options:
            settings[name] = " + ".join(options)
        for nested in element.findall(FRAMEWORK + "Feature"):
            _add(nested, prefixes, name + " / ", settings)
    elif kind in ("ParameterInit", "Property"):
        settings[name] = _value(element, prefixes)


def _option(option, prefixes):
    properties = {_name(item, prefixes): _value(item, prefixes) for item in option.findall(FRAMEWORK + "ScoredProperty")}
    texts = []
    sheet = [properties.get("MediaSize" + side, "") for side in ("Width", "Height")]
    if all(length.isdigit() for length in sheet):
        texts.append(" × ".join(f"{int(length) / 1000:g}" for length in sheet) + " mm")
        del properties["MediaSizeWidth"], properties["MediaSizeHeight"]
    texts += [f"{name} {value}" for name, value in properties.items()]
    name = _name(option, prefixes) or "(unnamed)"
    return f"{name} ({', '.join(texts)})" if texts else name
