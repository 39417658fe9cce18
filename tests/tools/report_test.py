#!/usr/bin/env python3
"""The page that shows reports: report_test.py FILTERHOST TESTFILTER SAMPLES"""
import copy
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest
from html.parser import HTMLParser

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
for folder in ("tests/system", "tests/tools", "tools/report", "bench"):
    sys.path.insert(0, os.path.join(ROOT, folder))

import chromium  # noqa: E402
import makejob  # noqa: E402
import runs  # noqa: E402
import tickets  # noqa: E402
from host import Host, windows_path  # noqa: E402
from jobdocument import write_document  # noqa: E402
from makereport import local_path, make_page  # noqa: E402

PARTS = "{C1D7F0A2-35D4-4E0B-9C53-6B1C5A7E9D10}"
# A page is open at once when it shows something before anybody waits.
OPEN_SECONDS = 2
MANY_PAGES = 500


class Text(HTMLParser):
    """The texts of a page, without those of its scripts and styles."""

    def __init__(self, page):
        super().__init__()
        self.texts, self.hidden, self.links = [], 0, []
        self.feed(page)

    def handle_starttag(self, tag, attributes):
        self.hidden += tag in ("script", "style")
        self.links += [value for name, value in attributes if name in ("src", "href") and value]

    def handle_endtag(self, tag):
        self.hidden -= tag in ("script", "style")

    def handle_data(self, data):
        if not self.hidden and data.strip():
            self.texts.append(data.strip())


class ReportPageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix="report-page-")
        cls.good = cls.report_of("good", "", os.path.join(SAMPLES, "sample.xps"), "--device", "longedge")
        cls.bad = cls.report_of("bad", "send-after-close", os.path.join(SAMPLES, "minimal.xps"), *cls.filter_options())
        cls.plain = cls.report_of("plain", "", os.path.join(SAMPLES, "minimal.xps"), *cls.filter_options())
        job = os.path.join(cls.folder, "job.xps")
        write_document(job, [(None, [(makejob.page(number, 10), makejob.ticket("Monochrome" if number % 2 else "Color"))
                                     for number in range(1, MANY_PAGES + 1)])])
        cls.many = cls.report_of("many", "", job, "--device", "longedge")

    @classmethod
    def filter_options(cls):
        return ["--filter", windows_path(TESTFILTER), "--clsid", PARTS]

    @classmethod
    def report_of(cls, name, mode, document, *options):
        report = os.path.join(cls.folder, name + ".json")
        with open(os.path.join(cls.folder, "log.txt"), "wb") as log:
            subprocess.run([*Host(FILTERHOST).command, "run", windows_path(document), "-o",
                            windows_path(os.path.join(cls.folder, name + ".xps")), "--json", windows_path(report), "--quiet",
                            *options], stdout=log, stderr=log, timeout=200, env=dict(os.environ, TESTFILTER_MODE=mode),
                           check=False)
        with open(report, encoding="utf-8") as file:
            return json.load(file)

    def page_of(self, name, *reports, thumbnails=60):
        path = os.path.join(self.folder, name + ".html")
        with open(path, "w", encoding="utf-8") as file:
            file.write(make_page(list(reports), thumbnails))
        return path

    def text_of(self, page):
        with open(page, encoding="utf-8") as file:
            return file.read()

    def needs_chromium(self):
        if chromium.PROGRAM is None:
            self.skipTest("Debian's package chromium is not here")

    def test_it_needs_nothing_but_itself(self):
        links = Text(self.text_of(self.page_of("alone", self.good))).links
        self.assertTrue(links)
        self.assertEqual([], [link for link in links if not link.startswith("#")])

    def test_what_went_wrong_comes_first_with_what_to_do(self):
        texts = Text(self.text_of(self.page_of("first", self.bad))).texts
        first = texts.index("SendFixedPage of FixedPage /p.fpage came after CloseSender")
        self.assertLess(first, texts.index("At a glance"))
        self.assertIn("close last", texts[first:first + 8])
        self.assertIn("after-close", texts)
        self.assertNotIn("To look at first", Text(self.text_of(self.page_of("fine", self.good))).texts)

    def test_each_page_has_its_decision_in_words_with_the_sizes(self):
        run = runs.view_of([self.good], local_path, 60)["runs"][0]
        self.assertEqual(10, len(run.pages))
        for page, part in zip(run.pages, [each for each in self.good["inputs"][0]["parts"] if each["kind"] == "FixedPage"]):
            words = [text for _, text in page["decisions"]]
            self.assertEqual(part["turned"], "turned by a right angle" in words)
            self.assertEqual(part["ticket_replaced"], "new ticket" in words)
            self.assertRegex(page["sizes"], r"^\d+ × \d+ mm( → \d+ × \d+ mm)?$")
            self.assertEqual(part["markup_rewritten"], "→" in page["sizes"])
        self.assertIn("210 × 297 mm → 297 × 210 mm", [page["sizes"] for page in run.pages])
        self.assertTrue(all(page["before"] and page["after"] for page in run.pages))

    def test_of_a_filter_without_tickets_it_says_only_what_is_true_of_any(self):
        view = runs.view_of([self.plain], local_path, 0)
        self.assertEqual([[("", "left as it was")]], [page["decisions"] for page in view["runs"][0].pages])
        texts = Text(self.text_of(self.page_of("any", self.plain))).texts
        self.assertEqual([], [text for text in texts if "turned" in text.lower()])
        self.assertIn("Turned", Text(self.text_of(self.page_of("both", self.good, self.plain))).texts)

    def test_a_page_that_the_filter_made_has_a_size(self):
        made = {"uri": "/new.fpage", "width_in": None, "height_in": None, "width_out": 816, "height_out": 1056,
                "ticket_in": None, "markup_rewritten": False}
        self.assertEqual("216 × 279 mm", runs.page_row(1, made, None, None)["sizes"])

    def test_what_the_filter_put_back_stands_beside_what_the_device_made(self):
        run = runs.view_of([self.good], local_path, 0)["runs"][0]
        for scope in ("Job", "Page"):
            own, _, made, back, _ = next(group["stages"] for group in run.scopes if group["scope"] == scope and None not in
                                         group["stages"])
            own, made, back = (set(run.settings[ticket]) for ticket in (own, made, back))
            self.assertTrue((own - made) & back, f"nothing was put back into the ticket of the {scope}")

    def test_what_was_put_back_into_the_jobs_ticket_holds_until_a_narrower_one_is_made(self):
        run = runs.view_of([self.good], local_path, 0)["runs"][0]
        job = next(group["stages"] for group in run.scopes if group["scope"] == "Job")
        _, _, made, back, in_force = job
        self.assertNotEqual(made, back)
        self.assertEqual(back, in_force)
        of_pages = [group["stages"] for group in run.scopes if group["scope"].startswith("Page")]
        inherited = [stages for stages in of_pages if stages[2] is None]
        self.assertTrue(inherited and len(inherited) < len(of_pages))
        self.assertNotIn(made, [stages[4] for stages in inherited])
        for stages in of_pages:
            if stages[2] is not None:
                self.assertEqual(stages[2], stages[4])

    def test_the_time_is_shared_out_where_it_was_measured(self):
        shares = runs.time_shares({"total": 2.0, "rest": 0.5, "filters": [
            {"name": "1 (a.dll)", "filter": 1.0, "ticket_provider": None, "pipeline": 0.5, "observer": 0.1}]})
        self.assertEqual([("filter", "the filter", 1.0, 0.5), ("pipeline", "pipeline", 0.5, 0.25),
                          ("rest", "reading, looking and writing", 0.5, 0.25)], shares)
        self.assertEqual([], runs.time_shares(None))

    def test_a_failure_that_follows_comes_after_the_breach(self):
        kinds = [problem["kind"] for problem in runs.view_of([self.bad], local_path, 0)["problems"]]
        self.assertEqual(["breach", "breach", "failure"], kinds)

    def test_texts_cannot_become_markup(self):
        report = copy.deepcopy(self.bad)
        evil = "</script><script>document.title='evil'</script><b id=evil>&amp;"
        report["inputs"][0]["breaches"][0]["text"] = evil
        report["inputs"][0]["texts"][0] = evil
        page = self.page_of("evil", report)
        self.assertIn(evil, "".join(Text(self.text_of(page)).texts))
        self.assertNotIn("<b id=evil>", self.text_of(page))
        if chromium.PROGRAM:
            self.assertNotIn('id="evil"', chromium.document(page))

    def test_many_pages_are_few_groups_of_tickets(self):
        run = runs.view_of([self.many], local_path, 0)["runs"][0]
        self.assertEqual(MANY_PAGES, len(run.pages))
        self.assertLess(len(run.scopes), 12)
        self.assertLess(len(json.dumps(self.many)), 3_000_000)

    def test_in_a_browser_the_tickets_stand_side_by_side(self):
        self.needs_chromium()
        found = chromium.document(self.page_of("good", self.good), "--window-size=1280,3000")
        titles = re.findall(r"<th>(Feature|Own|Asked|Validated|Put back|In force)</th>", found)
        self.assertEqual(["Feature", "Own", "Asked", "Validated", "Put back", "In force"], titles[:6])
        self.assertIn('<td class="feature">Page<wbr>Media<wbr>Size</td>', found)

    def test_in_a_browser_500_pages_open_at_once(self):
        self.needs_chromium()
        page = self.page_of("many", self.many)
        took = chromium.milliseconds_to_load(page)
        print(f"{MANY_PAGES} pages, {os.path.getsize(page):,} bytes: loaded after {took:.0f} ms")
        self.assertLess(took, OPEN_SECONDS * 1000)
        # What nobody sees yet is not drawn.
        found = chromium.document(page, "--window-size=1280,800")
        self.assertIn('class="before drawn"', found)
        self.assertLess(found.count('class="before drawn"'), 40)
        self.assertEqual(1, found.count('class="features"'))

    def test_in_a_browser_a_phone_scrolls_down_only(self):
        self.needs_chromium()
        for report in (self.good, self.bad, self.many):
            page = self.page_of("tall", report)
            frame = self.text_of(chromium.on_a_phone(page, self.folder))
            # The frame's page says how wide it became.
            with open(page, "a", encoding="utf-8") as file:
                file.write("<script>addEventListener('load', () => parent.postMessage("
                           "document.documentElement.scrollWidth, '*'));</script>")
            outer = os.path.join(self.folder, "outer.html")
            with open(outer, "w", encoding="utf-8") as file:
                file.write("<script>addEventListener('message', event => document.title = event.data);</script>" + frame)
            width = re.search(r"<title>(\d+)</title>", chromium.document(outer))
            self.assertEqual(str(chromium.PHONE_WIDTH), width and width[1])

    def test_pictures(self):
        """REPORT_PICTURES names a folder for them: wide, narrow, dark, on paper, with breaches, of many pages."""
        self.needs_chromium()
        folder = os.environ.get("REPORT_PICTURES") or self.folder
        good, bad, many = (self.page_of("p" + name, *reports) for name, reports in
                           (("good", [self.good]), ("bad", [self.bad]), ("many", [self.many])))
        wide, phone = (1280, 2600), (chromium.PHONE_WIDTH, 3000)
        dark = "--blink-settings=preferredColorScheme=0"
        pictures = {"wide": (good, *wide), "dark": (good, *wide, dark), "breaches": (bad, 1280, 1400),
                    "breaches-dark": (bad, 1280, 1400, dark), "500-pages": (many, *wide),
                    "narrow": (chromium.on_a_phone(good, self.folder), *phone)}
        from PIL import Image
        for name, arguments in pictures.items():
            path = os.path.join(folder, name + ".png")
            chromium.screenshot(arguments[0], path, *arguments[1:])
            with Image.open(path) as image:
                self.assertEqual(tuple(arguments[1:3]), image.size)
                self.assertGreater(len(image.convert("RGB").resize((200, 300)).getcolors(60000)), 20, name)
        lights = [self.lightness(os.path.join(folder, name + ".png")) for name in ("wide", "dark")]
        self.assertGreater(lights[0], 200)
        self.assertLess(lights[1], 80)
        paper = os.path.join(self.folder, "paper.pdf")
        chromium.print_to(good, paper)
        subprocess.run(["mutool", "draw", "-q", "-r", "60", "-o", os.path.join(folder, "paper-%d.png"), paper], check=True,
                       timeout=60)
        self.assertGreater(self.lightness(os.path.join(folder, "paper-1.png")), 200)

    @staticmethod
    def lightness(picture):
        from PIL import Image, ImageStat
        with Image.open(picture) as image:
            return ImageStat.Stat(image.convert("L")).median[0]


class TicketsTest(unittest.TestCase):
    FRAME = ('<psf:PrintTicket xmlns:psf="http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework" '
             'xmlns:k="http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords" '
             'xmlns:own="urn:own" version="1">{}</psf:PrintTicket>')

    def settings(self, content):
        return tickets.settings_of(self.FRAME.format(content))

    def test_settings_have_names_without_the_prefix_of_the_keywords(self):
        self.assertEqual({"PageOrientation": "Portrait", "own:Mood": "own:Good"}, self.settings(
            '<psf:Feature name="k:PageOrientation"><psf:Option name="k:Portrait"/></psf:Feature>'
            '<psf:Feature name="own:Mood"><psf:Option name="own:Good"/></psf:Feature>'))

    def test_of_an_option_its_properties_and_of_a_feature_those_in_it_are_told(self):
        self.assertEqual({"PageMediaSize": "ISOA4 (MediaSizeWidth 210000)", "A": "(unnamed)", "A / B": "C", "Copies": "3"},
                         self.settings(
            '<psf:Feature name="k:PageMediaSize"><psf:Option name="k:ISOA4"><psf:ScoredProperty name="k:MediaSizeWidth">'
            '<psf:Value>210000</psf:Value></psf:ScoredProperty></psf:Option></psf:Feature>'
            '<psf:Feature name="k:A"><psf:Option/><psf:Feature name="k:B"><psf:Option name="k:C"/></psf:Feature></psf:Feature>'
            '<psf:ParameterInit name="k:Copies"><psf:Value>3</psf:Value></psf:ParameterInit>'))

    def test_what_is_no_ticket_has_none(self):
        self.assertIsNone(tickets.settings_of("<a"))
        self.assertIsNone(tickets.settings_of(""))


def main(filterhost, testfilter, samples, *options):
    global FILTERHOST, TESTFILTER, SAMPLES
    FILTERHOST, TESTFILTER, SAMPLES = filterhost, testfilter, samples
    if chromium.PROGRAM is None:
        print("what needs a browser is skipped: Debian's package chromium is not here")
    return 0 if unittest.main(argv=[__file__, *options], exit=False).result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
