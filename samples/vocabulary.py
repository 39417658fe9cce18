"""The names of Microsoft's XPS and of OpenXPS, and the content types that both use."""

from collections import namedtuple

Vocabulary = namedtuple("Vocabulary", "namespace start_part print_ticket required_resource")

MICROSOFT_XPS = Vocabulary(
    "http://schemas.microsoft.com/xps/2005/06",
    "http://schemas.microsoft.com/xps/2005/06/fixedrepresentation",
    "http://schemas.microsoft.com/xps/2005/06/printticket",
    "http://schemas.microsoft.com/xps/2005/06/required-resource")
OPEN_XPS = Vocabulary(
    "http://schemas.openxps.org/oxps/v1.0",
    "http://schemas.openxps.org/oxps/v1.0/fixedrepresentation",
    "http://schemas.openxps.org/oxps/v1.0/printticket",
    "http://schemas.openxps.org/oxps/v1.0/required-resource")

THUMBNAIL = "http://schemas.openxmlformats.org/package/2006/relationships/metadata/thumbnail"
PRINT_TICKET_TYPE = "application/vnd.ms-printing.printticket+xml"
CONTENT_TYPES = {
    "rels": "application/vnd.openxmlformats-package.relationships+xml",
    "fdseq": "application/vnd.ms-package.xps-fixeddocumentsequence+xml",
    "fdoc": "application/vnd.ms-package.xps-fixeddocument+xml",
    "fpage": "application/vnd.ms-package.xps-fixedpage+xml",
    "dict": "application/vnd.ms-package.xps-resourcedictionary+xml",
    "odttf": "application/vnd.ms-package.obfuscated-opentype",
    "png": "image/png",
    "xml": PRINT_TICKET_TYPE,
}
