#!/usr/bin/env python3
"""The reports of filterhost keep what they promise: report_test.py FILTERHOST TESTFILTER SAMPLES"""
import json
import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest
import xml.etree.ElementTree as ElementTree

from jsonschema import Draft202012Validator

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))))
sys.path.insert(0, os.path.join(ROOT, "tests", "system"))

from host import Host, windows_path  # noqa: E402
from jobdocument import write_document  # noqa: E402

PARTS = "{C1D7F0A2-35D4-4E0B-9C53-6B1C5A7E9D10}"
STREAMS = "{C1D7F0A2-35D4-4E0B-9C53-6B1C5A7E9D12}"
FRAMEWORK = "http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework"
KEYWORDS = "http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords"
DEVICE = "http://schemas.example.com/printing/simdevice/v1"
PAGE = '<FixedPage xmlns="http://schemas.microsoft.com/xps/2005/06" Width="816" Height="1056" xml:lang="en"/>'
with open(os.path.join(ROOT, "docs", "report.schema.json"), encoding="utf-8") as file:
    SCHEMA = json.load(file)


def ticket(prefix, uri, feature, option):
    """A ticket with one feature, whose namespace has the prefix."""
    return (f'<psf:PrintTicket xmlns:psf="{FRAMEWORK}" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" '
            f'xmlns:xsd="http://www.w3.org/2001/XMLSchema" xmlns:{prefix}="{uri}" version="1"><psf:Feature '
            f'name="{prefix}:{feature}"><psf:Option name="{prefix}:{option}"/></psf:Feature></psf:PrintTicket>')


class ReportTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def path(self, name):
        return os.path.join(self.folder, name)

    def command(self, inputs, options):
        return [*Host(FILTERHOST).command, "run", *map(windows_path, inputs), "--json", windows_path(self.path("r.json")),
                "--junit", windows_path(self.path("r.xml")), "--quiet", *options]

    def run_host(self, mode, inputs, *options):
        """The status, the report and the test suite."""
        documents = [os.path.join(SAMPLES, name) for name in inputs]
        with open(self.path("log.txt"), "wb") as log:
            done = subprocess.run(self.command(documents, options), stdout=log, stderr=log, timeout=200,
                                  env=dict(os.environ, TESTFILTER_MODE=mode))
        return done.returncode, self.report(), self.suite()

    def run_test_filter(self, mode, inputs, *options):
        return self.run_host(mode, inputs, "--filter", windows_path(TESTFILTER), "--clsid", PARTS, *options)

    def report(self):
        with open(self.path("r.json"), encoding="utf-8") as file:
            report = json.load(file)
        errors = [f"{'/'.join(map(str, error.absolute_path))}: {error.message[:300]}"
                  for error in Draft202012Validator(SCHEMA).iter_errors(report)]
        self.assertEqual([], errors)
        for each in report["inputs"]:
            self.check_references(each)
        return report

    def check_references(self, each):
        """Every reference to a text is one, every text is referred to and there once."""
        used = {each["user_ticket"]}
        for part in each["parts"]:
            used |= set(part["tickets"].values())
        for call in each["provider_calls"]:
            used |= {call["base"], call["delta"], call["output"]}
        self.assertEqual(set(range(len(each["texts"]))), used - {None})
        self.assertEqual(len(each["texts"]), len(set(each["texts"])))

    def suite(self):
        suite = ElementTree.parse(self.path("r.xml")).getroot()
        self.assertEqual("testsuite", suite.tag)
        self.assertEqual(int(suite.get("tests")), len(suite.findall("testcase")))
        self.assertEqual(int(suite.get("failures")), len(suite.findall("testcase/failure")))
        self.assertEqual(int(suite.get("errors")), len(suite.findall("testcase/error")))
        seconds = [float(case.get("time", "0")) for case in suite]
        self.assertAlmostEqual(sum(seconds), float(suite.get("time")), delta=0.001 * (len(seconds) + 1))
        for case in suite:
            self.assertTrue(case.get("name") and case.get("classname"))
            self.assertLessEqual({child.tag for child in case}, {"failure", "error", "system-out"})
            for problem in (*case.findall("failure"), *case.findall("error")):
                self.assertTrue(problem.get("message") and problem.get("type"))
        return suite

    def test_of_the_filter_of_the_product_it_has_every_stage_of_the_tickets(self):
        status, report, suite = self.run_host("", ["sample.xps"], "-o", windows_path(self.path("o.xps")), "--device",
                                              "longedge")
        self.assertEqual(0, status)
        self.assertAlmostEqual(report["inputs"][0]["seconds"]["total"], float(suite[0].get("time")), delta=0.001)
        self.assertEqual("0", suite.get("failures"))
        self.assertRegex(report["filters"][0]["file_version"], r"^\d+(\.\d+){3}$")
        run, = report["inputs"]
        self.assertEqual((10, 10, 0), (run["pages_in"], run["pages_out"], run["status"]))
        texts = run["texts"]
        self.assertIn("PrintTicket", texts[run["user_ticket"]])
        pages = [part for part in run["parts"] if part["kind"] == "FixedPage"]
        ticketed = [part for part in pages if part["ticket_in"]]
        self.assertTrue(ticketed)
        for part in ticketed:
            for stage in ("own", "asked", "made", "in_force"):
                self.assertIsNotNone(part["tickets"][stage], (part["uri"], stage))
            self.assertEqual(part["tickets"]["made"], part["tickets"]["in_force"])
        replaced = [part for part in pages if part["ticket_replaced"]]
        self.assertTrue(replaced)
        for part in replaced:
            self.assertIn("PageMediaSize", texts[part["tickets"]["new"]])
        for part in pages:
            self.assertRegex(part["decision"], "^[0-9.]+ x [0-9.]+.*feed LongEdgeFirst.*ticket")
            self.assertEqual("LongEdgeFirst", part["feed"])
        self.assertTrue(all(call["as_user"] for call in run["provider_calls"] if call["function"].startswith("PTMerge")))
        self.assertEqual({1}, {call["thread"] for call in run["provider_calls"]})
        calls, = run["filter_calls"]
        self.assertEqual(("0x00000000 S_OK", "0x00000000 S_OK", None),
                         (calls["InitializeFilter"], calls["StartOperation"], calls["ShutdownOperation"]))
        self.assertEqual(16, calls["pipeline_calls"]["IXpsDocumentProvider::GetXpsPart"])

    def test_of_what_the_filter_puts_back_beside_other_prefixes_of_the_provider(self):
        page = ticket("psk", KEYWORDS, "PageOrientation", "Landscape")
        for prefix, uri, feature, option in (("own", DEVICE, "JobTonerSave", "On"), ("k", KEYWORDS, "PageOrientation", "Portrait")):
            with self.subTest(feature):
                job = self.path("job.xps")
                write_document(job, [(None, [(PAGE, page), (PAGE, page)])], ticket(prefix, uri, feature, option))
                of_device = ("ns0000:" if uri == DEVICE else "psk:") + feature
                expected = (f"the print ticket that PTMergeAndValidatePrintTicket (page) was given to start from has "
                            f"{feature} twice, as {of_device} and {prefix}:{feature}: two prefixes of one namespace")
                for answer, status in (("first", 0), ("refuse", 1)):
                    ended, report, _ = self.run_host("", [job], "--no-output", "--provider", "duplicates=" + answer)
                    self.assertEqual(status, ended)
                    findings = report["inputs"][0]["findings"]
                    self.assertEqual([("ticket-two-prefixes", expected)],
                                     [(each["id"], each["text"]) for each in findings if each["id"] != "provider-failure"])
                    self.assertEqual(status, len(findings) - 1)

    def test_of_the_filter_under_other_prefixes_of_the_framework(self):
        """The filter's own default tickets say psf, so no ticket under another prefix can take them in."""
        status, report, _ = self.run_host("", ["sample.xps"], "--no-output", "--provider", "prefixes=mangled")
        run, = report["inputs"]
        self.assertEqual((1, "0x80004005 E_FAIL"), (status, run["end"]["result"]))
        self.assertEqual(["XpsDocument"], [part["kind"] for part in run["parts"]])

    def test_of_a_breach_it_says_what_where_and_what_to_do(self):
        status, report, suite = self.run_test_filter("send-after-close", ["minimal.xps"], "--no-output")
        self.assertEqual(4, status)
        run, = report["inputs"]
        self.assertEqual(4, run["status"])
        self.assertEqual(["after-close", "sender-once"], [breach["id"] for breach in run["breaches"]])
        first = run["breaches"][0]
        self.assertEqual({"id": "after-close", "severity": "breach", "part": "FixedPage /p.fpage", "call": "StartOperation",
                          "text": "SendFixedPage of FixedPage /p.fpage came after CloseSender", "advice": "close last"},
                         first)
        failure = suite.find("testcase/failure")
        self.assertEqual("rule broken", failure.get("type"))
        self.assertIn("breach: " + first["text"], failure.text)

    def test_of_a_finding_and_strict(self):
        status, report, suite = self.run_test_filter("break-markup", ["minimal.xps"], "--no-output")
        self.assertEqual((0, "0"), (status, suite.get("failures")))
        finding, = report["inputs"][0]["findings"]
        self.assertEqual(("malformed-markup", "FixedPage /p.fpage"), (finding["id"], finding["part"]))
        status, report, suite = self.run_test_filter("break-markup", ["minimal.xps"], "--no-output", "--strict")
        self.assertEqual((4, "1"), (status, suite.get("failures")))
        self.assertEqual(4, report["inputs"][0]["status"])
        self.assertTrue(report["switches"]["strict"])
        self.assertIn("finding: page markup", suite.find("testcase/failure").text)

    def test_of_a_crash(self):
        status, report, suite = self.run_test_filter("crash", ["minimal.xps"], "--no-output")
        self.assertEqual((1, "1"), (status, suite.get("failures")))
        crash = report["inputs"][0]["crash"]
        self.assertEqual(("0xC0000005", ["StartOperation"], "FixedPage /p.fpage"),
                         (crash["code"].split()[0], crash["calls"], crash["part"]))
        self.assertEqual(3, len(report["inputs"][0]["parts"]))

    def test_of_a_hang(self):
        status, report, _ = self.run_test_filter("hang", ["minimal.xps"], "--no-output", "--timeout", "4")
        self.assertEqual(1, status)
        self.assertIn("no progress for 4 s", report["inputs"][0]["crash"]["text"])

    def test_of_what_cannot_be_run(self):
        status, report, suite = self.run_test_filter("", ["minimal.xps", "nowhere.xps", "names.xps"], "--out-dir",
                                                     windows_path(self.path("out")))
        self.assertEqual((3, "1"), (status, suite.get("errors")))
        self.assertEqual([0, 3, 0], [run["status"] for run in report["inputs"]])
        self.assertEqual("unreadable input", suite.find("testcase/error").get("type"))

    def test_of_a_cancellation_and_a_failing_provider(self):
        status, report, _ = self.run_host("", ["sample.xps"], "--no-output", "--cancel-at", "5")
        self.assertEqual(1, status)
        self.assertTrue(report["inputs"][0]["end"]["cancelled"])
        self.assertEqual("0x00000000 S_OK", report["inputs"][0]["filter_calls"][0]["ShutdownOperation"])
        status, report, _ = self.run_host("", ["sample.xps"], "--no-output", "--provider", "fault=merge-fail@2")
        self.assertEqual(1, status)
        self.assertIn("provider-failure", [finding["id"] for finding in report["inputs"][0]["findings"]])

    def test_of_a_chain_and_of_a_stream_filter(self):
        filters = ["--filter", windows_path(TESTFILTER)]
        status, report, suite = self.run_host("", ["minimal.xps"], "--no-output", *filters, *filters, "--clsid", PARTS,
                                              "--clsid", PARTS)
        self.assertEqual(0, status)
        self.assertEqual(["1 (testfilter.dll)", "2 (testfilter.dll)"],
                         [each["filter"] for each in report["inputs"][0]["filter_calls"]])
        self.assertEqual("testfilter+testfilter", suite.find("testcase").get("classname"))
        status, report, _ = self.run_host("", ["minimal.xps"], "--no-output", *filters, "--clsid", STREAMS, "--input",
                                          "stream", "--output", "stream")
        self.assertEqual(0, status)
        self.assertGreater(report["inputs"][0]["bytes_out"], 1000)

    def test_of_an_end_by_force_they_are_whole(self):
        command = self.command([os.path.join(SAMPLES, name) for name in ("minimal.xps", "names.xps")],
                               ["--filter", windows_path(TESTFILTER), "--clsid", PARTS, "--no-output", "-j", "1",
                                "--timeout", "4"])
        with open(self.path("log.txt"), "wb") as log:
            process = subprocess.Popen(command, stdout=log, stderr=log,
                                       env=dict(os.environ, TESTFILTER_MODE="hang"))
        try:
            for _ in range(300):
                if os.path.exists(self.path("r.xml")) and self.suite().get("tests") == "1":
                    break
                time.sleep(0.1)
        finally:
            process.send_signal(signal.SIGKILL)
            process.wait()
        self.assertEqual(1, len(self.report()["inputs"]))
        self.assertEqual("1", self.suite().get("tests"))


def main(filterhost, testfilter, samples, *options):
    global FILTERHOST, TESTFILTER, SAMPLES
    FILTERHOST, TESTFILTER, SAMPLES = filterhost, testfilter, samples
    return 0 if unittest.main(argv=[__file__, *options], exit=False).result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
