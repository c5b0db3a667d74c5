// WAV files that are written, given other metadata, and mended. Whatever fails, and wherever the process
// would have ended instead, the sound that was there is there, in a file that opens, and doing it again
// succeeds.
#include "faults/FaultPoints.h"
#include "faults/Scenario.h"

#include "support/Text.h"
#include "support/WavBuilder.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/WavMetadata.h>
#include <vorlund/WavRepair.h>
#include <vorlund/WavWriter.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace vorlund::faults {
namespace {

using test::TBytes;

/// Odd, so that there is padding.
const TBytes kSound = test::Ramp(5001);

std::filesystem::path GetPath() {
    return files.folder / "sound.wav";
}

using TFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// Through this program's own calls, which never fail; those of the standard library's files do.
TFile Open(const char* mode) {
    return {std::fopen(GetPath().string().c_str(), mode), &std::fclose};
}

void Save(const TBytes& bytes) {
    const TFile file = Open("wb");
    std::fwrite(bytes.data(), 1, bytes.size(), file.get());
}

TBytes Load() {
    TBytes bytes(100000);
    const TFile file = Open("rb");
    bytes.resize(file ? std::fread(bytes.data(), 1, bytes.size(), file.get()) : 0);
    return bytes;
}

std::size_t GetNumber(const TBytes& bytes, std::size_t at) {
    return bytes[at] | bytes[at + 1] << 8 | bytes[at + 2] << 16 | std::size_t{bytes[at + 3]} << 24;
}

/// The sound of a file whose chunks follow each other to the end that its head tells; raises when they do
/// not. Behind that end there may be what a head did not come to tell.
TBytes GetSound(const TBytes& bytes) {
    constexpr std::size_t kHead = 8;
    if (bytes.size() < 12) throw TBroken{"there is no head"};
    const std::size_t end = GetNumber(bytes, 4) + kHead;
    // The last byte may be padding.
    if (end > bytes.size() + 1) throw TBroken{"the head tells more than there is"};
    TBytes sound;
    bool isFound = false;
    std::size_t at = 12;
    while (at + kHead <= end) {
        const std::string_view id(reinterpret_cast<const char*>(bytes.data() + at), 4);
        const std::size_t size = GetNumber(bytes, at + 4);
        at += kHead;
        if (size > bytes.size() - at) throw TBroken{"a chunk ends behind the file"};
        if (id == "data") {
            sound.assign(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                         bytes.begin() + static_cast<std::ptrdiff_t>(at + size));
            isFound = true;
        }
        at += size + size % 2;
    }
    if (at != end && at != end + 1) throw TBroken{"the last chunk does not end where the head tells"};
    if (!isFound) throw TBroken{"there is no sound"};
    return sound;
}

bool IsBeginning(const TBytes& sound) {
    return sound.size() <= kSound.size() && std::equal(sound.begin(), sound.end(), kSound.begin());
}

/// What the decoder of the library reads of the file.
TBytes Decode() {
    const CInputStreamSelector source(ToVorlundPath(GetPath()).c_str());
    const auto decoded = CRefPtr<IInputStream>::Adopt(source.DecodeStream(TDataFormat_AudioPcm::FormatId));
    TBytes bytes(2 * kSound.size());
    bytes.resize(static_cast<std::size_t>(decoded->Read(bytes.data(), bytes.size())));
    return bytes;
}

void ExpectWholeSound() {
    if (GetSound(Load()) != kSound || Decode() != kSound) throw TBroken{"the sound is not what it was"};
}

TWavMetadata MakeMetadata(std::size_t length) {
    TWavMetadata metadata;
    metadata.info = {{"INAM", "a title"}, {"ICMT", std::string(length, 'c')}};
    metadata.broadcast.emplace().description = "a description";
    metadata.cues = {{1, 0, 0, "here", ""}, {2, 100, 50, "there", "a note"}};
    return metadata;
}

void Write(CWavWriter& writer, std::size_t begin, std::size_t end) {
    for (; begin < end; begin += 500) writer.Write(&kSound[begin], std::min<std::size_t>(500, end - begin));
}

void CheckWritten() {
    const TBytes left = Load();
    if (left.empty()) return;
    if (!IsBeginning(GetSound(left))) throw TBroken{"the file has sound that nobody wrote"};
    RepairWav(ToVorlundPath(GetPath()).c_str());
    TBytes mended = GetSound(Load());
    // A byte of padding that no size tells of yet is one more sample of 8 bits.
    if (!IsBeginning(mended) && mended.back() == 0) mended.pop_back();
    if (!IsBeginning(mended) || mended.size() < GetSound(left).size())
        throw TBroken{"after a repair the file has sound that nobody wrote"};
}

void CheckEdited(const TWavMetadata& wanted) {
    ExpectWholeSound();
    EditWavMetadata(ToVorlundPath(GetPath()).c_str(), wanted);
    ExpectWholeSound();
    const CInputStreamSelector source(ToVorlundPath(GetPath()).c_str());
    if (ReadWavMetadata(source.GetInputStreamTmp()) != wanted) throw TBroken{"the metadata cannot be given"};
}

/// Does `act`; when that raises, `check` looks at what is left while nothing fails.
template <class TAct, class TCheck> void Do(TAct act, TCheck check) {
    try {
        act();
    } catch (...) {
        Disarm();
        try {
            check();
        } catch (const CException& error) {
            throw TBroken{"what is left: " + test::Narrow(error.ToString().GetBuffer())};
        }
        throw;
    }
}

} // namespace

void RunWavWrite(CResult& result) {
    std::remove(GetPath().string().c_str());
    Do(
        [] {
            TWavWriterOptions options;
            options.metadata = MakeMetadata(10);
            options.metadataRoom = 1000;
            CWavWriter writer(ToVorlundPath(GetPath()).c_str(), {WAV_SAMPLE_8BIT, 1, 8000}, options);
            Write(writer, 0, 2000);
            writer.Flush();
            Write(writer, 2000, 4000);
            // More than the room holds.
            writer.SetMetadata(MakeMetadata(2000));
            Write(writer, 4000, kSound.size());
            writer.Close();
        },
        &CheckWritten);
    const TBytes bytes = Load();
    result.AddBytes(bytes.data(), bytes.size());
}

void RunWavEdit(CResult& result) {
    Save(test::CWavBuilder()
             .Chunk("JUNK", TBytes(28))
             .Format({.samplesPerSec = 8000, .bits = 8})
             .Chunk("JUNK", TBytes(200))
             .Chunk("data", kSound)
             .Build());
    // Into free room, behind the sound, into the former place, behind the file; and away.
    for (const TWavMetadata& metadata :
         {TWavMetadata{.info = {{"INAM", "a title"}}, .broadcast = {}, .cues = {}}, MakeMetadata(300),
          MakeMetadata(200), MakeMetadata(3000), TWavMetadata()}) {
        Do([&] { EditWavMetadata(ToVorlundPath(GetPath()).c_str(), metadata); },
           [&] { CheckEdited(metadata); });
        const TBytes bytes = Load();
        result.AddBytes(bytes.data(), bytes.size());
    }
    const CInputStreamSelector source(ToVorlundPath(GetPath()).c_str());
    result.Add("%d ", ReadWavMetadata(source.GetInputStreamTmp()) == TWavMetadata());
}

void RunWavRepair(CResult& result) {
    const auto build = [](std::uint32_t riff, std::uint32_t data, std::uint32_t frames) {
        TBytes fact;
        test::Append32(fact, frames);
        return test::CWavBuilder()
            .RiffSize(riff)
            .Chunk("JUNK", TBytes(28))
            .Format({.samplesPerSec = 8000, .bits = 8})
            .Chunk("fact", fact)
            .Declare("data", data, kSound);
    };
    const auto count = static_cast<std::uint32_t>(kSound.size());
    const TBytes right = build(84 + count + 1, count, count).Raw({0}).Build();
    const wstring path = ToVorlundPath(GetPath());
    for (const std::uint32_t wrong : {0u, ~0u}) {
        const TBytes left = build(wrong, wrong, 0).Build();
        Save(left);
        const auto repair = [&] {
            for (const CString& change : RepairWav(path.c_str()).changes) result.AddText(change.GetBuffer());
        };
        Do(repair, [&] {
            const TBytes bytes = Load();
            // The sound is at its place, and a repair that is interrupted is begun again.
            if (bytes.size() < left.size() || !std::equal(kSound.begin(), kSound.end(), bytes.begin() + 92))
                throw TBroken{"a repair has touched the sound"};
            RepairWav(path.c_str());
            if (Load() != right) throw TBroken{"what is left cannot be mended"};
            ExpectWholeSound();
        });
        if (Load() != right) throw TBroken{"the file is not mended"};
    }
}

} // namespace vorlund::faults
