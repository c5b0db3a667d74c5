#!/usr/bin/env python3
"""Breaks the library in many small ways and sees whether the tests notice.

A fixed seed chooses the places: 300 spread over the folders of src/vorlund by their lines, and 100 more in each of the
RIFF decoder, the search for decoders and the plug-in loader. Each change is compiled alone, into the release build, and
meets the tests of its area and those that run the command-line program; a test that takes longer than 60 s counts as
failed. Results are kept in tests/mutation/results.tsv, so a run that was ended goes on where it was. What survives
needs a test, or a line in tests/mutation/equivalent.tsv that says why nobody can notice the change.
"""
import argparse
import signal
import sys
import threading
import time
from pathlib import Path

from mutation.build import Build, BuildError, Workplace
from mutation.places import SourceFile
from mutation.plan import GROUPS, make_plan
from mutation.records import Records, report
from mutation.trial import Suites, Trial

ROOT = Path(__file__).resolve().parent.parent


def main():
    arguments = read_arguments()
    records = Records(ROOT / "tests" / "mutation")
    build = Build(ROOT)
    try:
        if arguments.no_build:
            build.read()
        else:
            build.make()
    except BuildError as error:
        sys.exit(f"mutate: {error}")
    sources = {name: SourceFile(name, (ROOT / name).read_text()) for name in build.sources()}
    known = {place.key: place for source in sources.values() for place in source.places}
    plan = make_plan(sources, records.is_usable)
    if arguments.show:
        show(known, records, arguments.show)
        return
    if not arguments.report:
        Session(arguments, build, sources, records).run()
        plan = make_plan(sources, records.is_usable)
        records.rewrite(known)
    wanted = {title: places for title, places in plan.items() if is_wanted(arguments, title)}
    sys.exit(0 if report(wanted, records, GROUPS, print) else 1)


def read_arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--areas", nargs="+", default=[], metavar="AREA",
                        help=f"only these: {', '.join(GROUPS)}, or folders of the library such as data/file")
    parser.add_argument("--report", action="store_true", help="only print what is known; fails below the limits")
    parser.add_argument("--survivors", action="store_true", help="try again what has survived and is not equivalent")
    parser.add_argument("--changed", action="store_true", help="try again what was tried on another state of its file")
    parser.add_argument("--fresh", action="store_true", help="try everything again")
    parser.add_argument("--jobs", type=int, default=2, metavar="N", help="how many at a time (2)")
    parser.add_argument("--minutes", type=float, default=0, metavar="N", help="begin nothing new after so long")
    parser.add_argument("--show", nargs="+", default=[], metavar="KEY", help="print these places and end")
    parser.add_argument("--no-build", action="store_true", help="take the build in build/mutate as it is")
    return parser.parse_args()


def is_wanted(arguments, title):
    return not arguments.areas or title.removeprefix("src/vorlund/") in arguments.areas


def show(known, records, keys):
    for key in keys:
        place = known.get(key)
        if not place:
            print(f"{key}: no such place now")
            continue
        print(f"{key} {place.file}:{place.line} {place.operator} {records.verdict(place)}")
        print(f"- {place.before}\n+ {place.after}")


class Session:
    """One run: workers take the planned places one after the other."""

    def __init__(self, arguments, build, sources, records):
        self.arguments = arguments
        self.build = build
        self.sources = sources
        self.records = records
        self.lock = threading.Lock()
        self.tried = set()  # in this run
        self.end = time.monotonic() + 60 * arguments.minutes if arguments.minutes else None
        self.problem = None

    def run(self):
        scratch = self.build.folder
        suites = Suites(scratch / "bin", scratch)
        places = [Workplace(self.build, number) for number in range(self.arguments.jobs)]
        if not self.next_place():
            return
        trials = [Trial(place, suites) for place in places]
        for number in (signal.SIGINT, signal.SIGTERM):
            signal.signal(number, self.stop)
        try:
            for trial in trials:
                trial.start_display()
            self.check_original(trials[0])
            workers = [threading.Thread(target=self.work, args=(trial,)) for trial in trials]
            for worker in workers:
                worker.start()
            for worker in workers:
                worker.join()
        finally:
            for trial in trials:
                trial.stop_display()
        if self.problem:
            sys.exit(f"mutate: {self.problem}")

    def stop(self, *_):
        """Lets the workers finish what they have begun."""
        self.end = 0

    def check_original(self, trial):
        """A failure of the unchanged library would count every mutant as caught."""
        trial.place.set_up()
        wanted = {}
        for place in self.pending():
            for program, names in trial.suites.steps(place.file):
                wanted.setdefault(program, set()).update(names)
        for program, names in wanted.items():
            outcome = trial.run_program(program, ":".join(f"{name}.*" for name in sorted(names)))
            if outcome.kind != "passed":
                sys.exit(f"mutate: {outcome.test} of {program} fails on the unchanged library")

    def pending(self):
        plan = make_plan(self.sources, self.records.is_usable)
        places = [place for title, found in plan.items() if is_wanted(self.arguments, title) for place in found]
        return [place for place in places if place.key not in self.tried and self.is_open(place)]

    def is_open(self, place):
        verdict = self.records.verdict(place)
        if self.arguments.fresh or verdict == "untried":
            return True
        if self.arguments.survivors and verdict == "survived":
            return True
        return self.arguments.changed and self.records.results[place.key].code != self.sources[place.file].digest()

    def next_place(self):
        return next(iter(self.pending()), None)

    def is_over(self):
        return self.problem or self.end is not None and time.monotonic() > self.end

    def take(self):
        """The next place to try; none is tried twice."""
        with self.lock:
            place = None if self.is_over() else self.next_place()
            if place:
                self.tried.add(place.key)
            return place

    def work(self, trial):
        try:
            while (place := self.take()) is not None:
                self.try_place(trial, place)
        except Exception as error:  # The other worker would go on for hours.
            self.problem = f"{type(error).__name__}: {error}"

    def try_place(self, trial, place):
        begun = time.monotonic()
        source = self.sources[place.file]
        made = trial.place.set_up(place, source.text)
        outcome, test = made, ""
        if made == "ok":
            found = trial.run(place.file)
            outcome = {"passed": "survived", "failed": "caught"}.get(found.kind, found.kind)
            test = found.test
        seconds = time.monotonic() - begun
        with self.lock:
            self.records.add(place, outcome, test, seconds, source.digest())
            print(f"{outcome:12} {place.file}:{place.line} {place.operator} {test} {seconds:.1f} s", flush=True)


if __name__ == "__main__":
    main()
