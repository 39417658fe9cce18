#!/usr/bin/env python3
"""Tests of tools/mutate: what it makes of a line, how it judges a run, and a small project from end to end."""
import os
import re
import subprocess
import sys
import tempfile
import textwrap
import unittest

ROOT = os.path.realpath(os.path.join(os.path.dirname(__file__), "..", ".."))
sys.path.insert(0, os.path.join(ROOT, "tools"))

from mutation import explained  # noqa: E402
from mutation.operators import apply, mutants_of  # noqa: E402
from mutation.testrun import judge  # noqa: E402

COMPILER = "x86_64-w64-mingw32-g++-posix"


def changes(body, kind=None):
    """(before, after) of every mutant of the lines, which are taken for a function's body."""
    text = "void Act() {\n" + textwrap.indent(textwrap.dedent(body), "    ") + "\n}\n"
    return [(m.before, m.after) for m in mutants_of("src/act.cpp", text) if kind in (None, m.kind)]


class Lines(unittest.TestCase):
    def test_comparisons_are_turned_round_and_moved_by_one(self):
        self.assertEqual([("Use(a < b);", "Use(a >= b);")], changes("Use(a < b);", "comparison"))
        self.assertEqual([("Use(a < b);", "Use(a <= b);")], changes("Use(a < b);", "boundary"))
        self.assertEqual([("Use(a == b);", "Use(a != b);")], changes("Use(a == b);", "comparison"))

    def test_template_arguments_are_no_comparisons(self):
        self.assertEqual([], changes("std::vector<int> numbers;", "comparison"))
        self.assertEqual([], changes("std::vector<std::vector<int>> numbers = Make<int>();", "boundary"))

    def test_constants_change_and_go_one_down(self):
        self.assertEqual([("int a = 7;", "int a = 8;")], changes("int a = 7;", "constant"))
        self.assertEqual([("int a = 7;", "int a = 6;")], changes("int a = 7;", "off by one"))
        self.assertEqual([], changes("int a = 0;", "off by one"))
        self.assertEqual([("auto a = 0x10u;", "auto a = 0x11u;")], changes("auto a = 0x10u;", "constant"))
        self.assertEqual([('auto a = L"x";', 'auto a = L"x~";')], changes('auto a = L"x";', "constant"))
        self.assertEqual([("auto a = 'x';", "auto a = '~';")], changes("auto a = 'x';", "constant"))

    def test_comments_and_strings_are_not_code(self):
        self.assertEqual([], changes("// if (a < b) return;"))
        self.assertEqual([("Use();  // a < b", ";  // a < b")], changes("Use();  // a < b"))
        self.assertEqual([], changes('Use("a < b");', "comparison"))

    def test_statements_are_removed_and_declarations_are_not(self):
        self.assertEqual([("Use();", ";")], changes("Use();", "statement"))
        self.assertEqual([("m_a.b()->c = d;", ";")], changes("m_a.b()->c = d;", "statement"))
        self.assertEqual([("++a;", ";")], changes("++a;", "statement"))
        self.assertEqual([], changes("int a = 0;\nThing b(a);\nUse<int> c;\nreturn b + c;", "statement"))
        self.assertEqual([("if (a) Use();", "if (a) ;")], changes("if (a) Use();", "statement"))
        self.assertEqual([("Use(a,", "if (false) Use(a,")], changes("Use(a,\n    b);", "statement"))

    def test_an_object_that_works_by_living_is_removed(self):
        self.assertEqual([("const std::scoped_lock lock(m_lock);", ";")],
                         changes("const std::scoped_lock lock(m_lock);\nreturn m_value;", "statement"))

    def test_checks_are_dropped(self):
        self.assertEqual([("log::ThrowIfFailed(Use());", "static_cast<void>(Use());")],
                         changes("log::ThrowIfFailed(Use());", "check"))
        self.assertEqual([('ThrowIfNull(p, "p");', ";")], changes('ThrowIfNull(p, "p");', "check"))
        self.assertEqual([("if (FAILED(hr)) return hr;", ";")], changes("if (FAILED(hr)) return hr;", "check"))
        self.assertEqual([], changes("if (a) return b; else Use();", "check"))

    def test_conditions_are_negated(self):
        self.assertEqual([("if (a && b) Use();", "if (!(a && b)) Use();")], changes("if (a && b) Use();", "condition"))
        self.assertEqual([("while (!a) Use();", "while (a) Use();")], changes("while (!a) Use();", "condition"))
        self.assertEqual([("return Is(a) ? b : c;", "return !(Is(a)) ? b : c;")],
                         changes("return Is(a) ? b : c;", "condition"))
        self.assertEqual([("if (T a; Is(a)) Use();", "if (T a; !(Is(a))) Use();")],
                         changes("if (T a; Is(a)) Use();", "condition"))
        self.assertEqual([], changes("if (auto a = Make()) Use();", "condition"))

    def test_arguments_are_swapped(self):
        self.assertEqual([("Use(a, b, c);", "Use(b, a, c);"), ("Use(a, b, c);", "Use(a, c, b);")],
                         sorted(changes("Use(a, b, c);", "swap"), reverse=True))
        self.assertEqual([("Set({a, b});", "Set({b, a});")], changes("Set({a, b});", "swap"))
        self.assertEqual([], changes("std::swap(a, b);\nUse(a, a);", "swap"))

    def test_the_rest(self):
        self.assertEqual([("return S_OK;", "return S_FALSE;")], changes("return S_OK;", "status"))
        self.assertEqual([("return E_POINTER;", "return E_UNEXPECTED;")], changes("return E_POINTER;", "status"))
        self.assertEqual([("Use(a || b);", "Use(a && b);")], changes("Use(a || b);", "logic"))
        self.assertEqual([("bool a = true;", "bool a = false;")], changes("bool a = true;", "boolean"))
        self.assertEqual([("a = b - c;", "a = b + c;")], changes("a = b - c;", "arithmetic"))

    def test_one_line_changes_and_the_function_is_named(self):
        text = textwrap.dedent("""\
            namespace base {
            constexpr int kMost = 5;
            class Thing {
              public:
                bool Is() const { return m_count < kMost; }
                int m_count = 0;
            };
            Thing::Thing() : m_count(1), m_name{"x"} {
                Use();
            }
            }  // namespace base
            """)
        found = {(m.line, m.function) for m in mutants_of("src/thing.h", text)}
        self.assertEqual({(2, "kMost"), (5, "Thing::Is"), (6, "Thing::m_count"), (8, "Thing::Thing"),
                          (9, "Thing::Thing")}, found)
        for mutant in mutants_of("src/thing.h", text):
            pairs = zip(text.split("\n"), apply(mutant, text).split("\n"))
            self.assertEqual([mutant.line], [n for n, (a, b) in enumerate(pairs, 1) if a != b])


class Runs(unittest.TestCase):
    STARTED = "[ RUN      ] A.B\n"
    WHOLE = STARTED + "[       OK ] A.B (0 ms)\n[  PASSED  ] 1 test.\n"

    def test_a_whole_run_passes(self):
        self.assertTrue(judge(self.WHOLE, 0, False, 1).passed)

    def test_each_early_end_fails(self):
        for text, status, hung, reason in (
                (self.STARTED, 0, False, "early end in A.B, status 0"),
                (self.STARTED, 5, False, "early end in A.B, status 5"),
                (self.STARTED, -9, True, "hang in A.B"),
                (self.WHOLE, 3, False, "status 3"),
                ("", 0, False, "early end, status 0"),
                (self.STARTED + "[  FAILED  ] A.B (0 ms)\n[  FAILED  ] 1 test, listed below:\n", 1, False, "A.B")):
            outcome = judge(text, status, hung, 1)
            self.assertFalse(outcome.passed)
            self.assertEqual(reason, outcome.reason)


class Reasons(unittest.TestCase):
    def read(self, text):
        with tempfile.NamedTemporaryFile("w", suffix=".md", encoding="utf-8") as document:
            document.write(textwrap.dedent(text))
            document.flush()
            return explained.read(document.name)

    def test_they_are_known_by_file_function_and_change(self):
        self.assertEqual({("src/a.cpp", "Act", "a < b;", "a <= b;"): "they are never equal, as the caller sees to it"},
                         self.read("""\
                             # Title
                             Text.

                             ## `src/a.cpp`
                             ### `Act`
                             - `a < b;` → `a <= b;`: they are never equal,
                               as the caller sees to it
                             """))

    def test_an_entry_without_a_reason_or_a_function_is_refused(self):
        for text in ("## src/a.cpp\n### Act\n- `a` → `b`:\n", "## src/a.cpp\n- `a` → `b`: reason\n",
                     "## src/a.cpp\n### Act\nloose text\n"):
            self.assertRaises(explained.Malformed, self.read, text)

    def test_those_of_the_project_fit_its_sources(self):
        done = subprocess.run([os.path.join(ROOT, "tools", "mutate"), "--check"], capture_output=True, text=True)
        self.assertEqual(("", 0), (done.stdout, done.returncode))


class SmallProject(unittest.TestCase):
    """A function, a header and their tests, broken in every way that the tool tells apart."""
    FILES = {
        "src/base/half.h": """\
            #pragma once
            inline int Half(int value) { return value / 2; }
            inline int Third(int value) { return value / 3; }
            """,
        "src/base/act.cpp": """\
            #include "base/half.h"
            #include <cstdlib>
            int Mixed(int* place, int value) { return *place + value; }
            int Act(int* place, unsigned steps) {
                if (place == nullptr) return -1;
                if (steps > 90) std::exit(0);
                while (steps != 0) {
                    --steps;
                }
                if (*place < 0) return 0;
                return Half(Mixed(place, 10));
            }
            """,
        "src/base/twice.cpp": """\
            int Twice(int value) { return value * 2; }
            """,
        "tests/base/act_test.cpp": """\
            #include <cstdio>
            int Act(int* place, unsigned steps);
            int Twice(int value);
            bool ThirdIsRight();
            int main() {
                std::puts("[ RUN      ] Act.Works");
                std::fflush(stdout);
                int none = 0, five = 6, less = -1;
                if (Act(nullptr, 0) != -1 || Act(&five, 3) != 8 || Act(&less, 1) != 0 || Act(&none, 80) != 5 ||
                    !ThirdIsRight() || Twice(7) != 14) {
                    std::puts("[  FAILED  ] Act.Works (0 ms)");
                    return 1;
                }
                std::puts("[       OK ] Act.Works (0 ms)\\n[  PASSED  ] 1 test.");
            }
            """,
        "tests/base/half_test.cpp": """\
            #include "base/half.h"
            bool ThirdIsRight() { return Third(9) == 3; }
            """,
        "build/Unity/unity_0_cxx.cxx": """\
            #include "ROOT/tests/base/act_test.cpp"
            #include "ROOT/tests/base/half_test.cpp"
            """,
        "build/Unity/unity_1_cxx.cxx": """\
            #include "ROOT/src/base/act.cpp"
            """,
        "tests/mutants.md": """\
            ## src/base/act.cpp
            ### Act
            - `if (*place < 0) return 0;` → `if (*place < 1) return 0;`: to show what an explained one looks like
            """,
        "build/build.ninja": f"""\
            rule compile
              command = {COMPILER} -Isrc -MD -MT $out -MF $out.d -o $out -c $in
              deps = gcc
              depfile = $out.d
            rule archive
              command = rm -f $out && x86_64-w64-mingw32-ar qc $out $in && :
            rule link
              command = : && {COMPILER} -static $in -o $out libbase.a && :
            build act.obj: compile ROOT/build/Unity/unity_1_cxx.cxx
            build twice.obj: compile ROOT/src/base/twice.cpp
            build tests.obj: compile ROOT/build/Unity/unity_0_cxx.cxx
            build libbase.a: archive act.obj twice.obj
            build bin/test_base.exe: link tests.obj | libbase.a
            """,
    }
    EXPECTED = {
        "if (place == nullptr) return -1; → ;": "killed .*early end in Act.Works",  # a crash
        "if (steps > 90) std::exit(0); → if (steps <= 90) std::exit(0);": "killed .*early end in Act.Works, status 0",
        "if (steps > 90) std::exit(0); → if (steps >= 90) std::exit(0);": "survived",
        "--steps; → ;": "killed .*hang in Act.Works",
        "if (*place < 0) return 0; → ;": "killed .*test_base Act.Works",
        "if (*place < 0) return 0; → if (*place < 1) return 0;": "killed",
        "return Half(Mixed(place, 10)); → return Half(Mixed(10, place));": "no compile",
        "return Half(Mixed(place, 10)); → return Half(Mixed(place, 11));": "survived",
        "{ return value / 2; } → inline int Half(int value) { return value / 3; }": "killed .*test_base Act.Works",
        # Compiled by itself.
        "{ return value * 2; } → int Twice(int value) { return value * 3; }": "killed .*test_base Act.Works",
        # Only the header's own tests have it; they are compiled together with others.
        "{ return value / 3; } → inline int Third(int value) { return value / 4; }": "killed .*test_base Act.Works",
    }

    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        for name, text in self.FILES.items():
            path = os.path.join(self.folder.name, name)
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "w", encoding="utf-8") as file:
                file.write(textwrap.dedent(text).replace("ROOT", self.folder.name).replace("-Isrc", f"-I{self.folder.name}/src"))

    def mutate(self, *arguments):
        return subprocess.run([os.path.join(ROOT, "tools", "mutate"), "--root", self.folder.name, "--build",
                               os.path.join(self.folder.name, "build"), "--limit", "4", *arguments],
                              capture_output=True, text=True)

    def test_each_verdict(self):
        listed = self.mutate("--list", "--seed", "7", "--count", "1000").stdout
        names = {}
        for line in listed.splitlines()[1:]:
            for change in self.EXPECTED:
                if line.endswith(change):
                    names[change] = line.split()[0]
        self.assertEqual(set(self.EXPECTED), set(names))
        only = [word for name in names.values() for word in ("--only", name)]
        done = self.mutate("--seed", "7", "--count", "1000", "--jobs", "2", *only)
        for change, verdict in self.EXPECTED.items():
            line = next((line for line in done.stdout.splitlines() if re.match(r" *\d+ .* " + names[change], line)), "")
            self.assertRegex(line, r"^ *\d+ " + verdict, done.stdout + done.stderr)
        self.assertEqual(1, done.returncode)

    def test_the_choice_depends_on_the_seed_alone(self):
        first, again, other = (self.mutate("--list", "--count", "8", "--seed", seed).stdout for seed in ("1", "1", "2"))
        self.assertEqual(first, again)
        self.assertNotEqual(first.splitlines()[1:], other.splitlines()[1:])


if __name__ == "__main__":
    sys.exit(0 if unittest.main(exit=False).result.wasSuccessful() else 1)
