/// \file
/// WAV files of others on a disk: their metadata are read, their sizes are mended, and metadata are put into
/// them. No byte of the sound may change, mending comes to an end, and what was put in comes back.
#include "FuzzFolder.h"
#include "WavFuzz.h"

#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/WavMetadata.h>
#include <vorlund/WavRepair.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

using namespace vorlund;
using namespace vorlund::fuzz;

namespace {

using TBytes = std::vector<std::uint8_t>;

/// The file that every input becomes.
struct TFile {
    TFile() : path(NewPath()), name(PathFromUtf8(path.string().c_str())) {}
    ~TFile() {
        std::error_code ignored;
        std::filesystem::remove(path, ignored);
    }
    void Save(const std::uint8_t* data, std::size_t size) const {
        std::ofstream(path, std::ios::binary | std::ios::trunc)
            .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    }
    TBytes Load() const {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    const std::filesystem::path path;
    const wstring name;
};

/// Where the body of the first "data" chunk begins, and how much of it is there, by the sizes of the file;
/// nothing when there is none.
struct TSound {
    std::size_t begin = 0;
    std::size_t size = 0;
};
TSound FindSound(const TBytes& file) {
    if (file.size() < 12) return {};
    const auto word = [&file](std::size_t at) {
        return static_cast<std::uint32_t>(file[at] | file[at + 1] << 8 | file[at + 2] << 16) |
               static_cast<std::uint32_t>(file[at + 3]) << 24;
    };
    for (std::size_t at = 12; at + 8 <= file.size();) {
        const std::size_t rest = file.size() - at - 8;
        std::size_t size = word(at + 4);
        // The size of 64 bits, of which more than the lower half is more than there is.
        if (size == 0xFFFFFFFF && file.size() >= 36 && std::memcmp(&file[12], "ds64", 4) == 0 &&
            word(32) == 0)
            size = word(28);
        if (std::memcmp(&file[at], "data", 4) == 0) return {at + 8, std::min(size, rest)};
        if (size + size % 2 > rest) break;
        at += 8 + size + size % 2;
    }
    return {};
}

/// Whether there is more than the head of a RIFF file tells.
bool HasTail(const TBytes& file) {
    if (file.size() < 12 || std::memcmp(file.data(), "RIFF", 4) != 0) return true;
    std::uint32_t size = 0;
    for (std::size_t i = 0; i < 4; ++i) size |= static_cast<std::uint32_t>(file[4 + i]) << 8 * i;
    return file.size() > std::uint64_t{size} + 8;
}

TWavMetadata Read(const TBytes& file, std::uint64_t mostPerRead) {
    const auto stream = CFuzzStream::Create(file.data(), file.size());
    stream->mostPerRead = mostPerRead;
    return ReadWavMetadata(stream.Get());
}

void CheckReading(const TBytes& file, CDice& dice) {
    try {
        const TWavMetadata whole = Read(file, ~std::uint64_t{0});
        Check(Read(file, 1 + dice.Roll(5)) == whole);
    } catch (const CDataFormatException&) {
    }
}

/// The sound of the file after a change is that of before.
void CheckSound(const TBytes& before, const TBytes& after, std::size_t size) {
    const TSound sound = FindSound(before);
    if (sound.begin == 0) return;
    Check(FindSound(after).begin == sound.begin);
    Check(after.size() >= sound.begin + size);
    Check(std::equal(after.begin() + static_cast<std::ptrdiff_t>(sound.begin),
                     after.begin() + static_cast<std::ptrdiff_t>(sound.begin + size),
                     before.begin() + static_cast<std::ptrdiff_t>(sound.begin)));
}

/// Whether the file is one that can be mended.
bool Repair(const TFile& file, const TBytes& before) {
    try {
        const std::size_t expected = RepairWav(file.name.c_str(), true).changes.size();
        Check(file.Load() == before);
        Check(RepairWav(file.name.c_str()).changes.size() == expected);
    } catch (const CDataFormatException&) {
        Check(file.Load() == before);
        return false;
    }
    const TBytes after = file.Load();
    // All that was behind the head of the sound is as it was, but for sizes of chunks.
    CheckSound(before, after, FindSound(before).size);
    Check(after.size() >= before.size() && after.size() <= before.size() + 1);
    // What looks like a chunk behind a sound of other length may get its size by the next mending, and then
    // no more.
    for (int i = 0; !RepairWav(file.name.c_str()).changes.empty(); ++i) Check(i < 2);
    return true;
}

std::string Text(CDice& dice) {
    std::string text;
    for (std::uint64_t left = dice.Roll(40); left > 0; --left) text += static_cast<char>(1 + dice.Roll(255));
    return text;
}

TWavMetadata MakeMetadata(CDice& dice) {
    TWavMetadata metadata;
    for (std::uint64_t left = dice.Roll(4); left > 0; --left)
        metadata.info.push_back({"INAM", 'x' + Text(dice)});
    if (dice.Roll(2) == 0) {
        metadata.broadcast.emplace().description = Text(dice);
        metadata.broadcast->codingHistory = Text(dice);
    }
    for (std::uint32_t id = 1; dice.Roll(3) == 0; ++id) {
        TWavCuePoint& cue = metadata.cues.emplace_back();
        cue.id = id;
        cue.position = static_cast<std::uint32_t>(dice.Roll(1000));
        cue.label = Text(dice);
    }
    return metadata;
}

void Edit(const TFile& file, CDice& dice) {
    for (int i = 0; i < 3; ++i) {
        const TBytes before = file.Load();
        const TWavMetadata metadata = MakeMetadata(dice);
        const bool hasTail = HasTail(before);
        try {
            EditWavMetadata(file.name.c_str(), metadata);
        } catch (const CDataFormatException&) {
            // What the library does not mend it does not edit either.
            Check(file.Load() == before);
            return;
        } catch (const CInvalidParameterException&) {
            return;
        }
        const TBytes after = file.Load();
        CheckSound(before, after, FindSound(before).size);
        // Reading goes on behind the end that the head tells, which may be wrong in files of others.
        if (!hasTail) Check(Read(after, ~std::uint64_t{0}) == metadata);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    OpenLibrary();
    static const TFile file;
    CDice dice(data, size);
    const TBytes input(data, data + size);
    CheckReading(input, dice);
    file.Save(data, size);
    Repair(file, input);
    Edit(file, dice);
    return 0;
}
