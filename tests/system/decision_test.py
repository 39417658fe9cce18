#!/usr/bin/env python3
"""Every combination of feed direction, orientation, media size and scaling through the built DLL:
decision_test.py FILTERHOST DEVICE-FOLDER

One document holds a page for each combination, each with a ticket of its own. The device reports none of the features
in question, so each page's settings are what its ticket says and the filter's own ticket handling restored.
"""
import os
import sys
import tempfile
import xml.etree.ElementTree as ElementTree

import decisiontable
from host import Host
from jobdocument import XPS, page_name, ticket_name, write_document
from pages import Package, page_size

PSF = "http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework"
PSK = "http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords"
KRK = "http://schemas.pagevalidate.example/printing/ptpc/2008/11"
TICKET_HEAD = (f'<psf:PrintTicket xmlns:psf="{PSF}" xmlns:psk="{PSK}" xmlns:krk="{KRK}" version="1"'
               ' xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xmlns:xsd="http://www.w3.org/2001/XMLSchema">')
# The page's own size differs from every sheet, so that a mix-up of the two would show.
PAGE = (480, 672)
MARKUP = (f'<FixedPage xmlns="{XPS}" xml:lang="und" Width="{PAGE[0]}" Height="{PAGE[1]}">'
          '<Path Data="M 1,1 L 9,1 9,9 Z" Fill="#FF000000"/></FixedPage>')
FALLBACK = decisiontable.MEDIA["portrait"]


def feature(name, option, content=""):
    return f'<psf:Feature name="psk:{name}"><psf:Option name="{option}">{content}</psf:Option></psf:Feature>'


def scored(name, value, kind="integer"):
    return (f'<psf:ScoredProperty name="psk:{name}"><psf:Value xsi:type="xsd:{kind}">{value}</psf:Value>'
            '</psf:ScoredProperty>')


def media(size):
    option = "psk:" + decisiontable.keyword(size)
    return feature("PageMediaSize", option, scored("MediaSizeWidth", size[0]) + scored("MediaSizeHeight", size[1]))


def scaling(name):
    prefix = "krk" if name == decisiontable.PRIVATE_SCALING else "psk"
    names = {"Custom": ("OffsetWidth", "OffsetHeight", "ScaleWidth", "ScaleHeight"),
             "CustomSquare": ("OffsetWidth", "OffsetHeight", "Scale")}.get(name, ())
    values = {"Custom": decisiontable.CUSTOM_VALUES, "CustomSquare": decisiontable.SQUARE_VALUES}.get(name, ())
    return feature("PageScaling", f"{prefix}:{name}", "".join(map(scored, names, values)))


def page_ticket(combination):
    feed, orientation, media_name, scaling_name = combination
    text = TICKET_HEAD + media(decisiontable.MEDIA[media_name]) + scaling(scaling_name)
    if feed:
        text += feature("PageInputBin", "psk:Cassette", scored("FeedDirection", "psk:" + feed, "QName"))
    if orientation:
        text += feature("PageOrientation", "psk:" + orientation)
    return text + feature("PageMediaColor", "psk:White") + "</psf:PrintTicket>"


def settings_of(ticket):
    """Features by name: (option, {property: value}); a feature that occurs twice is an error."""
    root = ElementTree.fromstring(ticket)
    parameters = {item.get("name"): item.findtext(f"{{{PSF}}}Value")
                  for item in root.findall(f"{{{PSF}}}ParameterInit")}
    found = {}
    for item in root.findall(f"{{{PSF}}}Feature"):
        assert item.get("name") not in found, f"{item.get('name')} twice"
        option = item.find(f"{{{PSF}}}Option")
        values = {}
        for prop in option.findall(f"{{{PSF}}}ScoredProperty"):
            reference = prop.find(f"{{{PSF}}}ParameterRef")
            text = parameters[reference.get("name")] if reference is not None else prop.findtext(f"{{{PSF}}}Value")
            values[prop.get("name").split(":")[1]] = text
        found[item.get("name")] = (option.get("name"), values)
    return found


def judge(combination, decision, page, after, number):
    """What is wrong with a page that came out, as a list of texts."""
    name = page_name(1, page)
    old_ticket = ticket_name(name)
    wrong = []
    size = page_size(after.read(name))
    if size != (PAGE[::-1] if decision.turn else PAGE):
        wrong.append(f"the page is {size}")
    expected_name = decisiontable.ticket_name(old_ticket, number) if decision.new_ticket else old_ticket
    ticket = after.ticket(name)
    if ticket != expected_name.replace("\\", "/"):
        wrong.append(f"the ticket is {ticket}, not {expected_name}")
        return wrong
    if not decision.new_ticket:
        if after.read(ticket).decode() != page_ticket(combination):
            wrong.append("the ticket changed")
        return wrong
    settings = settings_of(after.read(ticket))
    expected = {
        "psk:PageMediaSize": ("psk:" + decision.option, {"MediaSizeHeight": str(decision.media[1]),
                                                         "MediaSizeWidth": str(decision.media[0])}),
        "psk:PageOrientation": ("psk:" + decision.orientation, {}),
        "psk:PageScaling": ("psk:" + decision.scaling, expected_values(decision)),
        "psk:PageMediaColor": ("psk:White", {}),
    }
    for feature_name, value in expected.items():
        if settings.get(feature_name) != value:
            wrong.append(f"{feature_name} is {settings.get(feature_name)}, not {value}")
    return wrong


def expected_values(decision):
    if decision.scaling == "Custom":
        names = ("OffsetWidth", "OffsetHeight", "ScaleWidth", "ScaleHeight")
    elif decision.scaling == "CustomSquare":
        names = ("OffsetWidth", "OffsetHeight", "Scale")
    else:
        return {}
    return dict(zip(names, map(str, decision.values)))


def main(program, device):
    combinations = decisiontable.combinations()
    with tempfile.TemporaryDirectory() as folder:
        document, output = os.path.join(folder, "in.xps"), os.path.join(folder, "out.xps")
        write_document(document, [(None, [(MARKUP, page_ticket(combination)) for combination in combinations])],
                       TICKET_HEAD + media(FALLBACK) + "</psf:PrintTicket>")
        status, report, errors = Host(program).run(document, output, "--device", device, timeout=280)
        if status != 0:
            sys.exit(f"filterhost ended with {status}: {errors}")
        after = Package(output)
    sent = [part for part in report["parts"] if part["kind"] == "FixedPage"]
    job, number, failed = decisiontable.Job(FALLBACK), 0, 0
    for page, combination in enumerate(combinations, 1):
        decision = job.decide(combination)
        number += decision.new_ticket
        wrong = judge(combination, decision, page, after, number)
        if sent[page - 1]["markup_rewritten"] != decision.turn:
            wrong.append(f"the report says markup_rewritten is {sent[page - 1]['markup_rewritten']}")
        if sent[page - 1]["ticket_replaced"] != decision.new_ticket:
            wrong.append(f"the report says ticket_replaced is {sent[page - 1]['ticket_replaced']}")
        for text in wrong:
            print(f"page {page} {combination}: {text}")
        failed += bool(wrong)
    failed += abs(len(sent) - len(combinations))
    print(f"{len(combinations)} combinations, {number} with a new ticket")
    print(f"{len(combinations) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2]))
