"""C++ source text as tokens, as far as finding places to change needs it."""
import re
from typing import NamedTuple

_TOKEN = re.compile(
    r"""
    (?P<space>\s+)
  | (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<raw>(?:u8|[uUL])?R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)")
  | (?P<string>(?:u8|[uUL])?"(?:\\.|[^"\\\n])*")
  | (?P<char>(?:u8|[uUL])?'(?:\\.|[^'\\\n])+')
  | (?P<number>\.?\d(?:[eEpP][+-]|['\w.])*)
  | (?P<word>[A-Za-z_]\w*)
  | (?P<mark_>\.\.\.|<<=|>>=|<=>|->\*|\+\+|--|->|::|&&|\|\||<<|>>|[-+*/%&|^<>=!]=|[^\s\w])
    """,
    re.VERBOSE | re.DOTALL,
)
_DIRECTIVE = re.compile(r"^[ \t]*#(?:\\\n|[^\n])*", re.MULTILINE)
_PAIRS = {"(": ")", "[": "]", "{": "}"}


class Token(NamedTuple):
    kind: str  # number, word, string, char or mark
    text: str
    start: int
    end: int
    line: int  # from 0


def tokenize(text):
    """The tokens of a file without its comments and preprocessor lines."""
    text = _DIRECTIVE.sub(lambda found: re.sub(r"[^\n]", " ", found.group()), text)
    tokens = []
    line = 0
    for found in _TOKEN.finditer(text):
        kind = found.lastgroup if found.lastgroup != "mark" else "raw"
        kind = "string" if kind == "raw" else "mark" if kind == "mark_" else kind
        if kind not in ("space", "comment"):
            tokens.append(Token(kind, found.group(), found.start(), found.end(), line))
        line += found.group().count("\n")
    return tokens


def match_brackets(tokens):
    """For every bracket the index of its partner."""
    partner = {}
    stack = []
    for i, token in enumerate(tokens):
        if token.kind != "mark":
            continue
        if token.text in _PAIRS:
            stack.append(i)
        elif token.text in _PAIRS.values() and stack and _PAIRS[tokens[stack[-1]].text] == token.text:
            partner[i] = stack.pop()
            partner[partner[i]] = i
    return partner


def code_lines(tokens):
    """The numbers of the lines that hold code."""
    lines = set()
    for token in tokens:
        lines.update(range(token.line, token.line + token.text.count("\n") + 1))
    return lines
