"""Print tickets in the Print Schema's vocabulary."""

PRIVATE_NAMESPACE = "http://schemas.example.com/samples/stamp/v1"

_HEAD = """<?xml version="1.0" encoding="UTF-8"?>
<psf:PrintTicket xmlns:psf="http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework"
 xmlns:psk="http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords"
 xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xmlns:xsd="http://www.w3.org/2001/XMLSchema"
 xmlns:stamp="%s" version="1">
""" % PRIVATE_NAMESPACE


def feature(name, option, content=""):
    """A feature with one option; the content stands inside the option."""
    if not content:
        return ' <psf:Feature name="%s"><psf:Option name="%s"/></psf:Feature>\n' % (name, option)
    return ' <psf:Feature name="%s"><psf:Option name="%s">\n%s </psf:Option></psf:Feature>\n' % (name, option, content)


def scored(name, kind, value):
    return '  <psf:ScoredProperty name="%s"><psf:Value xsi:type="xsd:%s">%s</psf:Value></psf:ScoredProperty>\n' % (
        name, kind, value)


def media(option, width, height):
    """A sheet; the sizes are micrometres."""
    return feature("psk:PageMediaSize", option,
                   scored("psk:MediaSizeWidth", "integer", width) + scored("psk:MediaSizeHeight", "integer", height))


def orientation(option):
    return feature("psk:PageOrientation", "psk:" + option)


def copies(count):
    return (' <psf:ParameterInit name="psk:JobCopiesAllDocuments">'
            '<psf:Value xsi:type="xsd:integer">%d</psf:Value></psf:ParameterInit>\n' % count)


def stamp(level, option):
    """A private feature, of which a printer's validation knows nothing; the level is Job, Document or Page."""
    return feature("stamp:%sStamp" % level, "stamp:" + option)


def ticket(*settings):
    return (_HEAD + "".join(settings) + "</psf:PrintTicket>\n").encode("utf-8")


A4 = media("psk:ISOA4", 210000, 297000)
A4_ROTATED = media("psk:ISOA4Rotated", 297000, 210000)
LETTER = media("psk:NorthAmericaLetter", 215900, 279400)
LETTER_ROTATED = media("psk:NorthAmericaLetterRotated", 279400, 215900)
A3 = media("psk:ISOA3", 297000, 420000)
A6 = media("psk:ISOA6", 105000, 148000)
CARD = media("psk:CustomMediaSize", 70000, 100000)
