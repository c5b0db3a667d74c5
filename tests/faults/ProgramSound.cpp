// The subcommands that play, record, convert, look into and mend sound.
#include "faults/FaultPoints.h"
#include "faults/ProgramRun.h"

#include "support/Streams.h"
#include "support/WavBuilder.h"

#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

namespace vorlund::faults {
namespace {

using test::TBytes;

const TBytes& GetSound() {
    static const TBytes sound = test::Ramp(3000);
    return sound;
}

/// Where the sound begins in a file of `WriteSound`: behind the head, the format and room for metadata.
constexpr std::size_t kSoundAt = 12 + 24 + 8 + 200 + 8;

/// A file with that sound, whose sizes are those that a recording has when its process was ended.
void WriteSound(const char* name, bool isDamaged) {
    const CPause pause;
    test::CWavBuilder builder;
    builder.Format({.samplesPerSec = 8000}).Chunk("JUNK", TBytes(200));
    if (isDamaged) {
        builder.RiffSize(0).Declare("data", 0, GetSound());
    } else {
        builder.Chunk("data", GetSound());
    }
    const TBytes bytes = builder.Build();
    std::ofstream file(InFolder(name), std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void ExpectSound(const char* name) {
    const CPause pause;
    std::ifstream file(InFolder(name), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    const TBytes& sound = GetSound();
    if (bytes.size() < kSoundAt + sound.size() ||
        std::memcmp(bytes.data() + kSoundAt, sound.data(), sound.size()) != 0)
        throw TBroken{"the sound is not what it was"};
}

} // namespace

void RunProgramConvert(CResult& result) {
    RunProgram(
        result,
        {"convert", InFolder("input.wav"), "-o", InFolder("deeper.wav"), "--bits", "32", "--jobs", "1"},
        "deeper.wav");
}

void RunProgramInfo(CResult& result) {
    // What could be read of a sound is drawn all the same.
    RunProgram(result,
               {"info", InFolder("input.wav"), "--json", "--peaks", InFolder("peaks.json"), "--points", "20"},
               "peaks.json", TOutputUse::Begun);
}

void RunProgramPlay(CResult& result) {
    RunProgram(result,
               {"play", InFolder("input.wav"), "--device", "file:" + InFolder("played.wav"), "--volume=0.5"},
               "played.wav", TOutputUse::Begun);
}

void RunProgramRecord(CResult& result) {
    RunProgram(result, {"record", "-o", InFolder("recorded.wav"), "--device", "null", "--duration", "0.01"},
               "recorded.wav", TOutputUse::Begun);
}

void RunProgramDevices(CResult& result) {
    RunProgram(result, {"devices", "--json"}, "");
}

void RunProgramPlugins(CResult& result) {
    RunProgram(result, {"plugins"}, "");
}

void RunProgramRepair(CResult& result) {
    WriteSound("damaged.wav", true);
    RunProgram(result, {"repair", InFolder("damaged.wav")}, "damaged.wav", TOutputUse::Changed);
    ExpectSound("damaged.wav");
}

void RunProgramTag(CResult& result) {
    WriteSound("tagged.wav", false);
    RunProgram(result, {"tag", InFolder("tagged.wav"), "--set", "INAM=A title"}, "tagged.wav",
               TOutputUse::Changed);
    ExpectSound("tagged.wav");
}

} // namespace vorlund::faults
