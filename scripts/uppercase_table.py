#!/usr/bin/env python3
"""Writes src/vorlund/api/text/UpperCaseRanges.inc from the Unicode Character Database.

Usage: uppercase_table.py UnicodeData.txt > src/vorlund/api/text/UpperCaseRanges.inc

UnicodeData.txt comes from https://www.unicode.org/Public/15.0.0/ucd/ or from Debian's package unicode-data. Field 12
is the simple upper-case mapping: one character to one. Only the Basic Multilingual Plane is kept, because the table
serves single UTF-16 units; no mapping leaves it.
"""
import sys


def read_mappings(path):
    mappings = {}
    with open(path, encoding="ascii") as lines:
        for line in lines:
            fields = line.split(";")
            code = int(fields[0], 16)
            if code <= 0xFFFF and fields[12]:
                mappings[code] = int(fields[12], 16)
    assert all(upper <= 0xFFFF for upper in mappings.values())
    return mappings


def make_ranges(mappings):
    """Runs of every unit or every second unit with the same distance to their upper-case forms."""
    ranges = []
    for code in sorted(mappings):
        distance = mappings[code] - code
        if ranges:
            first, last, step, previous = ranges[-1]
            gap = code - last
            if distance == previous and (gap == step or first == last and gap <= 2):
                ranges[-1] = (first, code, gap, distance)
                continue
        ranges.append((code, code, 1, distance))
    return ranges


def main():
    print("// Simple upper-case mappings of the Basic Multilingual Plane, Unicode 15.0, as")
    print("// {first, last, step, distance to the upper-case form}. Written by scripts/uppercase_table.py.")
    print("// clang-format off")
    for first, last, step, distance in make_ranges(read_mappings(sys.argv[1])):
        print(f"{{0x{first:04X}, 0x{last:04X}, {step}, {distance}}},")


main()
