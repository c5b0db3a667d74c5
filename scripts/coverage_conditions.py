"""Which lines of a C++ source belong to a statement with a condition.

The compiler also makes branches where the source has none: for exceptions that a call may raise, for the objects that
these destroy, for static objects that are made once. Such a branch tells nothing about the tests.
"""
import re

QUIET = re.compile(r'//[^\n]*|/\*.*?\*/|R"\((?:.|\n)*?\)"|"(?:\\.|[^"\\\n])*"|(?<!\w)\'(?:\\.|[^\'\\\n])*\'|^[ \t]*#[^\n]*', re.M | re.S)
CONDITION = re.compile(r"\b(?:if|while|for|switch|case)\b|&&|\|\||\?")
# Decided by the compiler.
CONSTANT = re.compile(r"\bif\s+constexpr\b|\boperator\s*&&|\boperator\s*\|\|")
# In front of a brace that begins values, not statements.
VALUES = re.compile(r"(?:[\w>\])]|\breturn|[=,({?:]|&&|\|\|)\Z")
SPACED_VALUES = re.compile(r"(?:\breturn|[=,({?:]|&&|\|\||\[\])\s*\Z")


def lines_with_conditions(source):
    # Blanks keep the lines and the columns.
    text = QUIET.sub(lambda match: re.sub(r"[^\n]", " ", match[0]), source)
    found = set()
    statement = []  # offsets
    depth = 0
    outer = []  # what goes on behind a brace: statement and depth, or nothing for a brace around values

    def finish():
        nonlocal statement
        code = "".join(text[at] for at in statement)
        if CONDITION.search(CONSTANT.sub("", code)):
            found.update(text.count("\n", 0, at) + 1 for at in statement if not text[at].isspace())
        statement = []

    for at, unit in enumerate(text):
        if unit == "{":
            before = text[max(0, at - 20) : at]
            if SPACED_VALUES.search(before) or (not before[-1:].isspace() and VALUES.search(before)):
                outer.append(None)
                statement.append(at)
                continue
            if depth == 0:
                finish()
            outer.append((statement, depth))
            statement, depth = [], 0
        elif unit == "}":
            if not outer:
                continue
            state = outer.pop()
            if state is None:
                statement.append(at)
                continue
            finish()
            statement, depth = state
        elif unit == ";" and depth == 0:
            finish()
        else:
            depth += (unit == "(") - (unit == ")")
            statement.append(at)
    finish()
    return found
