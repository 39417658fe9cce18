#!/usr/bin/env python3
"""What packaging/ tells a driver is what the filter does: packaging_test.py FILTERHOST FILTER-DLL SAMPLES-FOLDER"""
import configparser
import glob
import json
import os
import re
import shutil
import sys
import tempfile
import unittest
import xml.etree.ElementTree

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(ROOT, "tests", "system"))

from host import Host, windows_path  # noqa: E402

PACKAGING = os.path.join(ROOT, "packaging")
CONFIGURATION = os.path.join(PACKAGING, "pagevalidate-pipelineconfig.xml")


def read(*path):
    with open(os.path.join(ROOT, *path), encoding="utf-8") as file:
        return file.read()


def sources():
    """All of the product, without what stands behind the slashes of a comment."""
    names = glob.glob(os.path.join(ROOT, "src", "**", "*.cpp"), recursive=True)
    return re.sub(r"//.*", "", "\n".join(read(name) for name in names))


def properties():
    return json.loads(read("packaging", "driver-properties.json"))


def sections(name):
    """{section: {key: value}} of an INF; a line without a value is a key."""
    inf = configparser.ConfigParser(allow_no_value=True, delimiters="=", comment_prefixes=";", interpolation=None)
    inf.optionxform = str
    inf.read_string(read("packaging", name))
    return inf


class Packaging(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def run_host(self, *options):
        sample = os.path.join(SAMPLES, "sample.xps")
        return Host(FILTERHOST).run(sample, os.path.join(self.folder, "out.xps"), *options)

    def test_the_pipeline_configuration_runs_the_filter_from_its_own_folder(self):
        shutil.copy(CONFIGURATION, self.folder)
        shutil.copy(DLL, self.folder)
        copied = os.path.join(self.folder, os.path.basename(CONFIGURATION))
        status, _, errors = self.run_host("--pipeline-config", windows_path(copied))
        self.assertEqual((0, ""), (status, errors))

    def test_the_documentation_shows_the_same_configuration(self):
        shown = re.search(r"```xml\n(.*?)```", read("docs", "installing.md"), re.S)[1]
        canonical = [xml.etree.ElementTree.canonicalize(text, strip_text=True)
                     for text in (shown, read("packaging", os.path.basename(CONFIGURATION)))]
        self.assertEqual(canonical[0], canonical[1])

    def test_the_driver_properties_are_those_that_the_code_reads(self):
        bags = properties()
        code = sources()
        self.assertEqual(set(bags), set(re.findall(r'L"(DriverPropertyBag)"', code)))
        read_in_code = {name: kind for kind, name in re.findall(r'Read(Int32|String)\(L"(\w+)"', code)}
        listed = {name: {"int32": "Int32", "string": "String"}[entry["type"]]
                  for name, entry in bags["DriverPropertyBag"].items()}
        self.assertEqual(read_in_code, listed)
        table = re.findall(r"^\| `(\w+)` \| (string|32-bit integer) \|", read("docs", "installing.md"), re.MULTILINE)
        self.assertEqual({name: {"string": "String", "32-bit integer": "Int32"}[kind] for name, kind in table}, listed)

    def test_the_families_are_those_that_the_code_has(self):
        code = read("src", "base", "xps", "filterpipeline", "defaultprinttickets.cpp")
        default = int(re.search(r"kDefaultFamily = (\d+);", code)[1])
        rows = re.search(r"kFamilies = \{\{(.*?)\}\};", code, re.S)[1]
        names = {"kDefaultFamily": default, "L'L'": ord("L")}
        families = [names.get(name) or int(name) for name in re.findall(r"\{([^,{]+),", rows)]
        entry = properties()["DriverPropertyBag"]["KoraTeskType"]
        self.assertEqual(sorted(families), sorted(entry["values"]))
        self.assertEqual(default, entry["value"])

    def test_the_filter_asks_for_these_values_and_no_others(self):
        given = []
        for name, entry in properties()["DriverPropertyBag"].items():
            given += ["--driver-property",
                      f"{name}={'int' if entry['type'] == 'int32' else 'string'}:{entry['value']}"]
        status, report, errors = self.run_host(*given)
        self.assertEqual((0, ""), (status, errors))
        self.assertNotIn("DriverPropertyBag", json.dumps(report["missing"]))

    def test_an_inf_copies_what_there_is_and_lists_what_it_copies(self):
        for name in ("v3-sections.inf", "v4-sections.inf"):
            with self.subTest(name):
                inf = sections(name)
                copied = set(inf[inf["PrinterInstall"]["CopyFiles"]])
                self.assertEqual(copied, set(inf["SourceDisksFiles"]))
                self.assertLessEqual({"pagevalidatefilter.dll", os.path.basename(CONFIGURATION)}, copied)
                for file in copied - {"pagevalidatefilter.dll"}:
                    self.assertTrue(os.path.isfile(os.path.join(PACKAGING, file)), file)
                self.assertIn("66000", inf["DestinationDirs"].values())
                used = set(re.findall(r"%(\w+)%", re.sub(r";.*", "", read("packaging", name))))
                self.assertEqual(set(inf["Strings"]), used)

    def test_each_driver_model_has_its_own_keys(self):
        old, new = sections("v3-sections.inf"), sections("v4-sections.inf")
        self.assertEqual("mxdwdrv.dll", old["PrinterInstall"]["DriverFile"])
        self.assertEqual("4.0", new["Version"]["ClassVer"])
        self.assertNotIn("DriverFile", new["PrinterInstall"])
        self.assertNotIn("ClassVer", old["Version"])
        self.assertIn(sections("pagevalidate-manifest.ini")["DriverRender"]["XpsFormat"], ("XPS", "OpenXPS"))


def main(filterhost, dll, samples, *options):
    global FILTERHOST, DLL, SAMPLES
    FILTERHOST, DLL, SAMPLES = filterhost, dll, samples
    return 0 if unittest.main(argv=[__file__, *options], exit=False).result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
