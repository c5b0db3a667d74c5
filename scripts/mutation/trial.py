"""Tests against one mutant: what is near first, up to the first failure."""
import json
import os
import re
import resource
import select
import shutil
import signal
import subprocess
import time

LIMIT = 60  # seconds for one test; one that takes longer has noticed something
_WHOLE_LIMIT = 900  # for one program, however slow the machine
_MEMORY = 6 << 30
_RUN = re.compile(rb"^\[ RUN      \] (\S+)")
_FAILED = re.compile(rb"^\[  FAILED  \] (\S+?),? ")
PROGRAMS = ("vorlund_tests", "vorlund_internal_tests")


class Outcome:
    def __init__(self, kind, test=""):
        self.kind = kind  # passed, failed, timeout
        self.test = test


class Suites:
    """Which suites lie in which folder of the tests."""

    def __init__(self, folder, scratch):
        self.of = {}  # (program, folder): suites
        self.word = {}  # suite: the first word of its file's name
        for program in PROGRAMS:
            listing = scratch / f"{program}.json"
            subprocess.run([str(folder / program), "--gtest_list_tests", f"--gtest_output=json:{listing}"],
                           stdout=subprocess.DEVNULL, check=True)
            for suite in json.loads(listing.read_text())["testsuites"]:
                for test in suite["testsuite"]:
                    path, _, file = test["file"][test["file"].rindex("tests/") :].rpartition("/")
                    self.word[program, suite["name"]] = _first_word(file)
                    self.of.setdefault((program, path), set()).add(suite["name"])

    def steps(self, source):
        """The runs for a file of the library, as (program, its suites): those of its folder from outside and from inside,
        with what lies above it in the same area, and of these first what is named alike; then the rest of the area, then
        the command-line program."""
        path, _, file = source.removeprefix("src/vorlund/").rpartition("/")
        folder = "tests/" + path
        area = "/".join(folder.split("/")[:2])
        near = {path for _, path in self.of if path.startswith(area) and (folder + "/").startswith(path + "/")}
        rest = {path for _, path in self.of if (path + "/").startswith(area + "/")} - near
        shared = PROGRAMS[0]
        steps = []
        for is_alike in (True, False):
            for program in PROGRAMS:
                steps.append((program, [name for name in self._names(program, near)
                                        if (self.word[program, name] == _first_word(file)) == is_alike]))
        steps += [(shared, self._names(shared, rest)), (shared, self._names(shared, {"tests/cli"}))]
        return [(program, names) for program, names in steps if names]

    def _names(self, program, folders):
        return sorted(set().union(*(self.of.get((program, path), set()) for path in folders)))


def _first_word(name):
    return re.match(r"[A-Z]?[a-z0-9]*", name).group()


class Trial:
    """Runs test programs in a workplace."""

    def __init__(self, place, suites):
        self.place = place
        self.suites = suites
        self.display = None

    def start_display(self):
        if not shutil.which("Xvfb"):
            return
        read, write = os.pipe()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-noreset", "-screen", "0", "1024x768x24",
                                        "-nolisten", "tcp"], pass_fds=[write], stdout=subprocess.DEVNULL,
                                       stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as answer:
            self.display = answer.readline().strip()

    def stop_display(self):
        if self.display is not None:
            self.server.terminate()
            self.server.wait()
            self.display = None

    def run(self, source):
        """The first failure of the tests for a file, or "passed". Only what fails twice has failed."""
        for program, names in self.suites.steps(source):
            pattern = ":".join(f"{name}.*" for name in names)
            outcome = self.run_program(program, pattern)
            if outcome.kind == "failed":
                again = self.run_program(program, outcome.test) if outcome.test else outcome
                if again.kind == "passed":
                    again = self.run_program(program, pattern)
                outcome = again
            if outcome.kind != "passed":
                return outcome
        return Outcome("passed")

    def run_program(self, program, pattern):
        if program == "vorlund_internal_tests" and not self.place.link_internal():
            return Outcome("failed", "linking the internal tests")
        shutil.rmtree(self.place.temporary, ignore_errors=True)
        self.place.temporary.mkdir()
        # What was never written, or is freed, is no zero by chance.
        environment = dict(os.environ, TMPDIR=str(self.place.temporary), LC_ALL="C.UTF-8", MALLOC_PERTURB_="165")
        environment.pop("DISPLAY", None)
        if self.display:
            environment["DISPLAY"] = f":{self.display}"
        process = subprocess.Popen(
            [str(self.place.bin / program), f"--gtest_filter={pattern}", "--gtest_fail_fast"], cwd=self.place.temporary,
            env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            start_new_session=True, preexec_fn=_set_limits)
        try:
            return self._watch(process)
        finally:
            _end_session(process.pid)
            process.stdout.close()
            process.wait()

    def _watch(self, process):
        test, failed = b"", b""
        begun = since = time.monotonic()
        rest = b""
        output = process.stdout.fileno()
        while True:
            now = time.monotonic()
            if now - since > LIMIT or now - begun > _WHOLE_LIMIT:
                return Outcome("timeout", test.decode())
            if not select.select([output], [], [], 1)[0]:
                if process.poll() is not None:
                    break  # A child that lives on holds the other end.
                continue
            chunk = os.read(output, 65536)
            if not chunk:
                break
            *lines, rest = (rest + chunk).split(b"\n")
            for line in lines:
                found = _RUN.match(line)
                if found:
                    test, since = found.group(1), time.monotonic()
                found = _FAILED.match(line)
                if found and not failed:
                    failed = found.group(1)
        # A program that has closed its output may still hang.
        try:
            status = process.wait(timeout=LIMIT)
        except subprocess.TimeoutExpired:
            return Outcome("timeout", test.decode())
        if status == 0 and not failed:
            return Outcome("passed")
        return Outcome("failed", (failed or test).decode())


def _set_limits():
    resource.setrlimit(resource.RLIMIT_AS, (_MEMORY, _MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_FSIZE, (16 << 30, 16 << 30))


def _end_session(leader):
    """Ends the processes that the program leaves behind, and itself."""
    for name in os.listdir("/proc"):
        if name.isdigit():
            try:
                if os.getsid(int(name)) == leader:
                    os.kill(int(name), signal.SIGKILL)
            except (ProcessLookupError, PermissionError):
                pass
