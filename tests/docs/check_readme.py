#!/usr/bin/env python3
"""Does what README.md says, against a build of the preset linux. usage: tests/docs/check_readme.py BUILD-FOLDER

The blocks marked "console" and the commands of the table are run in their order, in an empty folder with a home of its
own that has `examples`, `build/linux` and a song as MP3; what they print is compared with what README.md prints. The blocks marked
"cpp" and "cmake" become decode.cpp and CMakeLists.txt there. Two kinds of command would take too long and are stood in for:
./run, by the program that it builds, and the build of the whole tree, by a configuration and a dry run. So is what installs
packages: their names are compared with what ./package makes and with scripts/setup.sh; ./test --packages installs them.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
BLOCK = re.compile(r"^```(\w+)(?: \w+)?\n(.*?)^```$|^\| `(build/linux/bin/[^`]+)` \|", re.MULTILINE | re.DOTALL)
# As in scripts/suites.sh: a hang fails instead of blocking.
LIMIT = 300

faults = 0
commands = 0


def complain(what):
    global faults
    faults += 1
    print("FAULT:", what)


def run(command, folder, environment):
    result = subprocess.run(
        ["bash", "-c", command],
        cwd=folder,
        env=environment,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        stdin=subprocess.DEVNULL,
        text=True,
        timeout=LIMIT,
    )
    return result.stdout, result.returncode


def check_packages(names):
    """What an `apt install` names: packages of ours in this version, or some that scripts/setup.sh installs for them."""
    version = re.search(r"project\(Vorlund VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text())[1]
    minor = version.rsplit(".", 1)[0]
    ours = {f"./{name}_{version}_amd64.deb" for name in (f"libvorlund{minor}", "libvorlund-dev", "vorlund")}
    needed = run("source scripts/setup.sh && vorlund_packages package-deb", ROOT, os.environ)[0].split()
    for name in names:
        if name not in ours and name not in needed:
            complain(f"apt install {name}: there is no such package of ours, and scripts/setup.sh does not need it")


class Sandbox:
    def __init__(self, folder, build):
        self.folder = folder
        self.environment = dict(os.environ, HOME=str(folder / "home"))
        for name in ("LD_LIBRARY_PATH", "PKG_CONFIG_PATH", "CMAKE_PREFIX_PATH"):
            self.environment.pop(name, None)
        (folder / "home").mkdir()
        (folder / "build").mkdir()
        (folder / "build/linux").symlink_to(build)
        (folder / "examples").symlink_to(ROOT / "examples")

    def has_song(self):
        """Makes the MP3 that is decoded, once."""
        song = self.folder / "song.mp3"
        if not song.exists() and shutil.which("lame") and (self.folder / "build/linux/bin/vorlund-plugins/sndfile.so").exists():
            run(f"lame --quiet {ROOT}/examples/data/strings.wav {song}", self.folder, self.environment)
        return song.exists()

    def play(self, command, expected):
        """Runs one command; `expected` is what it prints, or None when README.md does not say."""
        global commands
        commands += 1
        print("$", command)
        if match := re.fullmatch(r"export (.*)", command):
            for name, value in (word.split("=") for word in match[1].split()):
                self.environment[name] = value.replace("$HOME", self.environment["HOME"])
            return
        if match := re.fullmatch(r"sudo apt install (.*)", command):
            check_packages(match[1].split())
            return
        if " song.mp3 " in command and not self.has_song():
            print("(left out: no lame, or no plug-in sndfile)")
            return
        command = re.sub(r"^(build/release/bin/)?vorlund ", "build/linux/bin/vorlund ", command)
        if re.match(r"cmake (--preset|-G Ninja -B build/release)", command):
            # The tree that is configured is the real one; its build folder is not.
            tree = self.folder / "configured"
            shutil.rmtree(tree, ignore_errors=True)
            output, status = run(f"{command.replace(' -B build/release', '')} -B {tree}", ROOT, self.environment)
        elif command in ("cmake --build --preset linux", "cmake --build build/release"):
            output, status = run(f"cmake --build {self.folder}/configured -- -n", ROOT, self.environment)
        else:
            command = re.sub(r"^\./run ", "build/linux/bin/vorlund decode ", command)
            output, status = run(command, self.folder, self.environment)
        # What a command prints is told in README.md when it matters; a failure that is told is meant to be one.
        failure_is_told = bool(expected and expected.startswith(("Exception: ", "vorlund: Cannot ")))
        if (status != 0) != failure_is_told:
            complain(f"{command} ended with {status}:\n{output}")
        elif expected is not None and output != expected:
            complain(f"{command} prints\n{output}README.md says\n{expected}")


def console(block):
    """The commands of a block, each with the lines below it; None when there are none."""
    block = re.sub(r" \\\n *", " ", block)
    parts = re.split(r"^\$ (.*)\n", block, flags=re.MULTILINE)[1:]
    return [(command, output or None) for command, output in zip(parts[::2], parts[1::2])]


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    readme = (ROOT / "README.md").read_text()
    with tempfile.TemporaryDirectory() as name:
        sandbox = Sandbox(pathlib.Path(name), build)
        files = {"cpp": "decode.cpp", "cmake": "CMakeLists.txt"}
        for kind, text, command in BLOCK.findall(readme):
            if kind == "console":
                for line, output in console(text):
                    sandbox.play(line, output)
            elif kind:
                (sandbox.folder / files[kind]).write_text(text)
            elif "window" not in command or ("DISPLAY" in os.environ and any((build / "bin/vorlund-plugins").glob("window-output.*"))):
                sandbox.play(command, None)

        if (sandbox.folder / "decode.cpp").read_text() != (ROOT / "examples/01-decode-wav/main.cpp").read_text():
            complain("the first program is not that of examples/01-decode-wav")
        made = sandbox.folder / "plasma-0001.png"
        if not made.is_file() or made.read_bytes() != (ROOT / "docs/pictures/plasma-0001.png").read_bytes():
            complain("the picture is not what the command beside it makes")
        source = ROOT / "examples/data/strings.wav"
        if (sandbox.folder / "strings-copy.wav").read_bytes() != source.read_bytes():
            complain("strings-copy.wav is not a copy")
    print(f"{commands} commands, {faults} faults")
    return 1 if faults or not commands else 0


sys.exit(main())
