#!/usr/bin/env python3
"""Checks that every test of the build is run by the judge: alljudged_test.py CTEST BUILD_FOLDER RUN_TEST"""
import json
import os
import subprocess
import sys


def main(ctest, build, run_test):
    listed = subprocess.run([ctest, "--test-dir", build, "--show-only=json-v1"], stdout=subprocess.PIPE, check=True)
    tests = json.loads(listed.stdout)["tests"]
    missed = [test["name"] for test in tests
              if not any(os.path.abspath(word) == os.path.abspath(run_test) for word in test["command"][:2])]
    for name in missed:
        print(f"{name} is added with add_test; judged_test (cmake/Tests.cmake) is what sees a test that ends early")
    print(f"{len(tests)} tests, {len(missed)} without a judge")
    return 1 if missed or not tests else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
