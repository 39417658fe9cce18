#!/usr/bin/env python3
"""What `cmake --install` lays out is enough to write, build and run a filter, far from this tree:
install_test.py BUILD-FOLDER SAMPLES-FOLDER
"""
import glob
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import zipfile

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(ROOT, "tests", "system"))

from host import Host, windows_path  # noqa: E402

COMPILER = "x86_64-w64-mingw32-g++-posix"
CLASS_ID = "{6B1F0C8E-6D0B-4B57-9D0F-5C6F3E4A7D21}"
FILES = (
    "CHANGELOG.md",
    "README.md",
    "THIRD-PARTY.md",
    "bin/devices/simprinter/default-ticket.xml",
    "bin/filterhost.exe",
    "bin/pagevalidatefilter.dll",
    "bin/simulated/prntvpt.dll",
    "docs/checks.md",
    "driver/driver-properties.json",
    "driver/pagevalidate-pipelineconfig.xml",
    "driver/pagevalidatefilter.dll",
    "driver/pagevalidatefilter.dll.debug",
    "driver/v3-sections.inf",
    "driver/v4-sections.inf",
    "examples/passthrough/CMakeLists.txt",
    "include/platform/filterpipeline.h",
    "lib/cmake/PageValidateDevKit/PageValidateDevKitConfig.cmake",
    "lib/cmake/PageValidateDevKit/PageValidateDevKitConfigVersion.cmake",
    "lib/cmake/PageValidateDevKit/toolchains/mingw-x64.cmake",
)
# Of the system, in libraries that hold nothing but the names of its DLLs' functions.
SYSTEM = {"advapi32", "comdlg32", "crypt32", "gdi32", "gdiplus", "kernel32", "ole32", "oleaut32", "prntvpt", "shell32",
          "user32", "uuid", "version", "winspool", "ws2_32"}


def run(*command):
    done = subprocess.run(command, capture_output=True, text=True)
    if done.returncode:
        raise AssertionError(f"{' '.join(command)}\n{done.stdout}{done.stderr}")
    return done.stdout


class Install(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.temporary = tempfile.TemporaryDirectory()
        cls.prefix = os.path.join(cls.temporary.name, "dev kit")
        run("cmake", "--install", BUILD, "--prefix", cls.prefix, "--strip")

    @classmethod
    def tearDownClass(cls):
        cls.temporary.cleanup()

    def installed(self, *names):
        return os.path.join(self.prefix, *names)

    def test_everything_is_there(self):
        self.assertEqual([], [name for name in FILES if not os.path.isfile(self.installed(name))])

    def test_nothing_of_ours_names_the_builds_machine(self):
        # Libraries that cmake/dependencies.sh built before it mapped their paths have their own sources' names.
        own = re.compile(re.escape(ROOT.encode()) + b"(?!/build/dependencies/sources/)")
        for folder, _, names in os.walk(self.prefix):
            for name in names:
                with open(os.path.join(folder, name), "rb") as file:
                    content = file.read()
                if b".gcda" in content:
                    self.skipTest("a build that counts what runs names the places of its counters")
                self.assertIsNone(own.search(content), name)

    def test_the_example_builds_and_runs_outside_of_the_tree(self):
        source = os.path.join(self.temporary.name, "my filter")
        shutil.copytree(self.installed("examples", "passthrough"), source)
        build = os.path.join(source, "build")
        toolchain = self.installed("lib", "cmake", "PageValidateDevKit", "toolchains", "mingw-x64.cmake")
        run("cmake", "-S", source, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
            "-DCMAKE_TOOLCHAIN_FILE=" + toolchain, "-DCMAKE_PREFIX_PATH=" + self.prefix)
        with open(os.path.join(build, "CMakeCache.txt"), encoding="utf-8") as cache:
            found = re.search(r"^PageValidateDevKit_DIR:PATH=(.*)$", cache.read(), re.MULTILINE)
        self.assertEqual(self.installed("lib", "cmake", "PageValidateDevKit"), found and found[1])
        run("cmake", "--build", build)
        sample = os.path.join(SAMPLES, "sample.xps")
        output = os.path.join(self.temporary.name, "out.xps")
        status, _, errors = Host(self.installed("bin", "filterhost.exe")).run(
            sample, output, "--filter", windows_path(os.path.join(build, "passthrough.dll")), "--clsid", CLASS_ID)
        self.assertEqual((0, ""), (status, errors))
        with open(sample, "rb") as before, open(output, "rb") as after:
            self.assertEqual(before.read(), after.read())

    def test_the_installed_host_has_its_filter_provider_and_devices_beside_it(self):
        output = os.path.join(self.temporary.name, "turned.xps")
        status, report, errors = Host(self.installed("bin", "filterhost.exe")).run(
            os.path.join(SAMPLES, "sample.xps"), output, "--device", "longedge")
        self.assertEqual((0, ""), (status, errors))
        self.assertTrue(os.path.exists(output))

    def test_every_library_that_is_linked_is_named_with_its_licence(self):
        with open(os.path.join(BUILD, "build.ninja"), encoding="utf-8") as ninja:
            text = ninja.read()
        linked = set()
        for program in ("bin/filterhost.exe", "bin/pagevalidatefilter.dll", "bin/simulated/prntvpt.dll"):
            line = re.search(rf"^build {re.escape(program)}[ :].*?\n  LINK_LIBRARIES = (.*?)\n", text, re.S | re.M)[1]
            for word in line.split():
                if word.startswith("-l"):
                    linked.add(word[2:])
                elif os.path.isabs(word):
                    linked.add(re.sub(r"^lib|\.a$", "", os.path.basename(word)))
        with open(self.installed("THIRD-PARTY.md"), encoding="utf-8") as file:
            rows = re.findall(r"^\| ([^|]+) \| ([^|]+) \| `licences/([^|`]+)` \|$", file.read(), re.MULTILINE)
        archives = {"xml2": "libxml2", "zip": "libzip", "z": "zlib"}
        self.assertEqual(set(archives), linked - SYSTEM)
        names = [name for name, _, _ in rows]
        for library in archives.values():
            self.assertIn(library, names)
        for name, _, licence in rows:
            self.assertGreater(os.path.getsize(self.installed("licences", licence)), 300, name)
        self.assertEqual({licence for _, _, licence in rows}, set(os.listdir(self.installed("licences"))))

    def test_the_archive_holds_the_same(self):
        folder = os.path.join(self.temporary.name, "archive")
        run("cpack", "--config", os.path.join(BUILD, "CPackConfig.cmake"), "-B", folder)
        archives = glob.glob(os.path.join(folder, "*.zip"))
        self.assertEqual(1, len(archives))
        with zipfile.ZipFile(archives[0]) as archive:
            names = {name.partition("/")[2] for name in archive.namelist() if not name.endswith("/")}
        expected = {os.path.relpath(os.path.join(where, name), self.prefix)
                    for where, _, files in os.walk(self.prefix) for name in files}
        self.assertEqual(expected, names)


def main(build, samples, *options):
    global BUILD, SAMPLES
    BUILD, SAMPLES = build, samples
    if not shutil.which(COMPILER):
        print("skipped: no cross compiler")
        return 77
    return 0 if unittest.main(argv=[__file__, *options], exit=False).result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
