#!/usr/bin/env python3
"""What is in packages.
usage: tests/packages/check_contents.py deb|win32|win64 FOLDER...    unpacked packages, each in a folder
       tests/packages/check_contents.py same ZIP ZIP                 two zips have the same contents

Each has a list of third parties in the form of SPDX, whose every library that came into the package has its licence there, the
sources' recipe, and a sum of each file. The links of the pages lead to files. The library and the C library ask for nothing but
the system and the compiler's own libraries.
"""
import fnmatch
import hashlib
import json
import pathlib
import re
import subprocess
import sys
import zipfile

# What libraries of ours may ask for.
SYSTEM = {
    "deb": r"lib(c|m|stdc\+\+|gcc_s)\.so\.\d+|ld-linux-x86-64\.so\.2|libvorlund\.so\.[\d.]+",
    "win32": r"(kernel32|user32|winmm|advapi32|ole32|shell32|msvcrt)\.dll|lib(stdc\+\+-6|gcc_s_dw2-1|winpthread-1)\.dll|vorlund\.dll",
}
SYSTEM["win64"] = SYSTEM["win32"].replace("dw2", "seh")
CORE = re.compile(r"(lib)?vorlund(-c(-\d+)?)?(\.so\.[\d.]+|\.dll)")
# Of each package, or of the zip: files that must be there.
WANTED = {
    "deb": {
        "libvorlund0.1": ["usr/lib/*/libvorlund.so.0.1", "usr/lib/*/libvorlund.so.0.1.0"],
        "libvorlund-c1": ["usr/lib/*/libvorlund-c.so.1"],
        "libvorlund-dev": [
            "usr/include/vorlund_c.h", "usr/include/vorlund_c/base.h", "usr/lib/*/libvorlund-c.so", "usr/lib/*/pkgconfig/vorlund-c.pc",
            "usr/include/vorlund/Vorlund.h", "usr/include/vorlund/Version.h", "usr/lib/*/libvorlund.so",
            "usr/lib/*/cmake/Vorlund/VorlundConfig.cmake", "usr/lib/*/cmake/Vorlund/VorlundPlugin.cmake",
            "usr/lib/*/pkgconfig/vorlund.pc", "usr/share/doc/libvorlund-dev/examples/hello/hello.cpp",
            "usr/share/doc/libvorlund-dev/README.md", "usr/share/doc/libvorlund-dev/docs/packages.md",
        ],
        "vorlund": ["usr/bin/vorlund", "usr/bin/vorlund-plugin-scan"]
        + [f"usr/lib/*/vorlund/plugins/{name}.so" for name in
           ("audio", "image", "measure", "resample", "sndfile", "system-codecs", "visual", "window-output", "y4m")],
    },
    "zip": ["bin/vorlund.exe", "bin/vorlund.dll", "bin/vorlund-plugin-scan.exe", "bin/libstdc++-6.dll",
            "lib/libvorlund.dll.a", "lib/vorlund.lib",
            "bin/vorlund-c-1.dll", "lib/libvorlund-c.dll.a", "lib/vorlund-c.lib", "lib/vorlund_c.def", "include/vorlund_c.h", "lib/cmake/Vorlund/toolchain.cmake", "lib/pkgconfig/vorlund.pc",
            "include/vorlund/Vorlund.h", "doc/README.md", "doc/docs/packages.md", "doc/examples/hello/hello.cpp", "README.txt"]
    + [f"lib/vorlund/plugins/{name}.dll" for name in
       ("audio", "image", "measure", "resample", "sndfile", "system-codecs", "visual", "window-output", "y4m",
        "libsndfile", "libpng16", "libjpeg-62", "libsoxr", "SDL2")],
}
# Nothing in a package of Windows is stripped of less: the compiler's library alone was 21 MB.
LARGEST = 4_000_000
faults = []


def complain(package, text):
    faults.append(f"{package.name}: {text}")


def check_sums(package, sums):
    listed = {}
    for line in sums.read_text().splitlines():
        value, name = line.split("  ", 1)
        listed[name] = value
    present = {path.relative_to(package).as_posix(): path for path in package.rglob("*")
               if path.is_file() and not path.is_symlink() and path != sums}
    for name in sorted(set(listed) ^ set(present)):
        complain(package, f"{name} is only in {'SHA256SUMS' if name in listed else 'the package'}")
    for name in set(listed) & set(present):
        if hashlib.sha256(present[name].read_bytes()).hexdigest() != listed[name]:
            complain(package, f"{name} has another sum")


def check_spdx(package, file, doc):
    """The document is complete in itself, and each library that came along has its licence text and recipe."""
    whole = json.loads(file.read_text())
    for key in ("dataLicense", "SPDXID", "name", "documentNamespace", "creationInfo", "packages", "relationships"):
        if not whole.get(key):
            complain(package, f"{file.name} has no {key}")
    if whole["spdxVersion"] != "SPDX-2.3" or not re.fullmatch(r"\d{4}(-\d\d){2}T\d\d(:\d\d){2}Z", whole["creationInfo"]["created"]):
        complain(package, f"{file.name} is of another form")
    parts = {part["SPDXID"]: part for part in whole["packages"]}
    kinds = {}
    for row in whole["relationships"]:
        if row["relatedSpdxElement"] not in parts:
            complain(package, f"{file.name} relates to {row['relatedSpdxElement']}, which is not in it")
        kinds[row["relatedSpdxElement"]] = row["relationshipType"]
    sources = next(doc.glob("SOURCES.txt")).read_text()
    texts = [path.name.lower() for path in doc.rglob("*") if path.is_file()]
    for key, part in parts.items():
        if not re.fullmatch(r"\S.*\d", part["versionInfo"]) or not part["licenseDeclared"] or key not in kinds:
            complain(package, f"{file.name}: {part['name']} has no version, licence or relation")
        if kinds[key] == "DESCRIBES":
            continue
        line = re.search(rf"^    {re.escape(part['name'])} \S+, .*$", sources, re.MULTILINE)
        if "-" not in part["versionInfo"] and not (line and "without Debian's corrections" in line[0]):
            complain(package, f"{file.name}: {part['name']} has no patch level of Debian")
        if f"{part['name']} {part['versionInfo']}" not in sources:
            complain(package, f"SOURCES.txt does not name {part['name']} {part['versionInfo']}")
        if kinds[key] != "DYNAMIC_LINK" and not any(name.startswith(part["name"].lower()) for name in texts):
            complain(package, f"there is no licence text of {part['name']}")
    print(f"   {package.name}: {len(parts) - 1} third parties in {file.name}")


def imports(path):
    """The libraries that a library asks for."""
    if path.suffix == ".dll":
        text = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", path], capture_output=True, text=True, check=True).stdout
        return re.findall(r"DLL Name: (\S+)", text)
    text = subprocess.run(["readelf", "-d", path], capture_output=True, text=True, check=True).stdout
    return re.findall(r"\(NEEDED\).*\[(.*?)\]", text)


def check_imports(kind, package):
    allowed = re.compile(SYSTEM[kind], re.IGNORECASE)
    for path in package.rglob("*"):
        if path.is_file() and not path.is_symlink() and CORE.fullmatch(path.name):
            asked = imports(path)
            if not asked:
                complain(package, f"{path.name} seems to ask for nothing")
            for name in asked:
                if not allowed.fullmatch(name):
                    complain(package, f"{path.name} asks for {name}")
            print(f"   {path.name} asks for {' '.join(sorted(asked))}")


def check_pages(package, doc):
    for page in doc.rglob("*.md"):
        for target in re.findall(r"\]\(([^)\s#]+)(?:#[^)]*)?\)", re.sub(r"^```.*?^```$", "", page.read_text(), flags=re.M | re.S)):
            if not re.match(r"[a-z]+:", target) and not (page.parent / target).exists():
                complain(package, f"{page.relative_to(doc)}: the link {target} leads nowhere")


def check_wanted(package, names):
    # Links too, whose files another package has.
    present = [path.relative_to(package).as_posix() for path in package.rglob("*")]
    for name in names:
        if not fnmatch.filter(present, name):
            complain(package, f"{name} is missing")


def check_package(kind, package):
    if kind == "deb":
        doc = package / "usr/share/doc" / package.name
        check_wanted(package, WANTED["deb"][package.name])
        check_spdx(package, doc / f"{package.name}.spdx.json", doc)
        check_sums(package, doc / "SHA256SUMS")
    else:
        doc = package / "doc"
        check_wanted(package, WANTED["zip"])
        check_spdx(package, doc / "vorlund.spdx.json", doc)
        check_sums(package, package / "SHA256SUMS")
        for path in package.rglob("*.dll"):
            if path.stat().st_size > LARGEST:
                complain(package, f"{path.name} has {path.stat().st_size} bytes")
    check_imports(kind, package)
    check_pages(package, doc)


def contents(path):
    """The names in a zip, without what is called after the word size."""
    with zipfile.ZipFile(path) as archive:
        names = [info.filename.split("/", 1)[1] for info in archive.infolist()]
    return {re.sub(r"libgcc_s_(dw2|seh)", "libgcc_s", name) for name in names}


def main():
    kind, *folders = sys.argv[1:]
    if kind == "same":
        first, second = map(contents, folders)
        for name in sorted(first ^ second):
            faults.append(f"{name} is only in {folders[0] if name in first else folders[1]}")
        print(f"   {len(first)} and {len(second)} files")
    else:
        for folder in folders:
            check_package(kind, pathlib.Path(folder).resolve())
    print(*faults, sep="\n")
    return 1 if faults or not folders else 0


sys.exit(main())
