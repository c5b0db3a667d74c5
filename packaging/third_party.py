"""What of others is in a package or used by it, found in the build and in the staged files."""
import dataclasses
import functools
import pathlib
import re
import subprocess

HERE = pathlib.Path(__file__).resolve().parent
# Loaded or started at run time, so no file names them.
LOADED = ("libsdl2-2.0-0", "libsoxr0", "libpulse0", "libxcb1")

# Sources whose DLL is named otherwise.
DLLS = {"libjpeg-turbo": "libjpeg", "libpng1.6": "libpng", "libsdl2": "SDL2"}


@dataclasses.dataclass(order=True)
class Part:
    """A library of others: name and version with Debian's patch level, licence, and how it belongs to the package."""

    name: str
    version: str
    licence: str
    # "static": compiled in; "beside": a file of its own in the package; "system": asked of the system.
    kind: str
    # The source archive and its SHA-256 sum, where the library was built by scripts/codecs.sh.
    archive: str = ""
    sha256: str = ""
    # The binary package of Debian whose file was used, and where its licence is.
    package: str = ""


def tell(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


@functools.cache
def licences():
    rows = (HERE / "licences.tsv").read_text().splitlines()
    return dict(row.split("\t") for row in rows if row and not row.startswith("#"))


def debian_part(package, kind):
    """The library in an installed package."""
    source, version = tell("dpkg-query", "-W", "-f", "${source:Package}\t${source:Version}\n", package).splitlines()[0].split("\t")
    if kind == "beside":
        # Files that are shipped as they are: the version of the build too.
        version = tell("dpkg-query", "-W", "-f", "${Version}\n", package).splitlines()[0]
    if source not in licences():
        raise SystemExit(f"complete.py: packaging/licences.tsv has no row for {source}, of which {package} is used")
    return Part(source, version, licences()[source], kind, package=package)


def owner(path):
    """The package that has a file; the loader's folder is a link on merged systems."""
    for name in (str(path), str(pathlib.Path(path).resolve()), re.sub("^/usr/lib/", "/lib/", str(pathlib.Path(path).resolve()))):
        found = subprocess.run(["dpkg-query", "-S", name], capture_output=True, text=True)
        if found.returncode == 0:
            return found.stdout.split(": ")[0].split(",")[0]
    raise SystemExit(f"complete.py: no package of Debian has {path}")


def needed(file):
    """The libraries that an ELF file asks for, by name."""
    return re.findall(r"\(NEEDED\).*\[(.*?)\]", tell("readelf", "-d", str(file)))


def is_elf(file):
    with open(file, "rb") as stream:
        return stream.read(4) == b"\x7fELF"


def of_system(files, own):
    """What ELF files ask of the system."""
    names = {name for file in files for name in needed(file)} - own
    known = dict(re.findall(r"^\s*(\S+) \(.*x86-64.*\) => (\S+)$", tell("/sbin/ldconfig", "-p"), re.MULTILINE))
    for name in sorted(names):
        yield debian_part(owner(known[name]), "system")


def of_folders(folders, staged):
    """What scripts/codecs.sh has built, but for libraries that are not in the package."""
    for folder in folders:
        rows = (folder / "licences/sources.tsv").read_text().splitlines()
        for name, version, archive, sha256, licence in (row.split("\t") for row in rows):
            own = {path.name for path in (folder / "bin").glob(f"{DLLS.get(name, name)}*.dll")}
            if own and not own & staged:
                continue
            kind = "beside" if own else "static"
            yield Part(name, version, licence, kind, archive, sha256)


def collect(facts, stage):
    """The parts of a package whose files lie in the folder `stage`."""
    files = [path for path in stage.rglob("*") if path.is_file() and not path.is_symlink()]
    names = {path.name for path in files}
    parts = []
    has_program = any(path.name in ("vorlund", "vorlund.exe") and path.parent.name == "bin" for path in files)
    if has_program:
        parts += [debian_part(owner(header), "static") for header in facts["headers"].split(";")]
    if facts["system"] == "Windows":
        parts += [debian_part(owner(path), "beside") for path in facts["runtime"].split(";")]
        parts += of_folders([pathlib.Path(folder) for folder in facts["libraries"].split(";") if folder], names)
    else:
        elf = [path for path in files if is_elf(path)]
        own = {name for path in elf for name in re.findall(r"\(SONAME\).*\[(.*?)\]", tell("readelf", "-d", str(path)))}
        own |= {name for path in elf for name in needed(path) if name.startswith("libvorlund")}
        parts += of_system(elf, own)
        if has_program:
            parts += [debian_part(package, "system") for package in LOADED]
    unique = {(part.name, part.kind): part for part in parts}
    return sorted(unique.values())
