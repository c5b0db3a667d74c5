// What the program says about files that it does not read, with and without the plug-in: the container, the
// value that was objected to, and what to do.
#include "plugins/SoundPluginTest.h"
#include "support/WavBuilder.h"

#include <string_view>

namespace vorlund::test {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

std::string Text(const TBytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

std::string Text(std::string_view bytes) {
    return std::string(bytes);
}

/// The first page of an Ogg stream whose first packet begins with `mark`.
std::string Ogg(std::string_view mark) {
    return "OggS\0\2"s + std::string(20, '\0') + "\1\x1E"s + std::string(mark) + std::string(40, '\0');
}

/// The beginning of a file that others have written.
std::string Cut(const char* name, std::size_t size) {
    return ReadFile(SoundPath(name)).substr(0, size);
}

constexpr const char* kTrySndfile = "; try the plug-in 'sndfile'";
constexpr const char* kTrySystem = "; try the plug-in 'system-codecs'";
constexpr const char* kTryImage = "; try the plug-in 'image'";
constexpr const char* kTryY4m = "; try the plug-in 'y4m'";
constexpr const char* kDamaged = "; if other programs read it, let them convert it, else get it anew";
constexpr const char* kSeeCodecs = "; 'vorlund codecs' lists what can be read";
constexpr const char* kGetAnew = "; get it anew from where it comes";
/// The file is read.
constexpr const char* kRead = nullptr;

/// What libsndfile objects to.
#define VRL_TEST_DAMAGED(reason) "Damaged or unsupported sound file (libsndfile \"" reason "\")"

struct TSentence {
    const char* reason;
    const char* advice;
};

struct TRow {
    const char* name;
    std::string bytes;
    TSentence without;
    TSentence with;
};

std::vector<TRow> MakeRows() {
    const auto wav = [](const TWavFormat& format) { return Text(PlainWav(format, Ramp(48))); };
    const TSentence read{kRead, ""};
    std::vector<TRow> rows;
    const auto add = [&rows](const char* name, const std::string& bytes, const TSentence& without,
                             const TSentence& with) {
        rows.push_back({name, bytes, without, with});
    };
    // The same with and without the plug-in.
    const auto both = [&add](const char* name, const std::string& bytes, const TSentence& sentence) {
        add(name, bytes, sentence, sentence);
    };
    both("nothing.wav", "", {"it is empty", kGetAnew});
    both("words.txt", "no sound in here, only words",
         {"no loaded decoder knows this kind of file", kSeeCodecs});
    add("24.wav", wav({.bits = 24}), {"WAV: Usupported bits per sample (bits 24)", kTrySndfile}, read);
    add("float.wav", wav({.tag = 3, .bits = 32}),
        {"WAV: Unsupported wave format (format tag 3)", kTrySndfile}, read);
    add("alaw.wav", wav({.tag = 6, .bits = 8}), {"WAV: Unsupported wave format (format tag 6)", kTrySndfile},
        read);
    add("tag.wav", wav({.tag = 0x1234}), {"WAV: Unsupported wave format (format tag 4660)", kTrySndfile},
        {"WAV: " VRL_TEST_DAMAGED(
             "Error in WAV/W64/RF64 file. Malformed 'fmt ' chunk.") "; vorlund::CWavDecoder: Unsupported "
                                                                    "wave format (format tag 4660)",
         kDamaged});
    add("no-channels.wav", wav({.channels = 0, .bits = 24}),
        {"WAV: Usupported bits per sample (bits 24)", kTrySndfile},
        {"WAV: " VRL_TEST_DAMAGED(
             "Channel count is zero.") "; vorlund::CWavDecoder: Usupported bits per sample (bits 24)",
         kDamaged});
    add("no-format.wav", Text(CWavBuilder().Chunk("data", Ramp(8)).Build()),
        {"WAV: Cannot find fmt chunk (chunk \"fmt \")", kTrySndfile},
        {"WAV: " VRL_TEST_DAMAGED(
             "Error in WAV file. No 'data' chunk marker.") "; vorlund::CWavDecoder: Cannot find fmt chunk "
                                                           "(chunk \"fmt \")",
         kDamaged});
    add("no-data.wav", Text(CWavBuilder().Format({}).Build()),
        {"WAV: Cannot find data chunk (chunk \"data\")", kTrySndfile},
        {"WAV: " VRL_TEST_DAMAGED(
             "Error in WAV file. No 'data' chunk marker.") "; vorlund::CWavDecoder: Cannot find data chunk "
                                                           "(chunk \"data\")",
         kDamaged});
    add("rifx.wav", Text("RIFX\0\0\0\4WAVE"sv), {"WAV (RIFX): no loaded decoder reads it", kTrySndfile},
        {"WAV (RIFX): " VRL_TEST_DAMAGED("Error in WAV file. No 'data' chunk marker."), kDamaged});
    add("rf64.wav", Text("RF64\xFF\xFF\xFF\xFFWAVEds64"sv), {"RF64: no loaded decoder reads it", kTrySndfile},
        {"RF64: " VRL_TEST_DAMAGED("Error in RF64 file. No 'data' chunk marker."), kDamaged});
    add("head.w64", Text("riff\x2E\x91\xCF\x11\xA5\xD6\x28\xDB\x04\xC1\0\0"sv),
        {"Wave64: no loaded decoder reads it", kTrySndfile},
        {"Wave64: " VRL_TEST_DAMAGED("Error in W64 file. No 'data' chunk marker."), kDamaged});
    add("head.aiff", Text("FORM\0\0\0\4AIFF"sv), {"AIFF: no loaded decoder reads it", kTrySndfile},
        {"AIFF: " VRL_TEST_DAMAGED("Channel count is zero."), kDamaged});
    add("head.aifc", Text("FORM\0\0\0\4AIFC"sv), {"AIFF-C: no loaded decoder reads it", kTrySndfile},
        {"AIFF-C: " VRL_TEST_DAMAGED("Channel count is zero."), kDamaged});
    add("encoding.au", Text(".snd\0\0\0\x18\0\0\0\x8\0\0\0\x63\0\0\x1F\x40\0\0\0\1\0\0\0\0\0\0\0\0"sv),
        {"AU: no loaded decoder reads it", kTrySndfile},
        {"AU: " VRL_TEST_DAMAGED("Format not recognised."), kDamaged});
    add("head.caf", Text("caff\0\1\0\0"sv), {"CAF: no loaded decoder reads it", kTrySndfile},
        {"CAF: " VRL_TEST_DAMAGED("Format not recognised."), kDamaged});
    add("head.flac", Text("fLaC\0\0\0\x22"sv), {"FLAC: no loaded decoder reads it", kTrySndfile},
        {"FLAC: " VRL_TEST_DAMAGED("Format not recognised."), kDamaged});
    add("song.flac", ReadFile(SoundPath("16.flac")), {"FLAC: no loaded decoder reads it", kTrySndfile}, read);
    add("cut.ogg", Cut("stereo.ogg", 100), {"Ogg Vorbis: no loaded decoder reads it", kTrySndfile},
        {"Ogg: " VRL_TEST_DAMAGED("Supported file format but file is malformed."), kDamaged});
    add("head.opus", Ogg("OpusHead"), {"Ogg Opus: no loaded decoder reads it", kTrySndfile},
        {"Ogg: " VRL_TEST_DAMAGED("File contains data in an unimplemented format."), kDamaged});
    add("theora.ogv", Ogg("\x80theora"), {"Ogg: no loaded decoder reads it", kSeeCodecs},
        {"Ogg: " VRL_TEST_DAMAGED("File contains data in an unimplemented format."), kDamaged});
    add("tag.mp3", Text("ID3\4\0\0\0\0\0\x0A\0\0\0\0\0\0\0\0\0\0"sv),
        {"MP3: no loaded decoder reads it", kTrySndfile}, {"MP3: no loaded decoder reads it", kDamaged});
    add("song.mp3", ReadFile(SoundPath("cbr.mp3")), {"MP3: no loaded decoder reads it", kTrySndfile}, read);
    both("song.aac", "\xFF\xF1\x50\x80\x02\x1F\xFC", {"AAC: no loaded decoder reads it", kTrySystem});
    both("song.m4a",
         Text("\0\0\0\x20"
              "ftypM4A \0\0\0\0"sv),
         {"M4A: no loaded decoder reads it", kTrySystem});
    both("film.mp4",
         Text("\0\0\0\x18"
              "ftypisom\0\0\0\0"sv),
         {"MP4: no loaded decoder reads it", kTrySystem});
    both("picture.png", Text("\x89PNG\r\n\x1A\n\0\0\0\rIHDR"sv),
         {"PNG: no loaded decoder reads it", kTryImage});
    both("picture.jpg", Text("\xFF\xD8\xFF\xE0\0\x10JFIF"sv),
         {"JPEG: no loaded decoder reads it", kTryImage});
    both("film.y4m", "YUV4MPEG2 W4 H4\n", {"YUV4MPEG2: no loaded decoder reads it", kTryY4m});
    both("film.avi", Text("RIFF\4\0\0\0AVI LIST"sv), {"AVI: no loaded decoder reads it", kSeeCodecs});
    both("film.mkv", "\x1A\x45\xDF\xA3", {"Matroska: no loaded decoder reads it", kSeeCodecs});
    both("song.mid", Text("MThd\0\0\0\6"sv), {"MIDI: no loaded decoder reads it", kSeeCodecs});
    both("files.zip", "PK\x03\x04", {"ZIP: no loaded decoder reads it", kSeeCodecs});
    both("pages.pdf", "%PDF-1.7", {"PDF: no loaded decoder reads it", kSeeCodecs});
    return rows;
}

/// A folder with this plug-in alone, and on Windows the library that it needs.
class SndfileExplanations : public testing::Test {
protected:
    SndfileExplanations() {
        fs::create_directories(plugins_);
        for (const auto& entry : fs::directory_iterator(BesideProgram("vorlund-plugins")))
            if (entry.path().stem().string().ends_with("sndfile")) fs::copy(entry.path(), plugins_);
    }

    void Expect(const TRow& row, const TSentence& sentence, std::vector<std::string> arguments) const {
        const std::string path = (folder_.GetPath() / row.name).string();
        WriteFile(path, row.bytes);
        arguments.insert(arguments.end(), {"decode", path});
        TChildEnd end = RunChild("vorlund", {.arguments = arguments});
        std::erase(end.errors, '\r');
        EXPECT_EQ(end.exitCode, sentence.reason ? 1U : 0U) << row.name;
        const std::string wanted = "vorlund: Cannot decode '" + path + "': ";
        EXPECT_EQ(end.errors, sentence.reason ? wanted + sentence.reason + sentence.advice + "\n" : "")
            << row.name;
        EXPECT_EQ(end.output.empty(), sentence.reason != nullptr) << row.name;
    }

    CTemporaryFolder folder_;
    const fs::path plugins_ = folder_.GetPath() / "plugins";
};

TEST_F(SndfileExplanations, EachFileGetsItsSentence) {
    const std::vector<TRow> rows = MakeRows();
    EXPECT_GE(rows.size(), 30U);
    for (const TRow& row : rows) {
        Expect(row, row.without, {"--no-plugins"});
        Expect(row, row.with, {"--no-plugins", "--plugin-path", plugins_.string()});
    }
}

TEST_F(SndfileExplanations, PluginThatIsThereAndLeftOutIsTheReason) {
    fs::path file;
    for (const auto& entry : fs::directory_iterator(plugins_))
        if (entry.path().stem() == "sndfile") file = entry.path();
    const std::string image = ReadFile(file);
    WriteFile(file, image.substr(0, image.size() / 4));
    const std::string path = (folder_.GetPath() / "song.flac").string();
    WriteFile(path, "fLaC");
    const TChildEnd end = RunChild(
        "vorlund", {.arguments = {"--no-plugins", "--plugin-path", plugins_.string(), "decode", path}});
    EXPECT_EQ(end.exitCode, 1U);
    const std::string sentence =
        "FLAC: no loaded decoder reads it; try the plug-in 'sndfile', which is left out: "
        "it was cut short: " +
        std::to_string(image.size() / 4) + " of ";
    EXPECT_NE(end.errors.find(sentence), std::string::npos) << end.errors;
}

} // namespace
} // namespace vorlund::test
