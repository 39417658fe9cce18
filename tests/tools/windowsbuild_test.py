#!/usr/bin/env python3
"""What the build on Windows goes by, as far as it can be looked at elsewhere: windowsbuild_test.py"""
import ast
import json
import os
import re
import sys
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
# Packages that are imported by another name than they are installed by.
PACKAGES = {"PIL": "pillow", "fontTools": "fonttools"}
LIBRARIES = {"CLI": "cli11", "GTest": "gtest", "LibXml2": "libxml2", "ZLIB": "zlib", "nlohmann": "nlohmann-json"}


def text_of(*path):
    with open(os.path.join(ROOT, *path), encoding="utf-8") as file:
        return file.read()


def files():
    """The files of the tree, without what is built or hidden."""
    for folder, folders, names in os.walk(ROOT):
        folders[:] = [name for name in folders if not name.startswith(".") and (folder, name) != (ROOT, "build")]
        yield from (os.path.join(folder, name) for name in names)


def is_python(path):
    if path.endswith(".py"):
        return True
    with open(path, "rb") as file:
        return re.match(rb"#!.*python", file.readline()) is not None


def imported(path):
    """The first parts of the names that a script imports."""
    for node in ast.walk(ast.parse(text_of(path))):
        if isinstance(node, ast.Import):
            yield from (alias.name.split(".")[0] for alias in node.names)
        elif isinstance(node, ast.ImportFrom) and node.level == 0:
            yield node.module.split(".")[0]


class WindowsBuild(unittest.TestCase):
    def test_requirements_name_what_scripts_import(self):
        scripts = [path for path in files() if is_python(path)]
        own = {os.path.splitext(os.path.basename(path))[0] for path in scripts}
        own |= {os.path.basename(os.path.dirname(path)) for path in scripts}
        names = {name for path in scripts for name in imported(path)} - own - set(sys.stdlib_module_names)
        lines = text_of("requirements.txt").splitlines()
        self.assertEqual(sorted(PACKAGES.get(name, name) for name in names),
                         [line for line in lines if not line.startswith("#")])

    def test_the_manifest_names_what_is_linked(self):
        found = set(re.findall(r"find_(?:package\(|path\(\w+ )(\w+)", text_of("cmake", "Dependencies.cmake"))) - {"Python3"}
        wanted = {LIBRARIES.get(name, name) for name in found}
        manifest = {entry if isinstance(entry, str) else entry["name"]
                    for entry in json.loads(text_of("vcpkg.json"))["dependencies"]}
        self.assertEqual(wanted, manifest)

    def test_presets_that_are_called_are_there(self):
        calls = text_of("test.cmd") + text_of(".github", "workflows", "windows.yml")
        presets = json.loads(text_of("CMakePresets.json"))
        for kind, command in (("configurePresets", r"cmake"), ("buildPresets", r"cmake --build"), ("testPresets", "ctest")):
            called = set(re.findall(rf"\b{command} --preset (\S+)", calls))
            self.assertTrue(called)
            self.assertLessEqual(called, {preset["name"] for preset in presets[kind]})

    def test_files_that_the_workflow_names_are_there(self):
        workflow = text_of(".github", "workflows", "windows.yml")
        named = re.findall(r"pip install -r (\S+)", workflow) + re.findall(r"run: (\S+\.cmd)", workflow)
        self.assertEqual(["requirements.txt", "test.cmd"], named)
        for name in named:
            self.assertTrue(os.path.exists(os.path.join(ROOT, name)), name)


def main():
    return 0 if unittest.main(argv=[__file__], exit=False).result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main())
