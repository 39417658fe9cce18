"""The pages of the sample: each says what it is, and an F and an arrow show which way up it is."""

import tickets
from document import Document, Page

FONT = "Resources/Fonts/3F2504E0-4F89-41D3-9A0C-0305E82C3301.odttf"
IMAGE = "Resources/Images/corners.png"
DICTIONARY = "Resources/colours.dict"

A4 = (793.76, 1122.56)
LETTER = (816, 1056)
A3 = (1122.56, 1587.52)
CARD = (264.56, 377.92)

# An attribute value that starts with a brace is escaped with {} (XPS, 5.1.1).
ESCAPED_TEXT = "{}{A} &lt;B&gt; &amp; &quot;C&quot; &#39;D&#39; &#x1F600; caf&#xE9;"


def text(x, y, size, content, fill="#FF202020"):
    return ' <Glyphs FontUri="/%s" FontRenderingEmSize="%s" OriginX="%s" OriginY="%s" Fill="%s" UnicodeString="%s"/>\n' % (
        FONT, size, x, y, fill, content)


def rectangle(x, y, width, height, fill):
    return ' <Path Fill="%s" Data="M %s,%s h %s v %s h -%s z"/>\n' % (fill, x, y, width, height, width)


def letter_f(x, y, size, fill):
    """An F of five by seven units: it looks different in each orientation and mirrored."""
    unit = size / 7
    return ' <Path Fill="%s" Data="M %g,%g h %g v %g h -%g v %g h %g v %g h -%g v %g h -%g z"/>\n' % (
        fill, x, y, 5 * unit, unit, 4 * unit, 2 * unit, 3 * unit, unit, 3 * unit, 3 * unit, unit)


def up_arrow(x, y, size, fill):
    return ' <Path Fill="%s" Data="M %g,%g l %g,%g h -%g v %g h -%g v -%g h -%g z"/>\n' % (
        fill, x, y, size / 2, size / 2, size / 4, size / 2, size / 2, size / 2, size / 4)


def frame(width, height, title, colour):
    """What every page has: a border, its title, the F in the top left corner and an arrow that points up."""
    inset = min(width, height) * 0.06
    size = min(width, height) * 0.22
    lines = title.split("|")
    content = ' <Path Stroke="%s" StrokeThickness="4" Data="M %g,%g h %g v %g h -%g z"/>\n' % (
        colour, inset, inset, width - 2 * inset, height - 2 * inset, width - 2 * inset)
    content += letter_f(inset * 2, inset * 2, size, colour)
    content += up_arrow(width - inset * 2 - size / 2, inset * 2, size, colour)
    for number, line in enumerate(lines):
        em = size * 0.22
        content += text("%g" % (inset * 2), "%g" % (inset * 2 + size * 1.5 + number * em * 1.4), "%g" % em, line)
    return content


# A brush that paths can take from the page's own resources, or hold themselves.
SKY = """<LinearGradientBrush %sMappingMode="Absolute" StartPoint="0,600" EndPoint="0,900">
   <LinearGradientBrush.GradientStops>
    <GradientStop Color="#FF2060C0" Offset="0"/><GradientStop Color="#FFFFE0A0" Offset="1"/>
   </LinearGradientBrush.GradientStops>
  </LinearGradientBrush>"""


def page_resources(vocabulary):
    """Resources of a page with the brush "Sky"."""
    key = 'x:Key="Sky" xmlns:x="%s/resourcedictionary-key" ' % vocabulary.namespace
    return ' <FixedPage.Resources><ResourceDictionary>\n  %s\n </ResourceDictionary></FixedPage.Resources>\n' % (
        SKY % key)


REMOTE_DICTIONARY = ' <FixedPage.Resources><ResourceDictionary Source="/%s"/></FixedPage.Resources>\n' % DICTIONARY


def dictionary(vocabulary):
    """A resource dictionary part."""
    return ('<?xml version="1.0" encoding="utf-8"?>\n<ResourceDictionary xmlns="%s" xmlns:x="%s/resourcedictionary-key">'
            '<SolidColorBrush x:Key="Leaf" Color="#FF30A050"/></ResourceDictionary>\n' % (
                vocabulary.namespace, vocabulary.namespace)).encode("utf-8")


def picture(x, y, width, height):
    return (' <Path Data="M %g,%g h %g v %g h -%g z"><Path.Fill><ImageBrush ImageSource="/%s" ViewboxUnits="Absolute"'
            ' Viewbox="0,0,64,48" ViewportUnits="Absolute" Viewport="%g,%g,%g,%g"/></Path.Fill></Path>\n' % (
                x, y, width, height, width, IMAGE, x, y, width, height))


def landscape(size):
    return size[1], size[0]


def sample_documents(vocabulary):
    """Three documents with ten pages."""
    shared = ("Portrait_PT.xml", tickets.ticket(tickets.A4, tickets.orientation("Portrait")))
    report = Document(ticket=tickets.ticket(tickets.A4, tickets.feature("psk:DocumentCollate", "psk:Collated")), pages=[
        Page(*A4, frame(*A4, "Document 1 page 1|A4 portrait|with a page ticket", "#FF203080"), shared, [FONT]),
        Page(*A4, page_resources(vocabulary) +
             frame(*A4, "Document 1 page 2|no page ticket|page resources", "#FF802020") +
             ' <Path Data="M 100,600 h 590 v 300 h -590 z"><Path.Fill>%s</Path.Fill></Path>\n' % (SKY % ""), None, [FONT]),
        Page(*landscape(A4), frame(*landscape(A4), "Document 1 page 3|A4 rotated|media size 297 x 210 mm", "#FF206030"),
             ("Page3_PT.xml", tickets.ticket(tickets.A4_ROTATED, tickets.orientation("Landscape"),
                                             tickets.stamp("Page", "Draft"))), [FONT]),
        Page(*A4, frame(*A4, "Document 1 page 4|picture|shares the ticket of page 1", "#FF604080") +
             picture(200, 600, 400, 300), shared, [FONT, IMAGE]),
    ])
    letter = Document(pages=[
        Page(*LETTER, frame(*LETTER, "Document 2 page 1|Letter|BleedBox and ContentBox", "#FF205060"),
             ("Page1_PT.xml", tickets.ticket(tickets.LETTER)), [FONT],
             'BleedBox="-12,-12,840,1080" ContentBox="48,48,720,960"'),
        Page(*landscape(LETTER), frame(*landscape(LETTER), "Document 2 page 2|Letter landscape|no page ticket",
                                       "#FF806020"), None, [FONT]),
        Page(*LETTER, frame(*LETTER, "Document 2 page 3|UTF-16|escaped characters:", "#FF702060") +
             text(98, 640, 28, ESCAPED_TEXT), ("Page3_PT.xml", tickets.ticket(tickets.LETTER)), [FONT],
             encoding="utf-16"),
    ])
    sizes = Document(ticket=tickets.ticket(tickets.stamp("Document", "Internal")), pages=[
        Page(*CARD, frame(*CARD, "Document 3 page 1|card 70 x 100 mm|smaller than the device", "#FF803020"),
             ("Page1_PT.xml", tickets.ticket(tickets.CARD)), [FONT]),
        Page(*A3, frame(*A3, "Document 3 page 2|A3|larger than the device", "#FF203080"),
             ("Page2_PT.xml", tickets.ticket(tickets.A3)), [FONT]),
        Page(*A4, frame(*A4, "Document 3 page 3|transparency|no page ticket", "#FF206030") +
             ' <Canvas Opacity="0.5" RenderTransform="1,0,0,1,60,40">\n %s %s </Canvas>\n' % (
                 rectangle(120, 600, 280, 280, "#FFC03030"), rectangle(260, 700, 280, 280, "#FF3030C0")), None, [FONT]),
    ])
    return [report, letter, sizes]


def resource_documents(vocabulary):
    """Pages whose paths take their brushes from resources: their own, and those of a dictionary part."""
    triangle = ' <Path Fill="{StaticResource %s}" Data="M 397,600 L 560,900 L 234,900 z"/>\n'
    return [Document([
        Page(*A4, page_resources(vocabulary) + letter_f(100, 100, 400, "#FF203080") + triangle % "Sky"),
        Page(*A4, REMOTE_DICTIONARY + letter_f(100, 100, 400, "#FF802020") + triangle % "Leaf", None, [DICTIONARY]),
    ])]
