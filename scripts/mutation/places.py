"""The places of a source file that can be changed, and what each becomes."""
import hashlib
import re
from typing import NamedTuple

from .tokens import code_lines, match_brackets, tokenize

_RELATIONS = {
    "<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"), "==": ("!=",), "!=": ("==",),
}
_ARITHMETIC = {
    "+": ("-",), "-": ("+",), "*": ("/",), "/": ("*",), "%": ("*",), "<<": (">>",), ">>": ("<<",),
    "&": ("|",), "|": ("&",), "^": ("|",),
}
_ASSIGNMENTS = {
    "+=": ("-=",), "-=": ("+=",), "*=": ("/=",), "/=": ("*=",), "%=": ("*=",), "|=": ("&=",), "&=": ("|=",),
    "^=": ("|=",), "<<=": (">>=",), ">>=": ("<<=",),
}
_LOGIC = {"&&": ("||",), "||": ("&&",)}
_STEPS = {"++": ("--",), "--": ("++",)}
_CALLS = {"min": "max", "max": "min", "any_of": "all_of", "all_of": "any_of"}
_INTEGER = re.compile(r"(0[xX][\da-fA-F']+|0[bB][01']+|[\d']+)([uUlLzZ]*)$")
_FLOAT = re.compile(r"(\d+)(\.\d*.*)$")
# Statements that begin like these declare something, or are no statements.
_NOT_STATEMENTS = frozenset(
    "alignas auto case class const constexpr default do else enum explicit extern for friend if inline mutable "
    "namespace private protected public static static_assert struct switch template thread_local try typedef "
    "union using virtual volatile while catch operator".split())


class Place(NamedTuple):
    """One change of one place."""
    key: str  # survives the shift of its line
    file: str  # relative to the root
    line: int  # from 1, in the text as it is
    operator: str
    start: int
    end: int
    before: str
    after: str

    def apply(self, text):
        return text[: self.start] + self.after + text[self.end :]


class SourceFile:
    """The text of a file with its places."""

    def __init__(self, name, text):
        self.name = name
        self.text = text
        self.tokens = tokenize(text)
        self.partner = match_brackets(self.tokens)
        self.code_lines = code_lines(self.tokens)
        self._found = []
        self._skipped = self._skipped_tokens()
        self._in_heads = self._loop_heads()
        for i in range(len(self.tokens)):
            if i not in self._skipped:
                self._look_at(i)
        self.places = self._with_keys()

    def digest(self):
        """Of the code without comments and layout."""
        joined = " ".join(token.text for token in self.tokens)
        return hashlib.sha256(joined.encode()).hexdigest()[:8]

    def _with_keys(self):
        lines = self.text.split("\n")
        texts = [" ".join(line.split()) for line in lines]
        seen = {}
        occurrence = []
        for text in texts:
            occurrence.append(seen.get(text, 0))
            seen[text] = occurrence[-1] + 1
        places = []
        for operator, start, end, after in self._found:
            line = self.text.count("\n", 0, start)
            column = len(" ".join(self.text[self.text.rfind("\n", 0, start) + 1 : start].split()))
            before = self.text[start:end]
            parts = (self.name, texts[line], occurrence[line], column, operator, before, after)
            key = hashlib.sha256("\0".join(map(str, parts)).encode()).hexdigest()[:12]
            places.append(Place(key, self.name, line + 1, operator, start, end, before, after))
        return places

    def _add(self, operator, start, end, *afters):
        self._found += [(operator, start, end, after) for after in afters]

    def _text(self, i):
        return self.tokens[i].text if 0 <= i < len(self.tokens) else ""

    def _is_spaced(self, i):
        """Whether the token is between blanks, as the formatter writes operators between two values."""
        token = self.tokens[i]
        return self.text[token.start - 1].isspace() and self.text[token.end : token.end + 1].isspace()

    def _skipped_tokens(self):
        """What the compiler checks and no run shows: assertions, the heads of templates, attributes, `= 0`."""
        skipped = set()
        for i, token in enumerate(self.tokens):
            if token.text in ("static_assert", "alignas", "using", "template"):
                end = i
                if token.text == "template":
                    depth = 0
                    for end in range(i + 1, len(self.tokens)):
                        depth += {"<": 1, ">": -1, ">>": -2}.get(self._text(end), 0)
                        if depth <= 0:
                            break
                elif token.text == "using":
                    while end + 1 < len(self.tokens) and self._text(end) != ";":
                        end += 1
                else:
                    end = self.partner.get(i + 1, i)
                skipped.update(range(i, end + 1))
            elif token.text == "[" and self._text(i + 1) == "[":
                skipped.update(range(i, self.partner.get(i, i) + 1))
            elif token.text == "0" and self._text(i - 1) == "=" and self._text(i - 2) in (")", "const", "noexcept", "override"):
                skipped.add(i)
        return skipped

    def _loop_heads(self):
        heads = set()
        for i, token in enumerate(self.tokens):
            if token.text == "for" and self._text(i + 1) == "(":
                heads.update(range(i + 2, self.partner.get(i + 1, i)))
        return heads

    def _look_at(self, i):
        token = self.tokens[i]
        if token.kind == "number":
            self._number(token)
        elif token.text in ("true", "false"):
            self._add("constant", token.start, token.end, "false" if token.text == "true" else "true")
        elif token.text in _CALLS and self._text(i + 1) == "(":
            self._add("call", token.start, token.end, _CALLS[token.text])
        elif token.text in ("if", "while"):
            self._condition(i)
        elif token.text == "for":
            self._loop(i)
        elif token.kind == "mark":
            self._mark(i)
        self._statement(i)

    def _number(self, token):
        whole = _INTEGER.match(token.text)
        if whole:
            digits = whole.group(1).replace("'", "")
            value = int(digits, 8 if re.match(r"0\d", digits) else 0)
            more = [str(value + 1) + whole.group(2)]
            if value:
                more.append(str(value - 1) + whole.group(2))
            self._add("constant", token.start, token.end, *more)
            return
        parts = _FLOAT.match(token.text)
        if parts:
            self._add("constant", token.start, token.end, f"{int(parts.group(1)) + 1}{parts.group(2)}")

    def _mark(self, i):
        token = self.tokens[i]
        before = self.tokens[i - 1] if i else token
        for operator, table in (("relation", _RELATIONS), ("arithmetic", _ARITHMETIC), ("logic", _LOGIC),
                                ("arithmetic", _ASSIGNMENTS)):
            if token.text in table and self._is_spaced(i) and before.text != "operator":
                self._add(operator, token.start, token.end, *table[token.text])
        if token.text in _STEPS and before.text != "operator":
            self._add("arithmetic", token.start, token.end, *_STEPS[token.text])
        if token.text == "!" and before.text != "operator":
            self._add("negation", token.start, token.end, "")
        is_prefix = not self._is_spaced(i) and (before.kind == "mark" and before.text not in (")", "]")
                                                or before.text == "return")
        is_destructor = token.text == "~" and before.text in (";", "{", "}", ":", "::", ">")
        if token.text in ("-", "~") and is_prefix and not is_destructor:
            self._add("sign", token.start, token.end, "")
        if token.text == "[":
            self._subscript(i)

    def _subscript(self, i):
        end = self.partner.get(i)
        if end is None or end == i + 1 or end == i + 2 and self.tokens[i + 1].kind == "number":
            return
        if self.tokens[i - 1].kind != "word" and self._text(i - 1) not in (")", "]"):
            return
        # A word before the name makes it a declaration, and a lambda follows no value.
        if self._text(i - 1) in ("return", "case", "delete", "operator"):
            return
        if self.tokens[i - 2].kind == "word" and self._text(i - 2) not in ("return", "case") or self._text(i - 2) == ">":
            return
        inner = self.text[self.tokens[i].end : self.tokens[end].start]
        self._add("offset", self.tokens[i].end, self.tokens[end].start, f"({inner}) + 1", f"({inner}) - 1")

    def _condition(self, i):
        end = self.partner.get(i + 1)
        if self._text(i + 1) == "(" and end is not None:
            self._negate(i + 2, end)

    def _loop(self, i):
        end = self.partner.get(i + 1)
        if self._text(i + 1) != "(" or end is None:
            return
        parts = []
        k = i + 2
        while k < end:
            if self._text(k) == ";":
                parts.append(k)
            k = self.partner[k] + 1 if self._text(k) in ("(", "[", "{") and k in self.partner else k + 1
        if len(parts) == 2 and parts[1] > parts[0] + 1:
            self._negate(parts[0] + 1, parts[1])

    def _negate(self, first, end):
        """Negates the condition of the tokens [first, end), unless it declares something."""
        if any(self._text(k) == "=" for k in range(first, end)) or first >= end:
            return
        if end - first == 2 and self._text(first) == "!" or end - first == 3 and self._text(first + 1) in ("==", "!="):
            return  # What the operator itself becomes says the same.
        start, stop = self.tokens[first].start, self.tokens[end - 1].end
        self._add("condition", start, stop, f"!({self.text[start:stop]})")

    def _statement(self, i):
        """Drops the simple statement that begins here."""
        before = self._text(i - 1) if i else ""
        after_head = before == ")" and self._text(self.partner.get(i - 1, 0) - 1) in ("if", "while", "for")
        if before not in (";", "{", "}", "else", "do", ":") and not after_head:
            return
        if i in self._in_heads:
            return
        if before == ":" and not self._is_label(i - 1):
            return
        token = self.tokens[i]
        if token.text in _NOT_STATEMENTS or (token.kind != "word" and token.text not in ("++", "--", "*", "(")):
            return
        end = self._statement_end(i)
        if end is None:
            return
        if token.text in ("return", "throw", "break", "continue"):
            if token.text == "return" and end > i + 2 and self._text(i + 1) != "{":
                self._add("result", self.tokens[i + 1].start, self.tokens[end - 1].end, "{}")
            if not self._is_guarded(i):
                return
        elif self._text(end - 1) in ("delete", "default"):
            return
        elif token.text != "delete" and not self._is_expression(i, end):
            return
        self._add("statement", token.start, self.tokens[end].end, ";")

    def _is_label(self, colon):
        """Whether the colon ends a label of a `switch`, and is not one of an operator or a list of bases."""
        k = colon
        while k > 0 and self._text(k) not in (";", "{", "}", "?"):
            if self._text(k) in ("case", "default"):
                return True
            k -= 1
        return False

    def _statement_end(self, i):
        k = i
        while k < len(self.tokens):
            text = self._text(k)
            if text == ";":
                return k
            if text in (")", "]", "}") or (text == ":" and k > i):
                return None
            if text == "{" and self._text(k - 1) not in ("=", "return", ">"):
                return None
            k = self.partner.get(k, k) + 1 if text in ("(", "[", "{") else k + 1
        return None

    def _is_guarded(self, i):
        """Whether the statement is the body of an `if`, alone or in braces."""
        head = i - 1
        if self._text(head) != ")":
            depth = 0
            while head >= 0:
                text = self._text(head)
                if text == "}":
                    head = self.partner.get(head, head)
                elif text == "{":
                    break
                head -= 1
            head -= 1
        opening = self.partner.get(head)
        return self._text(head) == ")" and opening is not None and self._text(opening - 1) == "if"

    def _is_expression(self, i, end):
        """Whether the statement is a call or an assignment and no declaration, which names something after a type."""
        k = i
        while self._text(k) in ("++", "--", "*", "("):
            k += 1
        while k < end and self.tokens[k].kind == "word":
            k = self._after_template_arguments(k + 1)
            if self._text(k) != "::":
                break
            k += 1
        if self._text(k) in ("*", "&", "&&"):
            k += 1
        return k < end and self.tokens[k].kind == "mark"

    def _after_template_arguments(self, i):
        """Past the arguments of a template, which the formatter writes without blanks before them."""
        if self._text(i) != "<" or self._is_spaced(i):
            return i
        depth = 0
        for k in range(i, len(self.tokens)):
            depth += {"<": 1, ">": -1, ">>": -2}.get(self._text(k), 0)
            if depth <= 0:
                return k + 1
        return i
