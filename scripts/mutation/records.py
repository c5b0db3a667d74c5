"""What is known of the mutants, kept in the tree, and the sums over it."""
import csv
import os
from typing import NamedTuple

CAUGHT = ("caught", "timeout")
SAME_CODE = "the compiler makes the same code of it"
_FIELDS = ("key", "file", "line", "operator", "before", "after", "outcome", "test", "seconds", "code")


class Result(NamedTuple):
    key: str
    file: str
    line: str
    operator: str
    before: str
    after: str
    outcome: str  # caught, timeout, survived, same (code), uncompilable
    test: str  # that caught it
    seconds: str
    code: str  # the digest of the file as it was tried


class Records:
    """results.tsv, which the tool writes, and equivalent.tsv, which people write: key, file, change, why."""

    def __init__(self, folder):
        self.path = folder / "results.tsv"
        self.results = {}
        if self.path.exists():
            with open(self.path, newline="") as file:
                for row in csv.DictReader(file, delimiter="\t"):
                    self.results[row["key"]] = Result(**row)
        self.equivalent = {}
        reasons = folder / "equivalent.tsv"
        if reasons.exists():
            with open(reasons, newline="") as file:
                for row in csv.DictReader(file, delimiter="\t"):
                    self.equivalent[row["key"]] = row["why"]

    def add(self, place, outcome, test, seconds, code):
        result = Result(place.key, place.file, str(place.line), place.operator, _line(place.before), _line(place.after),
                        outcome, test, f"{seconds:.1f}", code)
        self.results[place.key] = result
        is_new = not self.path.exists()
        self.path.parent.mkdir(parents=True, exist_ok=True)
        with open(self.path, "a", newline="") as file:
            writer = csv.writer(file, delimiter="\t", lineterminator="\n")
            if is_new:
                writer.writerow(_FIELDS)
            writer.writerow(result)
            file.flush()

    def rewrite(self, known):
        """Writes the file anew in the order of the sources, without the results of places that are gone."""
        rows = [result for key, result in self.results.items() if key in known]
        rows = [row._replace(line=str(known[row.key].line)) for row in rows]
        rows.sort(key=lambda row: (row.file, int(row.line), row.key))
        self.results = {row.key: row for row in rows}
        new = self.path.with_suffix(".new")
        with open(new, "w", newline="") as file:
            writer = csv.writer(file, delimiter="\t", lineterminator="\n")
            writer.writerow(_FIELDS)
            writer.writerows(rows)
        os.replace(new, self.path)

    def is_usable(self, place):
        result = self.results.get(place.key)
        return not result or result.outcome != "uncompilable"

    def verdict(self, place):
        """caught, timeout, survived, equivalent or untried."""
        result = self.results.get(place.key)
        if not result:
            return "untried"
        if result.outcome == "same" or result.outcome == "survived" and place.key in self.equivalent:
            return "equivalent"
        return result.outcome


def _line(text):
    return " ".join(text.split())


def report(plan, records, groups, write):
    """The table of folders and groups, every survivor, and whether the limits are kept."""
    names = ("all", "caught", "timeout", "survived", "equivalent", "untried")
    write(f"{'':26}" + "".join(f"{name:>11}" for name in names) + f"{'rate':>9}{'equiv.':>9}")
    whole = dict.fromkeys(names, 0)
    spread = dict.fromkeys(names, 0)
    kept = True
    for title, places in plan.items():
        sums = dict.fromkeys(names, 0)
        for place in places:
            sums["all"] += 1
            sums[records.verdict(place)] += 1
        for name in names:
            whole[name] += sums[name]
            if title not in groups:
                spread[name] += sums[name]
        kept &= title not in groups or _is_kept(sums, 100)
        _row(title.removeprefix("src/vorlund/"), sums, names, write)
    _row("spread over all", spread, names, write)
    _row("all", whole, names, write)
    kept &= _is_kept(spread, 95) and _is_kept(whole, 95)
    for wanted, title in (("survived", "Survivors:"), ("equivalent", "Equivalent:")):
        found = sorted({place for places in plan.values() for place in places if records.verdict(place) == wanted},
                       key=lambda place: (place.file, place.line))
        if found:
            write(f"\n{title}")
        for place in found:
            why = f": {records.equivalent.get(place.key, SAME_CODE)}" if wanted == "equivalent" else ""
            write(f"  {place.key} {place.file}:{place.line} {place.operator} "
                  f"`{_line(place.before)}` -> `{_line(place.after)}`{why}")
    bad = sum(result.outcome == "uncompilable" for result in records.results.values())
    write(f"\n{bad} places that do not compile gave way to the next ones of the seed.")
    write("The limits are kept." if kept else
          "The limits are NOT kept: 95 % caught, 100 % in the three groups, at most 15 % equivalent, none untried.")
    return kept


def _row(title, sums, names, write):
    judged = sums["all"] - sums["equivalent"] - sums["untried"]
    caught = sums["caught"] + sums["timeout"]
    rate = f"{100 * caught / judged:8.1f}%" if judged else f"{'-':>9}"
    equivalent = f"{100 * sums['equivalent'] / sums['all']:8.1f}%" if sums["all"] else f"{'-':>9}"
    write(f"{title:26}" + "".join(f"{sums[name]:>11}" for name in names) + rate + equivalent)


def _is_kept(sums, percent):
    caught = sums["caught"] + sums["timeout"]
    return (sums["untried"] == 0 and 100 * caught >= percent * (sums["all"] - sums["equivalent"])
            and 100 * sums["equivalent"] <= 15 * sums["all"])
