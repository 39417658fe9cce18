#!/usr/bin/env python3
"""Has tools/includecircles.py look at trees with and without circles: includecircles_test.py INCLUDECIRCLES"""
import os
import subprocess
import sys
import tempfile

# The files of a tree with their text, the status, and lines of the output.
TREES = {
    "no circle": ({"src/a/one.h": '#include "two.h"', "src/a/one.cpp": '#include "a/one.h"', "src/a/two.h": "",
                   "src/b/three.cpp": '#include "a/one.h"\n#include <a/three.h>'},
                  0, ["0 circles among 3 units", "0 circles among 2 folders"]),
    "two headers": ({"src/a/one.h": '#include "a/two.h"', "src/a/two.h": '#include "one.h"'},
                    1, ["   for example src/a/one -> src/a/two -> src/a/one", "1 circles among 2 units"]),
    "through the sources": ({"src/a/one.h": "", "src/a/one.cpp": '#include "a/two.h"', "src/a/two.h": "",
                             "src/a/two.cpp": '#  include "a/one.h"'},
                            1, ["2 units in a circle: src/a/one, src/a/two", "1 circles among 2 units"]),
    "folders only": ({"src/a/one.h": '#include "b/two.h"', "src/b/two.h": "", "src/b/three.h": '#include "a/four.h"',
                      "src/a/four.h": ""},
                     1, ["0 circles among 4 units", "2 folders in a circle: src/a, src/b", "1 circles among 2 folders"]),
    "two circles": ({"src/a/one.h": '#include "two.h"', "src/a/two.h": '#include "one.h"',
                     "tests/c/three.h": '#include "four.h"', "tests/c/four.h": '#include "three.h"'},
                    1, ["2 circles among 4 units"]),
    "namesakes": ({"src/a/one.h": '#include "two.h"', "src/a/two.h": "", "src/b/two.h": '#include "a/one.h"'},
                  0, ["0 circles among 3 units"]),
    "nothing": ({}, 1, []),
}


def main(program):
    failed = 0
    for name, (files, status, lines) in TREES.items():
        with tempfile.TemporaryDirectory() as root:
            for path, text in files.items():
                os.makedirs(os.path.join(root, os.path.dirname(path)), exist_ok=True)
                with open(os.path.join(root, path), "w", encoding="utf-8") as file:
                    file.write(text)
            done = subprocess.run([sys.executable, program, root, "src", "tests"], stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT, text=True, check=False)
        printed = done.stdout.splitlines()
        right = done.returncode == status and all(line in printed for line in lines)
        failed += not right
        print(f"{'' if right else 'WRONG: '}{name}: status {done.returncode}", *([] if right else printed), sep="\n   ")
    print(f"{len(TREES)} trees, {failed} judged wrongly")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
