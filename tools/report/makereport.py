#!/usr/bin/env python3
"""Makes one page of HTML from reports of filterhost (--json): makereport.py REPORT.json... -o PAGE.html

The page holds all that it needs. Thumbnails are drawn by mutool where the documents are still in their places.
"""
import argparse
import json
import os
import re
import sys

import jinja2

import runs

FOLDER = os.path.dirname(os.path.abspath(__file__))
VERSION = 2


def local_path(path):
    """The place of a document here: under Wine, Z: is the root folder."""
    if path and os.name != "nt" and re.match(r"[Zz]:[\\/]", path):
        return path[2:].replace("\\", "/")
    return path


def read_report(path):
    with open(path, encoding="utf-8") as file:
        report = json.load(file)
    if not isinstance(report, dict) or report.get("version") != VERSION:
        sys.exit(f"makereport.py: {path} is no report of version {VERSION}")
    return report


def as_script(value):
    """JSON that may stand in a script element, whatever texts it carries."""
    text = json.dumps(value, ensure_ascii=False, separators=(",", ":"))
    return text.replace("<", "\\u003c").replace("\u2028", "\\u2028").replace("\u2029", "\\u2029")


def make_page(reports, most_thumbnails):
    environment = jinja2.Environment(loader=jinja2.FileSystemLoader(FOLDER), autoescape=True, trim_blocks=True,
                                     lstrip_blocks=True, undefined=jinja2.StrictUndefined)
    view = runs.view_of(reports, local_path, most_thumbnails)
    return environment.get_template("page.html").render(**view, as_script=as_script, stages=runs.STAGES)


def main():
    parser = argparse.ArgumentParser(description="Makes one page of HTML from reports of filterhost.")
    parser.add_argument("reports", nargs="+", metavar="REPORT.json")
    parser.add_argument("-o", dest="page", required=True, metavar="PAGE.html")
    parser.add_argument("--thumbnails", type=int, default=60, metavar="N",
                        help="of each input at most N pages are drawn, those that changed first (default: 60)")
    arguments = parser.parse_args()
    page = make_page([read_report(path) for path in arguments.reports], arguments.thumbnails)
    with open(arguments.page, "w", encoding="utf-8") as file:
        file.write(page)


if __name__ == "__main__":
    main()
