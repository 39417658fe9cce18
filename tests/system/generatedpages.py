"""Pages as nobody writes them: random FixedPage markup that is well-formed XML and asks for every rule of the rewrite."""
import random

XPS = "http://schemas.microsoft.com/xps/2005/06"
NAMES = ("Canvas", "Path", "Glyphs", "Path.Fill", "ImageBrush", "VisualBrush.Visual", "ResourceDictionary", "Größe",
         "FixedPages", "fixedPage", "FixedPage.Resource", "a-b.c_d", "FixedPage.Resources.x")
ATTRIBUTES = ("Data", "Fill", "Width", "Height", "BleedBox", "ContentBox", "Indices", "RenderTransform", "xml:lang",
              "Name", "FixedPage.NavigateUri", "Ümlaut", "unicodestring", "UnicodeStringX")
TEXTS = ("", "M 0,0 L 1,1", "#FF000000", "{StaticResource a}", "/Resources/a.odttf", " two  blanks ", "tab\there",
         "line\nbreak", "cr\rlf\r\nend", "grüße", "日本語", "\U0001F600\U00020000", "'", "apostrophe's", "]]>", "{}{x}", "a>b",
         "=", "\u00a0", "\uffff".replace("\uffff", "\ufffd"), "é\u0301", "x" * 300)
REFERENCES = ("&amp;", "&lt;", "&gt;", "&quot;", "&apos;", "&#38;", "&#x3C;", "&#10;", "&#9;", "&#13;", "&#x1F600;", "&#233;",
              "&amp;amp;", "&amp;lt;", "&#x10FFFD;")
# Wine's reader refuses characters outside of ASCII in the name of a namespace and hands on an ampersand there as "&#38;";
# everywhere else it takes the text "&#38;" for an ampersand. So neither stands in these pages.
NAMESPACES = ("urn:a", XPS, "urn:u?a=1;b=2", "urn:it's/")
NUMBERS = ("816", "1056", "793.76", "1122.56", "0", "-0", "1", "0.001", "0.0011", "0.004", "0.005", "0.006", "1e3", "1.5E+2", "25e-2",
           ".5", "5.", "+7", "-7", "-793.7", "100000000", "16777217", "16777217.000000001", "16777219", "2147483648", "1e10",
           "1e20", "3e30", "1e-30", "0.1", "123456.789", "0x10", "inf", "nan", "1e", "1e+", "12abc", "abc", "1 2", "", " ", " 42 ", "--1",
           "+-1", "1.2.3", "1e39", "1e400", "-1e39", "00012", "4.35", "1.005", "83886.085", "8388608.5", "59.999999", "1,5")


class Writer:
    """One page; the same random generator gives the same page."""

    def __init__(self, rng):
        self.rng = rng
        self.elements = 0
        self.budget = rng.choice((0, 1, 3, 8, 20, 60)) if rng.random() < 0.98 else rng.randrange(400, 1500)

    def number(self):
        rng = self.rng
        kind = rng.random()
        if kind < 0.45:
            return rng.choice(NUMBERS)
        if kind < 0.8:
            return "%g" % rng.uniform(1, 2000)
        return "%.*f" % (rng.randrange(8), rng.uniform(-3000, 30000) * 10 ** rng.choice((-3, 0, 0, 3)))

    def box(self):
        rng = self.rng
        if rng.random() < 0.6:
            # Boxes round the page's size, so that each border of the comparison is near.
            width, height = self.width, self.height
            values = [rng.choice((0, 0, 0, -1, 1, -12, 48, 0.004)), rng.choice((0, 0, 0, -1, 1, -12, 48)),
                      rng.choice((width, height)) + rng.choice((0, 0, 1, -1, 0.01, -96, 300)),
                      rng.choice((width, height)) + rng.choice((0, 0, 1, -1, 0.01, -96, 300))]
            values = ["%.10g" % value for value in values]
        else:
            values = [self.number().replace(",", "") for _ in range(rng.choice((1, 2, 3, 4, 4, 4, 4, 4, 5, 8)))]
        return rng.choice((",", ",", ",", ", ", " ,")).join(values) + rng.choice(("",) * 12 + (",", " ", " x"))

    def value(self):
        rng = self.rng
        text = ""
        for _ in range(rng.choice((0, 1, 1, 1, 2, 3))):
            text += rng.choice(TEXTS).replace("&", "&amp;").replace("<", "&lt;")
            if rng.random() < 0.4:
                text += rng.choice(REFERENCES)
        return text

    def attribute(self, name, value):
        quote = self.rng.choice("\"\"\"'")
        value = value.replace(quote, "&quot;" if quote == '"' else "&#39;")
        blank = self.rng.choice((" ", " ", " ", "  ", "\n", "\t", "\r\n"))
        return f"{blank}{name}{self.rng.choice(('=', '=', ' = '))}{quote}{value}{quote}"

    def attributes(self, prefixes, given=()):
        """The text of some attributes in a random order, and the prefixes that hold below them."""
        rng = self.rng
        wanted = dict(given)
        for _ in range(rng.choice((0, 0, 0, 1, 2))):
            if rng.random() < 0.3:
                wanted["xmlns"] = rng.choice((XPS, "urn:default"))
            else:
                prefix = rng.choice(("a", "b", "x", "mc", "UnicodeString", "ö"))
                wanted["xmlns:" + prefix] = rng.choice(NAMESPACES)
        prefixes = dict(prefixes)
        prefixes.update((name[6:], value) for name, value in wanted.items() if name.startswith("xmlns:"))
        for _ in range(rng.choice((0, 0, 1, 2, 4, 7))):
            name = rng.choice(ATTRIBUTES)
            if prefixes and rng.random() < 0.25:
                name = rng.choice(list(prefixes)) + ":" + rng.choice(("Key", "UnicodeString", "Width", "FixedPage"))
            wanted.setdefault(name, self.value())
        if rng.random() < 0.35:
            wanted.setdefault("UnicodeString", self.value())
        # No two names may mean the same.
        meanings = {}
        for name in list(wanted):
            prefix, colon, local = name.partition(":")
            if colon and prefix not in ("xmlns", "xml"):
                if (prefixes[prefix], local) in meanings:
                    del wanted[name]
                meanings[(prefixes[prefix], local)] = name
        order = list(wanted.items())
        rng.shuffle(order)
        return "".join(self.attribute(name, value) for name, value in order), prefixes

    def misc(self):
        return self.rng.choice(("",) * 10 + ("\n  ", "<!-- <Path/> & -->", "<?pi some data?>", "\r\n", "<?x?>"))

    def text(self):
        return self.rng.choice(("",) * 12 + ("text", "&lt;Path/&gt;", "<![CDATA[<Path/>&]]>", "&#65;ö", "a]]b"))

    def page(self, prefixes, depth=0):
        """A FixedPage element."""
        rng = self.rng
        given = {"Width": self.number(), "Height": self.number()}
        if rng.random() < 0.6:
            given = {"Width": "%.6g" % rng.uniform(10, 2000), "Height": "%.6g" % rng.uniform(10, 2000)}
            self.width, self.height = map(float, given.values())
        for name in ("Width", "Height"):
            if rng.random() < 0.04:
                del given[name]
        for name in ("BleedBox", "ContentBox"):
            if rng.random() < 0.6:
                given[name] = self.box()
        if depth == 0:
            given["xmlns"] = XPS
        return self.element("FixedPage", prefixes, depth, given)

    def element(self, name, prefixes, depth, given=()):
        rng = self.rng
        attributes, prefixes = self.attributes(prefixes, given)
        if prefixes and rng.random() < 0.2:
            name = rng.choice(list(prefixes)) + ":" + name
        self.elements += 1
        children = ""
        count = rng.choice((0, 1, 2, 5)) if depth else self.budget
        for _ in range(count):
            children += self.misc() + self.text()
            if self.elements > self.budget or depth > 12:
                break
            draw = rng.random()
            if draw < 0.05:
                children += self.page(prefixes, depth + 1)
            else:
                child = "FixedPage.Resources" if draw < 0.15 else rng.choice(NAMES)
                children += self.element(child, prefixes, depth + 1)
        if not children and rng.random() < 0.7:
            return f"<{name}{attributes}{rng.choice(('', ' '))}/>"
        return f"<{name}{attributes}{rng.choice(('', '', ' '))}>{children}{self.misc()}</{name}{rng.choice(('', '', ' '))}>"


def encoded(text, rng):
    """The bytes of a page's markup in one of the forms that XML has for it."""
    form = rng.choice(("utf-8", "utf-8", "utf-8-sig", "utf-16-le", "utf-16-be"))
    named = "utf-16" if form.startswith("utf-16") else rng.choice(("utf-8", "UTF-8"))
    declaration = rng.choice(("", '<?xml version="1.0"?>', f'<?xml version="1.0" encoding="{named}"?>\n',
                              f"<?xml version='1.0' encoding='{named}' standalone='yes'?>"))
    text = declaration + text
    if form.startswith("utf-16"):
        return ("\ufeff" + text).encode(form)
    return text.encode(form)


def page(seed, number):
    """The bytes of one generated page."""
    rng = random.Random(f"{seed}/{number}")
    writer = Writer(rng)
    writer.width, writer.height = 816.0, 1056.0
    text = writer.misc().strip() + writer.page({}) + rng.choice(("", "", "\n", "<!-- end -->"))
    return encoded(text, rng)
