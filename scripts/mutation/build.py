"""The build that is changed: the project's release build, one mutant of it at a time beside the original."""
import filecmp
import json
import os
import re
import shlex
import shutil
import subprocess
from pathlib import Path


class BuildError(Exception):
    pass


def run(command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options)


class Build:
    """The original: configured and built by the project's own means in a folder of its own."""

    def __init__(self, root):
        self.root = Path(root)
        self.folder = self.root / "build" / "mutate"

    def make(self):
        options = ["-DVORLUND_BUILD_FUZZ=OFF", "-DVORLUND_BUILD_EXAMPLES=OFF", "-DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON"]
        self._do(["cmake", "--preset", "linux", "-B", str(self.folder), *options])
        self._do(["cmake", "--build", str(self.folder)])
        self.read()

    def _do(self, command):
        log = self.folder.parent / "mutate.log"
        log.parent.mkdir(parents=True, exist_ok=True)
        done = run(command, cwd=self.root)
        log.write_text(done.stdout)
        if done.returncode:
            raise BuildError(f"{command[0]} fails, see {log}")

    def read(self):
        commands = json.loads((self.folder / "compile_commands.json").read_text())
        self.compile = {}  # object, relative to the folder: its command
        for entry in commands:
            words = shlex.split(entry["command"])
            output = words[words.index("-o") + 1]
            self.compile[output] = [word for word in words if word not in ("ccache", "-Werror")]
        self.objects_of = self._dependants()
        self.link_library, self.library = self._link_command(r"-shared .*-o (bin/libvorlund\.so\S*) ", "bin/libvorlund.so")
        self.link_internal, _ = self._link_command(r"-o (bin/vorlund_internal_tests) ", "bin/vorlund_internal_tests")

    def _dependants(self):
        """For each file of the library the objects that come from it, also of the tests that look inside."""
        listing = run(["ninja", "-C", str(self.folder), "-t", "deps"]).stdout
        found = {}
        target = None
        for line in listing.splitlines():
            head = re.match(r"(\S+): #deps", line)
            if head:
                target = head.group(1) if re.search(r"vorlund_objects\.dir|vorlund_internal_tests\.dir", line) else None
            elif target and line.strip():
                path = os.path.normpath(self.folder / line.strip())
                if path.startswith(f"{self.root}/src/"):
                    found.setdefault(os.path.relpath(path, self.root), []).append(target)
        return found

    def _link_command(self, pattern, target):
        for line in run(["ninja", "-C", str(self.folder), "-t", "commands", target]).stdout.splitlines():
            found = re.search(pattern, line)
            if found:
                command = line.removeprefix(": && ").split(" && ")[0]
                return shlex.split(command), found.group(1)
        raise BuildError(f"no command links {target}")

    def sources(self):
        """The files of the library that this build compiles."""
        return sorted(name for name in self.objects_of
                      if name.startswith("src/vorlund/") and name.endswith((".cpp", ".h")))


class Workplace:
    """Where one mutant after the other is made: a copy of the sources and of the built programs."""

    def __init__(self, build, number):
        self.build = build
        self.folder = build.folder / f"place{number}"
        if self.folder.exists():
            shutil.rmtree(self.folder)
        self.bin = self.folder / "bin"
        self.objects = self.folder / "objects"
        self.temporary = self.folder / "tmp"
        shutil.copytree(build.root / "src", self.folder / "src")
        shutil.copytree(build.folder / "bin", self.bin, symlinks=True)
        self.libraries = [path for path in self.bin.rglob("libvorlund.so*") if not path.is_symlink()]
        self.changed = {}
        self.internal_is_linked = False

    def set_up(self, place=None, text=None):
        """Compiles the mutant and puts it into the shared library. Returns "ok", "uncompilable", or "same" when the
        compiler makes the same code of it. Without a place: the original."""
        self.changed = {}
        self.internal_is_linked = False
        shutil.rmtree(self.objects, ignore_errors=True)
        self.objects.mkdir()
        if place is None:
            for library in self.libraries:
                self._replace(self.build.folder / self.build.library, library)
            return "ok"
        target = self.folder / place.file
        target.write_text(place.apply(text))
        try:
            objects = self.build.objects_of[place.file]
            own = [name for name in objects if "vorlund_objects.dir" in name]
            for name in own + [name for name in objects if name not in own]:
                if name not in own and not self.changed:
                    break
                made = self.objects / f"{len(self.changed)}.o"
                if not self._compile(name, made):
                    return "uncompilable"
                if name not in own or not filecmp.cmp(self.build.folder / name, made, shallow=False):
                    self.changed[name] = made
        finally:
            target.write_text(text)
        if not self.changed:
            return "same"
        if not self._link(self.build.link_library, self.build.library, self.libraries[0]):
            return "uncompilable"
        for library in self.libraries[1:]:
            self._replace(self.libraries[0], library)
        return "ok"

    def link_internal(self):
        """Puts the mutant into the tests that look inside, too."""
        program = self.bin / "vorlund_internal_tests"
        if self.internal_is_linked:
            return True
        self.internal_is_linked = True
        if not self.changed:
            self._replace(self.build.folder / "bin/vorlund_internal_tests", program)
            return True
        # An object before the archive takes the place of the archive's own.
        own = [str(path) for name, path in self.changed.items() if "vorlund_objects.dir" in name]
        return self._link(self.build.link_internal, "bin/vorlund_internal_tests", program, own)

    def _replace(self, original, path):
        path.unlink(missing_ok=True)
        shutil.copy2(original, path)

    def _compile(self, original, made):
        root, mine = f"{self.build.root}/src", f"{self.folder}/src"
        words = [re.sub(rf"(^|-I){re.escape(root)}(/|$)", rf"\1{mine}\2", word) for word in self.build.compile[original]]
        words[words.index("-o") + 1] = str(made)
        return run([*words, "-w"], cwd=self.build.folder).returncode == 0

    def _link(self, command, output, path, first=()):
        words = [str(self.changed.get(word, word)) for word in command]
        at = words.index("-o")
        words[at + 1 : at + 2] = [str(path), *first]
        if shutil.which("ld.lld"):
            words.append("-fuse-ld=lld")
        path.unlink(missing_ok=True)
        return run(words, cwd=self.build.folder).returncode == 0
