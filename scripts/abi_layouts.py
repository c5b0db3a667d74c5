#!/usr/bin/env python3
"""The sizes, fields and slots of the public classes in two dumps of abidw: those of the first are the same in the second.

abidiff compares what the exported functions reach. Most interfaces are reached by identifier only, and a slot that
moves there is found here. usage: scripts/abi_layouts.py KEPT BUILT
"""
import pathlib
import re
import sys
import xml.etree.ElementTree as tree

HEADERS = pathlib.Path(__file__).resolve().parents[1] / "include/vorlund"
DEFINED = re.compile(r"^(?:class|struct) (?:VRL_API )?(\w+)(?: final)?(?: :[^:].*)? ?\{", re.MULTILINE)


def public_names():
    return {name for file in HEADERS.glob("*.h*") for name in DEFINED.findall(file.read_text())}


def layouts(path, names):
    """Class name to its facts, one line each. A class that is only declared in a dump has none there."""
    classes = {}
    for scope in tree.parse(path).iter("namespace-decl"):
        if scope.get("name") != "vorlund":
            continue
        for found in scope.findall("class-decl"):
            if found.get("name") not in names or found.get("is-declaration-only") == "yes":
                continue
            facts = classes.setdefault(found.get("name"), set())
            facts.add(f"size {found.get('size-in-bits')} bits")
            for base in found.findall("base-class"):
                facts.add(f"base at bit {base.get('layout-offset-in-bits')}")
            for member in found.findall("data-member"):
                if (offset := member.get("layout-offset-in-bits")) is not None:
                    facts.add(f"bit {offset}: {member.find('var-decl').get('name')}")
            for member in found.findall("member-function"):
                if (slot := member.get("vtable-offset")) is not None:
                    facts.add(f"slot {slot}: {member.find('function-decl').get('mangled-name')}")
    return classes


def main():
    names = public_names()
    kept, built = (layouts(path, names) for path in sys.argv[1:3])
    faults = 0
    for name, facts in sorted(kept.items()):
        now = built.get(name, set())
        for sign, lines in (("-", facts - now), ("+", now - facts)):
            for line in sorted(lines):
                print(f"{sign} {name}: {line}")
                faults += 1
    slots = sum(fact.startswith("slot") for facts in kept.values() for fact in facts)
    print(f"{len(kept)} public classes with {slots} slots, {faults} differences")
    return 1 if faults or not slots else 0


sys.exit(main())
