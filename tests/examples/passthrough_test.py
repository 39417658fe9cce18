#!/usr/bin/env python3
"""The example filter through the host, as docs/writing-a-filter.md has it:
passthrough_test.py FILTERHOST PASSTHROUGH-DLL SAMPLES-FOLDER TOOLCHAIN-FILE

It passes every sample on byte for byte, builds by itself, and with each mistake of the document's table the host says
what the table says.
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from concurrent.futures import ThreadPoolExecutor

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(ROOT, "tests", "system"))

from host import Host, windows_path  # noqa: E402

COMPILER = "x86_64-w64-mingw32-g++-posix"
CLASS_ID = "{6B1F0C8E-6D0B-4B57-9D0F-5C6F3E4A7D21}"
EXAMPLE = os.path.join(ROOT, "examples", "passthrough")
SAMPLES = ("sample.xps", "sample.oxps", "streamed.xps", "resources.xps", "names.xps", "utf16.xps", "minimal.xps")

# What a filter's author may get wrong: (what stands in passthrough.cpp, what is written in its place).
MISTAKES = {
    "forgets to close the sender": ("writer->CloseSender()", "S_OK"),
    "sends the sequence twice": ("return pWriter->SendFixedDocumentSequence(sequence.Get());",
                                 "pWriter->SendFixedDocumentSequence(sequence.Get()); "
                                 "return pWriter->SendFixedDocumentSequence(sequence.Get());"),
    "fails and does not ask for the shutdown": (
        "if (FAILED(hr)) m_control->RequestShutdown(hr, nullptr);", "hr = E_ABORT;"),
    "keeps a reference to a page": ("return pWriter->SendFixedPage(pPage);",
                                    "pPage->AddRef(); return pWriter->SendFixedPage(pPage);"),
    "does not count its objects down": ("~PassThrough() { --g_alive; }", "~PassThrough() {}"),
    "reads through a null pointer": ("return pWriter->SendFixedPage(pPage);",
                                     "return *static_cast<volatile HRESULT*>(nullptr);"),
    "lets an exception out": ("return pWriter->SendFixedPage(pPage);", 'throw "out";'),
    "has another class": ("0x6b1f0c8e", "0x6b1f0c8f"),
}


def documented():
    """{mistake: what the host says} of the table in the document."""
    with open(os.path.join(ROOT, "docs", "writing-a-filter.md"), encoding="utf-8") as document:
        rows = re.findall(r"^\| (.+?) \| (\d+) \| `(.+)` \|$", document.read(), re.MULTILINE)
    return {mistake: (int(status), said) for mistake, status, said in rows}


class PassThrough(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def run_host(self, dll, sample="sample.xps", *options):
        """(status, standard error) and the path of the output."""
        output = os.path.join(self.folder, os.path.basename(dll) + "-" + sample)
        status, _, errors = Host(FILTERHOST).run(os.path.join(SAMPLES_FOLDER, sample), output, "--filter",
                                                 windows_path(dll), "--clsid", CLASS_ID, *options)
        return status, errors, output

    def test_every_sample_comes_out_as_it_went_in(self):
        for sample in SAMPLES:
            with self.subTest(sample):
                status, errors, output = self.run_host(DLL, sample)
                self.assertEqual(0, status, errors)
                self.assertEqual("", errors)
                with open(output, "rb") as out, open(os.path.join(SAMPLES_FOLDER, sample), "rb") as source:
                    self.assertEqual(source.read(), out.read())

    def test_a_cancelled_job_breaks_no_rule(self):
        status, errors, output = self.run_host(DLL, "sample.xps", "--cancel-at", "5")
        self.assertEqual(1, status, errors)
        self.assertNotIn("breach", errors)
        self.assertFalse(os.path.exists(output))

    def test_it_builds_by_itself_and_imports_only_what_every_windows_has(self):
        build = os.path.join(self.folder, "build")
        for command in (["cmake", "-S", EXAMPLE, "-B", build, "-G", "Ninja", "-DCMAKE_TOOLCHAIN_FILE=" + TOOLCHAIN,
                         "-DCMAKE_BUILD_TYPE=Release"], ["cmake", "--build", build]):
            done = subprocess.run(command, capture_output=True, text=True)
            self.assertEqual(0, done.returncode, done.stdout + done.stderr)
        dll = os.path.join(build, "passthrough.dll")
        headers = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", dll], capture_output=True, text=True).stdout
        self.assertEqual({"KERNEL32.dll", "msvcrt.dll"}, set(re.findall(r"DLL Name: (\S+)", headers)))
        self.assertEqual(0, self.run_host(dll)[0])

    def test_the_host_says_of_each_mistake_what_the_document_says(self):
        table = documented()
        self.assertEqual(set(MISTAKES), set(table))
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            built = dict(zip(MISTAKES, pool.map(self.build_mistake, MISTAKES)))
        for mistake, dll in built.items():
            with self.subTest(mistake):
                status, errors, _ = self.run_host(dll)
                expected, said = table[mistake]
                self.assertEqual(expected, status, errors)
                pattern = ".*".join(re.escape(part) for part in said.split("…"))
                self.assertRegex(errors.replace("\n", " "), pattern)

    def build_mistake(self, mistake):
        right, wrong = MISTAKES[mistake]
        with open(os.path.join(EXAMPLE, "passthrough.cpp"), encoding="utf-8") as source:
            text = source.read()
        self.assertEqual(1, text.count(right), right)
        folder = os.path.join(self.folder, re.sub(r"\W", "_", mistake))
        os.mkdir(folder)
        path = os.path.join(folder, "passthrough.cpp")
        with open(path, "w", encoding="utf-8") as source:
            source.write(text.replace(right, wrong))
        dll = os.path.join(folder, "passthrough.dll")
        done = subprocess.run([COMPILER, "-std=c++20", "-shared", "-static", "-s", "-DUNICODE",
                               "-D_UNICODE", "-I" + os.path.join(ROOT, "src"), path,
                               os.path.join(EXAMPLE, "dllmain.cpp"), os.path.join(EXAMPLE, "passthrough.def"), "-o", dll,
                               "-lole32", "-loleaut32", "-luuid"], capture_output=True, text=True)
        self.assertEqual(0, done.returncode, done.stderr)
        return dll


def main(filterhost, dll, samples, toolchain, *options):
    global FILTERHOST, DLL, SAMPLES_FOLDER, TOOLCHAIN
    FILTERHOST, DLL, SAMPLES_FOLDER, TOOLCHAIN = filterhost, dll, samples, toolchain
    if not shutil.which(COMPILER):
        print("skipped: no cross compiler")
        return 77
    return 0 if unittest.main(argv=[__file__, *options], exit=False).result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
