"""The pages do what they say. The blocks of docs/python.md run one after the other, and print what stands below them; the commands
of docs/start-python.md are given by the rules of tests/docs/run_page.py."""
import contextlib
import io
import os
import re
import sys
from pathlib import Path

import soundfile
import vorlund
from conftest import ROOT, STRINGS

BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.M | re.S)


def test_the_page_runs(tmp_path, monkeypatch):
    samples, rate = soundfile.read(STRINGS)
    soundfile.write(tmp_path / "song.flac", samples, rate)
    monkeypatch.chdir(tmp_path)
    blocks = BLOCK.findall((ROOT / "docs/python.md").read_text())
    names = {}
    ran = 0
    for index, (kind, code) in enumerate(blocks):
        if kind != "python":
            continue
        printed = io.StringIO()
        with contextlib.redirect_stdout(printed):
            exec(compile(code, f"block {index} of docs/python.md", "exec"), names)
        following = blocks[index + 1] if index + 1 < len(blocks) else ("", "")
        assert printed.getvalue() == (following[1] if following[0] == "text" else ""), code
        ran += 1
    assert ran >= 8
    del names


def test_it_is_installed_as_the_page_says():
    page = (ROOT / "docs/python.md").read_text()
    check = (ROOT / "scripts/python-site.sh").read_text()
    assert "pip install --no-build-isolation ." in page
    assert re.search(r"pip install --no-build-isolation .* \.\)$", check, re.M)


def test_the_first_steps_are_as_the_page_says(monkeypatch, capsys):
    monkeypatch.syspath_prepend(str(ROOT / "tests/docs"))
    import run_page

    monkeypatch.setattr(run_page, "DONE_HERE", ("python",))
    # The interpreter of the tests is that of the commands.
    monkeypatch.setenv("PATH", f"{Path(sys.executable).parent}{os.pathsep}{os.environ['PATH']}")
    build = Path(vorlund.__file__).resolve().parents[3]
    commands, faults = run_page.play_page("docs/start-python.md", build)
    assert (commands, faults) == (3, 0), capsys.readouterr().out
