"""The examples in the public headers, "\\code{.cpp}" and "\\code{.c}" to "\\endcode" in doc comments, are built and run.

Each is the body of a function that runs in a process of its own, in a folder with "strings.wav" and
"plasma-0001.png". The library is open, with its
plug-ins, unless the example opens it. Classes, and functions in C, that begin at the margin stand before that function. What an
example prints is what its comments say: "// prints 3", in the order of its lines. What wants a window
or a plug-in runs only where there is one.
"""
import re

from run_page import ROOT

FOLDERS = ("include", "bindings/c/include")
CODE = re.compile(r"\\code\{\.(cpp|c)\}\n(.*?)^[ */]*\\endcode", re.DOTALL | re.MULTILINE)
MARGIN = re.compile(r"^ *(?:\*|///)(?: |$)", re.MULTILINE)
PRINTS = re.compile(r"// prints (.*)$", re.MULTILINE)
BEFORE = re.compile(r"^(?:class|struct|static) .*?^\}.*?\n", re.DOTALL | re.MULTILINE)
WINDOW = "DEVICE_TYPE_VIDEO"
# What an example names, and the plug-in that it needs.
PLUGINS = {"sndfile": "sndfile", "plasma-0001.png": "image"}

CPP_HEAD = """#include <vorlund/All.h>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>
using namespace std::chrono_literals;
using namespace vorlund;
"""
CPP_MAIN = """
int main(int, char** argv) {
    try {
        switch (std::atoi(argv[1])) {
%s        }
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        return 1;
    }
    return 0;
}
"""
C_HEAD = """#include <vorlund_c.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
"""
C_MAIN = """
int main(int argc, char** argv) {
    (void)argc;
    switch (atoi(argv[1])) {
%s    }
    return 0;
}
"""


def examples():
    """Yields language, header and code of each."""
    for folder in FOLDERS:
        for header in sorted((ROOT / folder).rglob("*.h")):
            for language, code in CODE.findall(header.read_text()):
                # Every line of a block of " * " or "/// " comments begins with that.
                yield language, header.relative_to(ROOT / folder).as_posix(), MARGIN.sub("", code)


def source_of(language, found):
    """One program with all examples of a language, by their numbers."""
    in_c = language == "c"
    parts, cases = [], []
    for number, (header, code) in enumerate(found):
        before = "".join(BEFORE.findall(code))
        body = BEFORE.sub("", code)
        if in_c:
            opens = "vorlund_open(" not in code
            begin, end = ("if (vorlund_open(VORLUND_OPEN_INSTALLED_PLUGINS) != 0) exit(2);\n", "if (vorlund_close() != 0) exit(3);\n") if opens else ("", "")
            parts.append(f"/* {header} */\n{before}static void run{number}(void) {{\n{begin}{body}{end}}}\n")
            cases.append(f"    case {number}: run{number}(); break;\n")
        else:
            session = "" if "CSession " in code else "const CSession session;\n"
            parts.append(f"// {header}\nnamespace n{number} {{\n{before}void Run() {{\n{session}{body}}}\n}}\n")
            cases.append(f"        case {number}: n{number}::Run(); break;\n")
    head, main = (C_HEAD, C_MAIN) if in_c else (CPP_HEAD, CPP_MAIN)
    return head + "".join(parts) + main % "".join(cases)


def play_language(sandbox, language, found):
    libraries = f"-o examples-{language} -L{sandbox.build}/bin -Wl,-rpath,{sandbox.build}/bin -lvorlund"
    code = source_of(language, found)
    if language == "c":
        is_built = sandbox.compile_c(code, "an example in a header for C", f"{libraries}-c -lm")
    else:
        is_built = sandbox.compile(code, "an example in a header", libraries)
    for number, (header, example) in enumerate(found) if is_built else ():
        plugins = [sandbox.build / f"bin/vorlund-plugins/{name}.so" for word, name in PLUGINS.items() if word in example]
        if (WINDOW in example and not sandbox.can_show()) or not all(plugin.exists() for plugin in plugins):
            print(f"(left out: that of {header})")
            continue
        sandbox.commands += 1
        expected = "".join(f"{line}\n" for line in PRINTS.findall(example))
        output, status = sandbox.run(f"./examples-{language} {number}")
        if status != 0 or output != expected:
            sandbox.complain(f"the example of {header} ended with {status} and prints\n{output}It says\n{expected}")


def play_headers(sandbox):
    """All examples of all headers."""
    sandbox.run(f"cp {ROOT}/examples/data/strings.wav {ROOT}/docs/pictures/plasma-0001.png .")
    found = {}
    for language, header, code in examples():
        found.setdefault(language, []).append((header, code))
    for language, rows in found.items():
        play_language(sandbox, language, rows)
