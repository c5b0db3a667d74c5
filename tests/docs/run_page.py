"""Does what a page says, as its reader would. One set of rules for all pages:

- A page is done in an empty folder with a home of its own that has `examples` and `build/linux`, or `build/win32`.
- Blocks marked "console" are commands behind "$ ", each with what it prints below it, or nothing when it does not matter. An
  exit code other than 0 is a fault, unless what is printed is a failure that the page tells. A word behind "console" names
  another place to do them ("console windows"): they are not done here, but for those about packages, and those of "win32" with
  a build for it. A row of a table that begins with a command of build/linux/bin is one too.
- A block of another kind whose paragraph before it ends with a colon and names a file of that kind in backticks
  ("Call it `loudest.cpp`") becomes that file. <!-- file loudest.cpp of docs/start-cpp.md --> brings one of another page.
- Any other block marked "cpp" with a `main` is built and run, and prints what the block marked "text" behind it says.
- A block marked "c" with a `main` is built and run in the same way; without one, and without a comment before it, it is a whole
  source that must compile, without warnings; with a comment <!-- c DECLARATIONS --> it is the body of a function.
- Any other block marked "cpp" is a fragment and must compile, as the body of a function. What it uses is declared in a comment
  before it, <!-- cpp DECLARATIONS -->, which readers do not see. With a line "..." in that, the fragment stands there instead.

Two kinds of command would take too long and are stood in for: ./run, by the program that it builds, and the build of the
whole tree, by a configuration and a dry run. So is what installs packages: their names are compared with what ./package
makes and with scripts/setup.sh; ./test --packages installs them. A song as MP3 is made where a command wants one.
"""
import os
import re
import shutil
import subprocess
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
# As in scripts/suites.sh: a hang fails instead of blocking.
LIMIT = 300
BLOCK = re.compile(r"^```(\w+)(?: (\w+))?\n(.*?)^```$|^\| `(build/linux/bin/[^`]+)` \|", re.MULTILINE | re.DOTALL)
# Words behind "console" whose blocks are done here as well; check_packages is part of that.
DONE_HERE = (None, "deb", "clone")
BORROWED = re.compile(r"^<!-- file (\S+) of (\S+) -->$", re.MULTILINE)
HIDDEN = re.compile(r"<!-- (?:cpp|c)\n((?:(?!-->).)*)-->\s*\Z", re.DOTALL)
ENDINGS = {"cpp": ".cpp", "c": ".c", "cmake": "CMakeLists.txt", "python": ".py"}
FAILURE = re.compile(r"Exception: |[\w.]+: Cannot ")


class Sandbox:
    """An empty folder, with what is in it when the page begins."""

    def __init__(self, folder, build):
        self.folder = folder
        self.build = build
        # What the build is for: of a page with blocks for several systems, its own are done.
        self.target = "win32" if (build / "bin/vorlund.dll").exists() else "linux"
        self.faults = 0
        self.commands = 0
        self.environment = dict(os.environ, HOME=str(folder / "home"))
        for name in ("LD_LIBRARY_PATH", "PKG_CONFIG_PATH", "CMAKE_PREFIX_PATH"):
            self.environment.pop(name, None)
        (folder / "home").mkdir()
        (folder / "build").mkdir()
        (folder / "build" / self.target).symlink_to(build)
        (folder / "examples").symlink_to(ROOT / "examples")

    def complain(self, what):
        self.faults += 1
        print("FAULT:", what)

    def run(self, command, folder=None):
        result = subprocess.run(
            ["bash", "-c", command],
            cwd=folder or self.folder,
            env=self.environment,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            stdin=subprocess.DEVNULL,
            text=True,
            timeout=LIMIT,
        )
        return result.stdout.replace("\r\n", "\n"), result.returncode

    def can_show(self):
        return "DISPLAY" in os.environ and any((self.build / "bin/vorlund-plugins").glob("window-output.*"))

    def check_packages(self, names):
        """What an `apt install` names: packages of ours in this version, or some that scripts/setup.sh installs for them."""
        version = re.search(r"project\(Vorlund VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text())[1]
        minor = version.rsplit(".", 1)[0]
        ours = {f"./{name}_{version}_amd64.deb" for name in (f"libvorlund{minor}", "libvorlund-dev", "vorlund")}
        needed = self.run("source scripts/setup.sh && vorlund_packages package-deb", ROOT)[0].split()
        for name in names:
            if name not in ours and name not in needed:
                self.complain(f"apt install {name}: there is no such package of ours, and scripts/setup.sh does not need it")

    def has_song(self):
        """Makes the MP3 that is decoded, once."""
        song = self.folder / "song.mp3"
        if not song.exists() and shutil.which("lame") and (self.build / "bin/vorlund-plugins/sndfile.so").exists():
            self.run(f"lame --quiet {ROOT}/examples/data/strings.wav {song}")
        return song.exists()

    def play(self, command, expected):
        """Runs one command; `expected` is what it prints, or None when the page does not say."""
        if " window" in command and not self.can_show():
            return
        self.commands += 1
        print("$", command)
        if match := re.fullmatch(r"export (.*)", command):
            for name, value in (word.split("=") for word in match[1].split()):
                self.environment[name] = value.replace("$HOME", self.environment["HOME"])
            return
        if match := re.fullmatch(r"sudo apt install (.*)", command):
            self.check_packages(match[1].split())
            return
        if " song.mp3 " in command and not self.has_song():
            print("(left out: no lame, or no plug-in sndfile)")
            return
        command = re.sub(r"^(build/release/bin/)?vorlund ", "build/linux/bin/vorlund ", command)
        if re.match(r"cmake (--preset|-G Ninja -B build/release)", command):
            # The tree that is configured is the real one; its build folder is not.
            tree = self.folder / "configured"
            shutil.rmtree(tree, ignore_errors=True)
            output, status = self.run(f"{command.replace(' -B build/release', '')} -B {tree}", ROOT)
        elif command in ("cmake --build --preset linux", "cmake --build build/release"):
            output, status = self.run(f"cmake --build {self.folder}/configured -- -n", ROOT)
        else:
            command = re.sub(r"^\./run ", "build/linux/bin/vorlund decode ", command)
            output, status = self.run(command)
        # What a command prints is told when it matters; a failure that is told is meant to be one.
        failure_is_told = bool(expected and FAILURE.match(expected))
        if (status != 0) != failure_is_told:
            self.complain(f"{command} ended with {status}:\n{output}")
        elif expected is not None and output != expected:
            self.complain(f"{command} prints\n{output}The page says\n{expected}")

    def compile(self, code, what, options):
        """Compiles a source with the headers of the tree and of the build."""
        source = self.folder / "block.cpp"
        source.write_text(code)
        folders = f"-I{ROOT}/include -I{self.build}/include -I{ROOT}"
        output, status = self.run(f"g++ -std=c++20 {folders} {source} {options}")
        if status != 0:
            self.complain(f"{what} does not compile:\n{output}\n{code}")
        return status == 0

    def compile_c(self, code, what, options):
        """The same for C, strictly."""
        source = self.folder / "block.c"
        source.write_text(code)
        folders = f"-I{ROOT}/bindings/c/include -I{ROOT}/include"
        warnings = "-Wall -Wextra -Werror -Wno-missing-field-initializers -Wno-unused"
        output, status = self.run(f"cc -std=c99 {warnings} {folders} {source} {options}")
        if status != 0:
            self.complain(f"{what} does not compile:\n{output}\n{code}")
        return status == 0

    def play_program(self, code, expected, what, in_c=False):
        self.commands += 1
        print("a program", f"of {code.count(chr(10))} lines")
        libraries = f"-L{self.build}/bin -Wl,-rpath,{self.build}/bin -lvorlund"
        if in_c:
            is_built = self.compile_c(code, what, f"-o block {libraries}-c -lm")
        else:
            is_built = self.compile(code, what, f"-o block {libraries}")
        if not is_built:
            return
        output, status = self.run("./block")
        if status != 0:
            self.complain(f"{what} ended with {status}:\n{output}")
        elif expected is not None and output != expected:
            self.complain(f"{what} prints\n{output}The page says\n{expected}")

    def check_c(self, code, before, what):
        """A whole source in C, or with a comment before it the body of a function."""
        self.commands += 1
        if hidden := HIDDEN.search(before):
            code = f"#include <vorlund_c.h>\n{hidden[1]}int fragment(void) {{\n{code}return 0;\n}}\n"
        self.compile_c(code, what, "-fsyntax-only")

    def check_fragments(self, fragments, what):
        """All fragments of a page at once, each in a namespace of its own."""
        self.commands += len(fragments)
        parts = []
        for number, (declared, code) in enumerate(fragments):
            if not re.search(r"^\.\.\.$", declared, re.MULTILINE):
                declared += "void Fragment() {\n...\n}\n"
            code = re.sub(r"^\.\.\.$", lambda _: code, declared, flags=re.MULTILINE)
            includes = "".join(re.findall(r"^#include .*\n", code, re.MULTILINE))
            code = re.sub(r"^#include .*\n|^using namespace .*\n", "", code, flags=re.MULTILINE)
            parts.append(f"{includes}namespace fragment{number} {{\nusing namespace vorlund;\n{code}}}\n")
        before = "#include <vorlund/All.h>\n#include <cstdio>\n#include <atomic>\n"
        self.compile(before + "".join(parts), f"a fragment of {what}", "-fsyntax-only")


def console(block):
    """The commands of a block, each with the lines below it; None when there are none."""
    block = re.sub(r" \\\n *", " ", block)
    parts = re.split(r"^\$ (.*)\n", block, flags=re.MULTILINE)[1:]
    return [(command, output or None) for command, output in zip(parts[::2], parts[1::2])]


def named_file(before, kind):
    """The file that the paragraph before a block names."""
    paragraph = before.rstrip().rsplit("\n\n", 1)[-1]
    names = re.findall(r"`([\w.-]+)`", paragraph)
    return next((name for name in names if name.endswith(ENDINGS.get(kind, "\0"))), None) if paragraph.endswith(":") else None


def borrow(sandbox, text):
    """Files of other pages."""
    for name, page in BORROWED.findall(text):
        other = (ROOT / page).read_text()
        blocks = [block for block in BLOCK.finditer(other) if named_file(other[: block.start()], block[1]) == name]
        (sandbox.folder / name).write_text(blocks[0][3])


def play_blocks(sandbox, page, text):
    """Everything of a page, in its order."""
    borrow(sandbox, text)
    blocks = list(BLOCK.finditer(text))
    fragments = []
    for index, block in enumerate(blocks):
        kind, place, code, row = block.groups()
        before = text[: block.start()]
        following = blocks[index + 1] if index + 1 < len(blocks) else None
        if row:
            sandbox.play(row, None)
        elif kind == "console" and place not in (*DONE_HERE, sandbox.target):
            continue
        elif kind == "console":
            for line, output in console(code):
                sandbox.play(line, output)
        elif name := named_file(before, kind):
            (sandbox.folder / name).write_text(code)
        elif kind in ("cpp", "c") and re.search(r"^int main\(", code, re.MULTILINE):
            is_told = following and following[1] == "text" and not text[block.end() : following.start()].strip()
            sandbox.play_program(code, following[3] if is_told else None, f"a program of {page}", kind == "c")
        elif kind == "c":
            sandbox.check_c(code, before, f"a source of {page}")
        elif kind == "cpp":
            hidden = HIDDEN.search(before)
            fragments.append((hidden[1] if hidden else "", code))
    if fragments:
        sandbox.check_fragments(fragments, page)


def play_in_sandbox(name, build, play):
    """Calls `play` with an empty folder. Returns the numbers of commands and of faults."""
    with tempfile.TemporaryDirectory() as folder:
        sandbox = Sandbox(Path(folder), Path(build).resolve())
        play(sandbox)
        print(f"{name}: {sandbox.commands} commands and programs, {sandbox.faults} faults")
        return sandbox.commands, sandbox.faults


def play_page(page, build, finish=lambda sandbox: None):
    """A page from its beginning to its end."""

    def play(sandbox):
        play_blocks(sandbox, page, (ROOT / page).read_text())
        finish(sandbox)

    return play_in_sandbox(page, build, play)
