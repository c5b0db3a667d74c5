#!/usr/bin/env python3
"""Every failure record of the sources against docs/failures.md, in both directions. Run by ./test; needs no build.

A failure is a record (`TFailure`: method, file, line and reason) and the exception type of the expression that raises
it. The type is found by following each record from `Raise<Type>(record)` back through the functions that take records
as parameters, the tables that hold them, and the templates that get a table as `kFailures`.

Nothing is passed over in silence. It is an error when a place that says `TFailure` is none of the forms below, when a
`Raise` leads to no record, and when nothing raises a record.

    check_failures.py           compares; exit status 1 on any difference or error
    check_failures.py --rows    prints the rows as they belong into the page
"""
import pathlib
import re
import sys
from collections import defaultdict

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGE = "docs/failures.md"
TOPS = ("include", "src", "plugins")

# Whatever an argument says: the last part tells a member or an element, if any.
NAME = re.compile(r"(?<![\w.>:])([A-Za-z_]\w*)(?:\s*(?:\.|->)\s*([A-Za-z_]\w*)|(\s*\[))?")
LITERALS = re.compile(r'VRL_L\(((?:\s*"(?:[^"\\]|\\.)*")+)\s*\)')
LITERAL = re.compile(r'"((?:[^"\\]|\\.)*)"')
# Stands for the exception type that a call names as its template argument.
NAMED_BY_CALL = object()

errors = []


class Source:
    """The text of a file without comments, which keep their length so that line numbers stay right."""

    def __init__(self, path):
        self.path = path
        self.is_header = path.endswith(".h")
        blank = lambda match: match[0] if match[0][0] in "\"'" else re.sub(r"[^\n]", " ", match[0])
        text = (ROOT / path).read_text()
        self.text = re.sub(r"//[^\n]*|/\*.*?\*/|\"(?:[^\"\\\n]|\\.)*\"|'(?:[^'\\\n]|\\.)+'", blank, text, flags=re.S)
        self.understood = set()

    def error(self, position, what):
        errors.append(f"{self.path}:{self.text.count(chr(10), 0, position) + 1}: {what}")


def end_of(text, start):
    """The position behind the bracket that closes the one at `start`."""
    closing = {"(": ")", "{": "}", "[": "]"}[text[start]]
    depth, position = 0, start
    while position < len(text):
        if text[position] == '"':
            position = LITERAL.match(text, position).end()
            continue
        depth += {text[start]: 1, closing: -1}.get(text[position], 0)
        position += 1
        if depth == 0:
            return position
    raise ValueError("unbalanced " + text[start])


def split(text, separator=","):
    """The parts of a list; separators inside brackets and literals do not count."""
    parts, depth, start, position = [], 0, 0, 0
    while position < len(text):
        letter = text[position]
        if letter == '"':
            position = LITERAL.match(text, position).end()
            continue
        # Only the brackets of templates are angles here: "->" and comparisons are not.
        if letter in "({[" or letter == "<" and re.match(r"\w", text[position - 1 : position] or " "):
            depth += 1
        elif letter in ")}]" or letter == ">" and depth and text[position - 1] != "-":
            depth -= 1
        elif letter == separator and depth == 0:
            parts.append(text[start:position].strip())
            start = position + 1
        position += 1
    parts.append(text[start:].strip())
    return [part for part in parts if part]


class Struct:
    """A table of records, or a struct of references to them: its members in order, the base's first."""

    def __init__(self, source, base, members, failures):
        self.source, self.base, self.members, self.failures = source, base, members, failures

    def all_failures(self):
        return (self.base.all_failures() if self.base else []) + self.failures

    def descends_from_file(self, path):
        return self.source.path == path or bool(self.base) and self.base.descends_from_file(path)


class Record:
    def __init__(self, source, position, name, fields):
        self.source, self.position, self.name, self.fields = source, position, name, fields
        self.types = set()


class Function:
    """A function that takes failures, and what it raises from them: (parameter, member) to exception types."""

    def __init__(self, source, name, parameters, body):
        self.source, self.name, self.parameters, self.body = source, name, parameters, body
        self.raises = defaultdict(set)


def read_sources():
    paths = (file for top in TOPS for file in (ROOT / top).rglob("*") if file.suffix in (".h", ".cpp", ".inc"))
    return [Source(str(path.relative_to(ROOT))) for path in sorted(paths)]


class Program:
    def __init__(self, sources):
        self.sources = sources
        self.structs = {}
        self.texts = {}
        self.records = []
        # (path, name) to a record, to a list of records, or to {member: record}; and the type of each table.
        self.named = {}
        self.table_types = {}
        self.functions = []
        self.types = set(re.findall(r"X\(\d+, (C\w+),", self.source("include/vorlund/Exception.h").text))
        for step in (self.read_structs, self.read_texts, self.read_records, self.read_functions, self.account):
            for source in sources:
                step(source)
        self.shared = self.shared_names()
        self.follow()

    def source(self, path):
        return next(source for source in self.sources if source.path == path)

    # Structs with records.

    def read_structs(self, source):
        for match in re.finditer(r"\bstruct (T\w+)(?:\s*:\s*(T\w+))?\s*\{", source.text):
            if match[1] == "TFailure":
                source.understood.add(match.start() + len("struct "))
                continue
            body = source.text[match.end() : end_of(source.text, match.end() - 1) - 1]
            if not re.search(r"\bTFailure\b", body):
                continue
            base = self.find_struct(source, match[2]) if match[2] else None
            members, failures = [], []
            for part in split(body, ";"):
                names = re.findall(r"(\w+)\s*(?:,|$)", part)
                members += names
                if re.match(r"(const\s+)?TFailure\b", part):
                    failures += names
            for token in re.finditer(r"\b(?:const\s+)?TFailure\b&?\s*\w+\s*[,;]", body):
                source.understood.add(match.end() + token.start() + token[0].index("TFailure"))
            self.structs[source.path, match[1]] = Struct(source, base, members, failures)

    def find_struct(self, source, name):
        own = self.structs.get((source.path, name))
        return own or next((s for (path, n), s in self.structs.items() if n == name and s.source.is_header), None)

    # Records and tables of them.

    def read_texts(self, source):
        for match in re.finditer(r"\bconst wchar\*\s+(?:const\s+)?(k\w+)\s*=\s*(VRL_L\([^;]*\));", source.text):
            self.texts[source.path, match[1]] = self.text_of(source, match[2])

    def text_of(self, source, expression):
        literals = LITERALS.fullmatch(expression.strip())
        if literals:
            return "".join(LITERAL.findall(literals[1]))
        own = self.texts.get((source.path, expression))
        shared = [text for (path, name), text in self.texts.items() if name == expression and path.endswith(".h")]
        return own if own is not None else shared[0] if len(shared) == 1 else None

    def read_records(self, source):
        definition = r"\bconst(?:expr|init const)? (T\w+)\s+(k\w+)\s*(\[\])?\s*(?:=\s*)?\{"
        for match in re.finditer(definition, source.text):
            kind, name = match[1], match[2]
            struct = self.find_struct(source, kind)
            if kind != "TFailure" and not struct:
                continue
            start = match.end() - 1
            value = source.text[start : end_of(source.text, start)]
            source.understood.add(match.start(1))
            if kind != "TFailure":
                self.named[source.path, name] = self.table(source, start, name, struct, value)
                self.table_types[source.path, name] = struct
            elif match[3]:
                rows = split(value[1:-1])
                self.named[source.path, name] = [self.record(source, start, name, row) for row in rows]
            else:
                self.named[source.path, name] = self.record(source, start, name, value)

    def table(self, source, start, name, struct, value):
        """The members of a table by name; members are in order, or each names itself, the base's in braces."""
        items = split(value[1:-1])
        rows = {}
        if struct.base:
            rows = self.table(source, start, name, struct.base, items.pop(0)) if items else {}
        for i, item in enumerate(items):
            designated = re.match(r"\.(\w+)\s*=?\s*(\{.*)", item, re.S)
            if not designated and i >= len(struct.members):
                source.error(start, f"{name} has more rows than its type has members")
                break
            member, row = (designated[1], designated[2]) if designated else (struct.members[i], item)
            if member in struct.failures:
                rows[member] = self.record(source, start, f"{name}.{member}", row)
        for member in struct.all_failures():
            if member not in rows:
                source.error(start, f"{name} gives no record to {member}")
        return rows

    def record(self, source, start, name, value):
        parts = split(value.strip()[1:-1])
        texts = [self.text_of(source, part) for part in parts]
        fields = None
        if len(parts) == 4 and re.fullmatch(r"\d+", parts[2]) and None not in (texts[0], texts[1], texts[3]):
            fields = (texts[0], texts[1], int(parts[2]), texts[3])
        else:
            source.error(start, f"the record {name} cannot be read: {' '.join(value.split())}")
        record = Record(source, start, name, fields)
        self.records.append(record)
        return record

    # Functions that take records.

    def failure_kind(self, source, parameter):
        """(type, name) when a parameter is a reference to a record or to a struct that holds some."""
        match = re.fullmatch(r"const (?:struct )?(T\w+)&\s*(\w+)", parameter)
        return match if match and (match[1] == "TFailure" or self.find_struct(source, match[1])) else None

    def read_functions(self, source):
        for match in re.finditer(r"\b(\w+)\s*\(", source.text):
            end = end_of(source.text, match.end() - 1)
            inside = source.text[match.end() : end - 1]
            if not re.search(r"\bconst (?:struct )?T\w+&", inside) or "{" in inside:
                continue
            parameters = {}
            for i, parameter in enumerate(split(inside)):
                if kind := self.failure_kind(source, parameter):
                    parameters[kind[2]] = i
            if not parameters:
                continue
            for token in re.finditer(r"\bTFailure\b", inside):
                source.understood.add(match.end() + token.start())
            after = re.compile(r"\s*(?:const|noexcept|override|final|\s)*\{").match(source.text, end)
            body = range(after.end() - 1, end_of(source.text, after.end() - 1)) if after else None
            self.functions.append(Function(source, match[1], parameters, body))

    def account(self, source):
        for match in re.finditer(r"\bstruct TFailure;|\bextern const TFailure k\w+;", source.text):
            source.understood.add(match.start() + match[0].index("TFailure"))
        for match in re.finditer(r"\bTFailure\b", source.text):
            if match.start() not in source.understood:
                source.error(match.start(), "a TFailure in a form that this script does not know")
        # CStdException is made of an exception that had one.
        for match in re.finditer(r"\bthrow\s+(?:vorlund::)?C(?!Std)\w*Exception\b", source.text):
            source.error(match.start(), "an exception without a record")

    # From the places that raise back to the records.

    def shared_names(self):
        """What other files can see by name alone: the definitions that are the only ones of their name."""
        count = defaultdict(list)
        for path, name in self.named:
            count[name].append(path)
        return {name: paths[0] for name, paths in count.items() if len(paths) == 1}

    def follow(self):
        sinks = defaultdict(list)
        declared = {(f.name, index) for f in self.functions if f.source.is_header for index in f.parameters.values()}
        for function in self.functions:
            if function.body and function.name != "Raise":
                sinks[function.name].append(function)
        names = "|".join(["Raise", *sinks])
        calls = []
        for source in self.sources:
            for match in re.finditer(rf"(?<![\w])({names})\s*(?:<([^;(){{}}]*?)>)?\s*\(", source.text):
                end = end_of(source.text, match.end() - 1)
                arguments = split(source.text[match.end() : end - 1])
                if match[1] == "Raise" and (not match[2] or any(a.startswith("const TFailure&") for a in arguments)):
                    continue
                calls.append((source, match.start(), match[1], match[2], arguments))
        for source, position, name, _, arguments in calls:
            if name == "Raise" and not any(True for _ in self.targets(source, position, arguments[0], None)):
                source.error(position, f"Raise({arguments[0]}) leads to no record")
        changed = True
        while changed:
            changed = False
            for source, position, name, template, arguments in calls:
                for index, member, types in self.sinks_of(sinks, declared, source, name):
                    if index >= len(arguments):
                        continue
                    named = split(template)[0].strip() if template else None
                    given = {named if t is NAMED_BY_CALL else t for t in types}
                    for target in self.targets(source, position, arguments[index], member):
                        changed |= self.add(source, position, target, given)

    def sinks_of(self, sinks, declared, source, name):
        if name == "Raise":
            return [(0, None, {NAMED_BY_CALL})]
        found = []
        for function in sinks[name]:
            for (parameter, member), types in list(function.raises.items()):
                index = function.parameters[parameter]
                if function.source is source or function.source.is_header or (name, index) in declared:
                    found.append((index, member, set(types)))
        return found

    def add(self, source, position, target, types):
        if isinstance(target, Record):
            known = target.types
            for unknown in types - self.types:
                source.error(position, f"{target.name} is raised as {unknown}, which is no exception type")
            types = types & self.types
        else:
            function, key = target
            known = function.raises[key]
            types = {t if t in self.types else NAMED_BY_CALL for t in types}
        if types <= known:
            return False
        known |= types
        return True

    def targets(self, source, position, expression, member):
        """The records, or the parameters of the enclosing function, that an argument names."""
        if expression.startswith("{"):
            # A struct that is made in the call: its members in order.
            for struct in (s for (path, _), s in self.structs.items() if path == source.path and not s.base):
                items = split(expression[1:-1])
                if len(items) == len(struct.members) and member in struct.members:
                    yield from self.targets(source, position, items[struct.members.index(member)], None)
            return
        for name, dotted, _ in NAME.findall(expression):
            wanted = dotted or member
            function = next(
                (f for f in self.functions if f.source is source and f.body and position in f.body and name in f.parameters),
                None,
            )
            if function:
                yield function, (name, wanted)
            elif name == "kFailures" and (source.path, name) not in self.named:
                for key, struct in self.table_types.items():
                    if struct.descends_from_file(source.path) and wanted in self.named[key]:
                        yield self.named[key][wanted]
            else:
                path = source.path if (source.path, name) in self.named else self.shared.get(name)
                value = self.named.get((path, name))
                if isinstance(value, Record):
                    yield value
                elif isinstance(value, list):
                    yield from value
                elif value and wanted in value:
                    yield value[wanted]


def row_of(exception, method, file, line, reason):
    # A blank at the end does not show in a table; the page says which reason has one.
    return " | ".join(("", f"`{exception}`", f"`{method}`", f"`{file}`", str(line), reason.strip(), "")).strip()


def main():
    program = Program(read_sources())
    rows = defaultdict(list)
    for record in program.records:
        if record.fields and not record.types:
            record.source.error(record.position, f"nothing raises {record.name}")
        for exception in sorted(record.types):
            if record.fields:
                rows[re.sub(r"\|\s+\|$", "| |", row_of(exception, *record.fields))].append(record)
    if "--rows" in sys.argv:
        print(*sorted(rows, key=lambda row: (row.split("|")[3], int(row.split("|")[4]), row)), sep="\n")
    page = [line for line in (ROOT / PAGE).read_text().splitlines() if line.startswith("| `C")]
    for row in rows:
        if row not in page:
            errors.append(f"{PAGE}: lacks {row}")
    for row in sorted(set(page)):
        if row not in rows:
            errors.append(f"{PAGE}: no record has {row}")
        if page.count(row) > 1:
            errors.append(f"{PAGE}: has twice {row}")
    print(*errors, sep="\n", file=sys.stderr if "--rows" in sys.argv else sys.stdout)
    if "--rows" not in sys.argv:
        print(f"{len(program.records)} records, {len(rows)} failures, {len(page)} rows, {len(errors)} faults")
    return 1 if errors or not rows else 0


if __name__ == "__main__":
    sys.exit(main())
