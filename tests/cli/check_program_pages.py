#!/usr/bin/env python3
"""The manual pages and the completions of the program: they are what its command line makes of them, mandoc and man find nothing
wrong, the examples of the manual do what they say, and bash, zsh and fish offer what the command line has.

usage: tests/cli/check_program_pages.py BUILD-FOLDER [--with-what-is-here]
A tool that is missing is a fault, but with the option it is left out.
"""
import os
import pathlib
import pty
import select
import shlex
import shutil
import subprocess
import sys
import tempfile
import time
import tomllib

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))
import program_completions
import program_pages

COMPLETIONS = ROOT / "tools/vorlund/completions"
MANDOC = ("mandoc", "-Tlint")
MAN = ("man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z")
# Runs until somebody ends it, and needs a display.
UNTRIED = ("vorlund window",)
complaints = []
BUILD = pathlib.Path(sys.argv[1]).resolve()
IS_LENIENT = "--with-what-is-here" in sys.argv


def has(tool):
    if shutil.which(tool):
        return True
    (print if IS_LENIENT else complaints.append)(f"left out: there is no {tool}")
    return False


def run(command, **options):
    return subprocess.run(command, capture_output=True, text=True, timeout=120, **options)


def check_form():
    made = run([ROOT / "scripts/program_pages.py", "--check", BUILD])
    complaints.extend(line for line in made.stdout.splitlines() if made.returncode)
    readers = [tool for tool in ("mandoc", "man") if has(tool)]
    for page in sorted((ROOT / "tools/vorlund/man").glob("*.1")):
        for command in (command for command in ([*MANDOC, page], [*MAN, page]) if command[0] in readers):
            said = run(command, env={**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "80"})
            text = said.stderr + (said.stdout if command[0] == "mandoc" else "")
            if text or said.returncode:
                complaints.append(f"{command[0]}: {page.name}: {text.strip()}")


def make_inputs(folder):
    sound = (ROOT / "examples/data/strings.wav").read_bytes()[:44100]
    size = len(sound) - 44
    assert sound[36:40] == b"data"
    (folder / "cut.wav").write_bytes(sound)
    (folder / "sound.wav").write_bytes(sound[:4] + (size + 36).to_bytes(4, "little") + sound[8:40] + size.to_bytes(4, "little") + sound[44:])
    (folder / "converted").mkdir()


def check_examples():
    manual = tomllib.loads((ROOT / "tools/vorlund/pages/manual.toml").read_text())
    tried = 0
    for name, texts in manual.items():
        if not isinstance(texts, dict):
            continue
        for line, _ in texts["examples"]:
            if line.startswith(UNTRIED):
                continue
            with tempfile.TemporaryDirectory() as folder:
                make_inputs(pathlib.Path(folder))
                words = [str(BUILD / "bin/vorlund"), *shlex.split(line)[1:]]
                end = subprocess.run(words, cwd=folder, capture_output=True, timeout=120)
                tried += 1
                if end.returncode:
                    complaints.append(f"manual.toml, {name}: '{line}' ends with {end.returncode}: {end.stderr.decode()}")
    print(f"{tried} examples of the manual")


def complete_in_bash(line, folder):
    """What bash offers at the end of a line, whose words are taken apart as readline does."""
    words = [word for part in line.split(" ") for word in part.replace("=", " = ").split(" ") if word or not part]
    if line.endswith("="):
        words.append("=")
        words = words[:-1]
    script = f'source {COMPLETIONS}/vorlund; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _vorlund; printf "%s\\n" "${{COMPREPLY[@]}}"'
    return set(run(["bash", "--norc", "-c", script, "bash", *words], cwd=folder).stdout.split())


def complete_in_fish(line, folder):
    script = f"source {COMPLETIONS}/vorlund.fish; complete -C {shlex.quote(line)}"
    end = run(["fish", "--no-config", "-c", script], cwd=folder, env={**os.environ, "HOME": str(folder)})
    offered = {row.split("\t")[0] for row in end.stdout.splitlines()}
    # It repeats the option in front of a value.
    return {word.split("=", 1)[1] if "=" in line.split(" ")[-1] and "=" in word else word for word in offered}


class ZshCompletion:
    """A zsh at a terminal, whose completions are written to a file. One shell for all lines: each start takes its time."""

    SETUP = """
PS1= PROMPT2= ; unsetopt beep list_beep prompt_sp zle_bracketed_paste 2>/dev/null
fpath=({completions} $fpath); autoload -Uz compinit; compinit -D -u
setopt no_auto_menu no_list_ambiguous; LISTMAX=10000
compadd() {{
    local -a hits
    if [[ "$*" == *" -O "* || "$*" == *" -A "* || "$*" == *" -D "* || "$1" == -[OAD] ]]; then builtin compadd "$@"; return; fi
    builtin compadd -A hits "$@"
    (( $#hits )) && print -rl -- $hits >> {out}
    builtin compadd "$@"
}}
done-completing() {{ : > {out}.done; BUFFER=; zle redisplay }}
zle -N done-completing; bindkey '^X^D' done-completing; bindkey '^I' complete-word
: > {out}.done
"""

    def __init__(self, folder):
        self.out = folder / ".zsh-hits"
        setup = folder / ".zsh-setup"
        setup.write_text(self.SETUP.format(completions=COMPLETIONS, out=self.out))
        self.process, self.terminal = pty.fork()
        if self.process == 0:
            os.chdir(folder)
            os.environ.update(TERM="dumb", HOME=str(folder), LC_ALL="C.UTF-8", COLUMNS="200")
            os.execlp("zsh", "zsh", "-f", "-i")
        self.send(f"source {setup}\n")

    def send(self, text):
        done = pathlib.Path(f"{self.out}.done")
        done.unlink(missing_ok=True)
        os.write(self.terminal, text.encode())
        limit = time.monotonic() + 60
        while not done.exists():
            # What the shell shows is taken away, so that it is never held up.
            if select.select([self.terminal], [], [], 0.01)[0]:
                os.read(self.terminal, 65536)
            if time.monotonic() > limit:
                raise TimeoutError(f"zsh does not come back from {text!r}")

    def __call__(self, line, folder):
        self.out.write_text("")
        self.send(line + "\t\x18\x04")
        return {word.rstrip("=") for word in self.out.read_text().split()}

    def close(self):
        os.write(self.terminal, b"exit\n")
        os.close(self.terminal)
        os.waitpid(self.process, 0)


def expect(shell, line, offered, wanted, others=frozenset()):
    """All that is wanted is offered, and beside it nothing but `others`."""
    if not wanted <= offered or not offered <= wanted | others:
        complaints.append(f"{shell}: '{line}' offers {sorted(offered)}, not {sorted(wanted)}")


def check_shell(shell, complete, commands, folder):
    program, rest = commands[0], commands[1:]
    files = {"sound.wav", "cut.wav"}
    # Some write a folder with a slash, and zsh a file's name in the place of a word that is none.
    here = files | {"converted", "converted/"}
    general = {name for option in program["options"] for name in option["names"]}
    asked = 0

    def ask(line, wanted, others=frozenset()):
        nonlocal asked
        asked += 1
        expect(shell, line, complete(line, folder), wanted, others)

    ask("vorlund ", {command["name"] for command in rest}, here)
    ask("vorlund --plugin-path converted dec", {"decode"})
    ask("vorlund --plugin-path ", set(), {"converted", "converted/"})
    ask("vorlund sound.wav --fo", {"--format"})
    for command in rest:
        name = command["name"]
        own = {name for option in program_completions.named(command, commands) for name in option["names"]}
        long = {name for name in own | general if name.startswith("--")}
        ask(f"vorlund {name} --", long)
        ask(f"vorlund {name} ", files if program_completions.takes_files(command) else set(), here | own | general if program_completions.takes_files(command) else own | general)
        for option in program_completions.named(command, commands):
            if not option["value"]:
                continue
            for option_name in option["names"]:
                wanted = set(option["choices"]) or (files if option["value"] == "FILE" else set())
                ask(f"vorlund {name} {option_name} ", wanted, here if option["value"] == "FILE" else frozenset())
            if option["choices"]:
                last = option["choices"][-1]
                ask(f"vorlund {name} {option['names'][-1]}={last[0]}", {choice for choice in option["choices"] if choice.startswith(last[0])})
    print(f"{shell}: {asked} lines")


def main():
    check_form()
    check_examples()
    _, commands = program_pages.read_commands(BUILD)
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        make_inputs(folder)
        if has("bash"):
            check_shell("bash", complete_in_bash, commands, folder)
        if has("fish"):
            check_shell("fish", complete_in_fish, commands, folder)
        if has("zsh"):
            zsh = ZshCompletion(folder)
            check_shell("zsh", zsh, commands, folder)
            zsh.close()
    print(*complaints, sep="\n")
    return 1 if complaints else 0


sys.exit(main())
