"""Which places are tried: chosen by a fixed seed, spread over the folders by their lines."""
import functools
import hashlib
import re

SEED = "vorlund-mutation-1"
SPREAD = 300
PER_GROUP = 100
# Parts of the library where every change must be noticed: files, and the lines of a file from one pattern up to another.
GROUPS = {
    "riff": [
        ("src/vorlund/data/filters/WavChunkDecoder.cpp",), ("src/vorlund/data/filters/WavChunkDecoder.h",),
        ("src/vorlund/data/filters/WavChunkTable.cpp",), ("src/vorlund/data/filters/WavChunkTable.h",),
        ("src/vorlund/data/base/GuardedFilterImpl.h",), ("src/vorlund/data/filters/WavDecoder.cpp",), ("src/vorlund/data/filters/WavDecoder.h",),
    ],
    "decoder-search": [
        ("src/vorlund/data/codecs/DecoderSearch.cpp",), ("src/vorlund/data/codecs/DecoderSearch.h",),
        ("src/vorlund/data/codecs/CodecClassStore.cpp", r"::DecodeStream\(", r"^// Encoding"),
        ("src/vorlund/data/codecs/CodecClassStore.cpp", r"kDecodeStreamNotInitialized\{", r"^} // namespace"),
        ("src/vorlund/data/codecs/CodecClassStore.cpp", r" Enumerate\(", r"^};"),
    ],
    "plugin-loader": [("src/vorlund/api/plugins/",)],
}


@functools.cache
def order(*parts):
    """A number that the seed gives to anything: sorting by it shuffles, and new neighbours change nothing."""
    return hashlib.sha256("\0".join((SEED,) + parts).encode()).hexdigest()


def seeded(places):
    """All places, line by line in the order of the seed: another place of a line comes after one of every line, and
    another change of a place after one of every place."""
    lines = {}
    for place in places:
        spots = lines.setdefault((place.file, place.line), {})
        spots.setdefault((place.operator, place.start, place.end), []).append(place)
    rows = []
    for spots in lines.values():
        ranked = []
        for spot in spots.values():
            changes = sorted(spot, key=lambda place: order("change", place.key))
            ranked += [(again, order("spot", place.key), place) for again, place in enumerate(changes)]
        ranked.sort(key=lambda row: row[:2])
        # A line that is known by its first key keeps its turn when it moves.
        turn = order("line", ranked[0][2].key)
        rows += [(again, rank, turn, place) for rank, (again, _, place) in enumerate(ranked)]
    return [row[3] for row in sorted(rows, key=lambda row: row[:3])]


def shares(weights, total):
    """Splits a number by weights, by the largest remainders."""
    whole = sum(weights.values())
    exact = {name: total * weight / whole for name, weight in weights.items()}
    given = {name: int(value) for name, value in exact.items()}
    rest = sorted(weights, key=lambda name: (given[name] - exact[name], name))
    for name in rest[: total - sum(given.values())]:
        given[name] += 1
    return given


def group_places(sources, parts):
    """The places of a group, the seeded order of its first parts first."""
    found = []
    for name, *limits in parts:
        for source in sources.values():
            if not source.name.startswith(name):
                continue
            lines = range(len(source.text))
            if limits:
                lines = _lines_between(source.text, *limits)
            found += [place for place in source.places if place.line in lines]
    return seeded(set(found))


def _lines_between(text, first, last):
    lines = text.split("\n")
    begin = next((i for i, line in enumerate(lines) if re.search(first, line)), None)
    if begin is None:
        return range(0)
    end = next((i for i in range(begin + 1, len(lines)) if re.search(last, lines[i])), len(lines))
    return range(begin + 1, end + 1)


def folder_of(name):
    return name.rpartition("/")[0]


def make_plan(sources, is_usable):
    """The places to try as {group or folder: [places]}; `is_usable` tells which of them compile, as far as known."""
    plan = {}
    taken = set()
    for group, parts in GROUPS.items():
        plan[group] = [place for place in group_places(sources, parts) if is_usable(place)][:PER_GROUP]
        taken.update(place.key for place in plan[group])
    weights = {}
    for source in sources.values():
        folder = folder_of(source.name)
        weights[folder] = weights.get(folder, 0) + len(source.code_lines)
    for folder, number in shares(weights, SPREAD).items():
        places = [place for source in sources.values() if folder_of(source.name) == folder for place in source.places]
        free = [place for place in seeded(places) if is_usable(place) and place.key not in taken]
        plan[folder] = free[:number]
    return plan
