#!/usr/bin/env python3
"""Checks the names of test files and suites against tests/README.md, and that every test checks something."""
import pathlib
import re
import sys

TESTS = pathlib.Path(__file__).resolve().parent
SUITE = re.compile(r"^(?:TYPED_)?TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\)", re.M)
BODY = re.compile(r"^TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\) \{\n(.*?)^\}", re.M | re.S)
# Checks, and helpers that check; a helper that a file defines is looked at by its own name.
CHECK = re.compile(r"\b(?:EXPECT|ASSERT)_\w+|\b(?:ADD_FAILURE|FAIL|SUCCEED)\b|\bExpect\w*\b|\bCheck\w*\b")
OLD_WORDS = re.compile(r"AllocationFailures|Allocation_test|Stress_test")
OWN_PREFIX = {"cli"}  # suites of the program are named after its commands


def is_named_alike(stem, suite):
    """A suite has its file's name, or one begins with the other: MatrixInverse_test adds to the suite Matrix."""
    return suite.startswith(stem) or stem.startswith(suite)


def helpers_that_check(text):
    found = set()
    for match in re.finditer(r"^(?:template <[^\n]*> )?\w[\w:<>&* ]* \**(\w+)\([^;{}]*\)[^;{}]*\{\n(.*?)^\}", text,
                             re.M | re.S):
        if CHECK.search(match.group(2)):
            found.add(match.group(1))
    return found


def main():
    faults = []
    count = 0
    for path in sorted(TESTS.rglob("*_test.cpp")):
        name = path.relative_to(TESTS)
        text = path.read_text(encoding="utf-8")
        stem = re.sub(r"_(posix|win32)$", "", path.name[: -len("_test.cpp")])
        if OLD_WORDS.search(path.name) and "ThreadsStress" not in path.name:
            faults.append(f"{name}: not a kind of tests/README.md")
        if name.parts[0] not in OWN_PREFIX:
            for suite in sorted({match.group(1) for match in SUITE.finditer(text)}):
                if not is_named_alike(stem, suite):
                    faults.append(f"{name}: suite {suite} is not named as its file")
        helpers = helpers_that_check(text)
        for suite, test, body in BODY.findall(text):
            count += 1
            if not CHECK.search(body) and not any(re.search(rf"\b{helper}\b", body) for helper in helpers):
                faults.append(f"{name}: {suite}.{test} checks nothing")
    for fault in faults:
        print(fault)
    print(f"{count} tests looked at, {len(faults)} faults")
    return 1 if faults or count == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
