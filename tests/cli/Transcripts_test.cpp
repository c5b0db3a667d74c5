// Whole runs of the program: what tests/cli/transcripts/*.txt says was answered before is what is answered
// now, on every system. In those files:
//
//   # text         a comment
//   @win32         the next run is for this system only (@posix for the others); @display: it needs a display
//   > arguments    a run, with --no-plugins in front; {here} is the folder of the input files, {plugin} that
//   of the plug-in for windows exit 0         and what came of it: the exit code, the lines of both outputs,
//   or the size and the hash of an out|, err|     output that is no text, and the files that are new or
//   changed out 12 hash file NAME 12 hash
//
// With VORLUND_RECORD_TRANSCRIPTS=FOLDER in the environment, the files there are written anew from what the
// program answers. The difference is part of the review.
#include "cli/DecodeCommand.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <regex>
#include <sstream>

namespace vorlund::test {
namespace {

/// A run as the file has it: the lines in front of it, the arguments, the lines of the result.
struct TTranscript {
    std::string head;
    std::string arguments;
    std::string result;

    bool Has(const char* mark) const { return head.find(mark) != std::string::npos; }
};

bool IsWindows() {
    return sizeof(wchar_t) == 2;
}

std::vector<TTranscript> ReadTranscripts(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<TTranscript> transcripts;
    std::string head;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(">")) {
            transcripts.push_back({std::exchange(head, {}), line.substr(1), {}});
        } else if (line.empty() || line[0] == '#' || line[0] == '@') {
            head += line + "\n";
        } else if (!transcripts.empty()) {
            transcripts.back().result += line + "\n";
        }
    }
    return transcripts;
}

std::string Replace(std::string text, const std::string& what, const std::string& with) {
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size())
        text.replace(at, what.size(), with);
    return text;
}

/// The size and the FNV-1a hash.
std::string Digest(const std::string& bytes) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char byte : bytes) hash = (hash ^ static_cast<std::uint8_t>(byte)) * 0x100000001B3;
    char text[64];
    std::snprintf(text, sizeof text, "%zu %016" PRIx64, bytes.size(), hash);
    return text;
}

/// An output, line by line with the mark `name|` in front; what is no text becomes its digest.
std::string DescribeOutput(const std::string& name, const std::string& output) {
    if (output.empty()) return {};
    const auto isBinary = [](char unit) {
        const auto byte = static_cast<std::uint8_t>(unit);
        return byte >= 0x7F || (byte < ' ' && unit != '\n' && unit != '\r');
    };
    if (std::any_of(output.begin(), output.end(), isBinary)) return name + " " + Digest(output) + "\n";
    std::istringstream lines(WithoutReturns(output));
    std::string text;
    for (std::string line; std::getline(lines, line);) text += name + "|" + line + "\n";
    return text;
}

class Transcripts : public DecodeCommand, public testing::WithParamInterface<const char*> {
protected:
    Transcripts() {
        const auto make = [this](const std::string& name, const TWavFormat& format, std::size_t size) {
            inputs_[name] = Text(PlainWav(format, Ramp(size)));
        };
        make("stereo.wav", {.channels = 2, .samplesPerSec = 22050}, 8000);
        make("mono8.wav", {.samplesPerSec = 8000, .bits = 8}, 1001);
        make("six.wav", {.channels = 6, .samplesPerSec = 48000}, 12 * 700);
        make("three.wav", {.channels = 3}, 600);
        make("none.wav", {.channels = 0}, 600);
        make("torn.wav", {.channels = 2}, 4099);
        make("empty-data.wav", {.channels = 2}, 0);
        make("deep.wav", {.bits = 24}, 6);
        make("float.wav", {.tag = 3, .bits = 32}, 8);
        inputs_["chunks.wav"] = Text(CWavBuilder()
                                         .Format({})
                                         .Chunk("LIST", Ramp(10))
                                         .Chunk("data", Ramp(100))
                                         .Chunk("id3 ", {})
                                         .Build());
        inputs_["long.wav"] = Text(CWavBuilder().Format({}).Declare("data", 1000000, Ramp(80)).Build());
        inputs_["no-format.wav"] = Text(CWavBuilder().Chunk("data", Ramp(8)).Build());
        inputs_["no-data.wav"] = Text(CWavBuilder().Format({}).Build());
        inputs_["words.txt"] = "no sound in here, only words";
        inputs_["video.y4m"] = "YUV4MPEG2 W2 H2 F25:1 Cmono\nFRAME\nabcd";
        inputs_["nothing"] = "";
    }

    static std::string Text(const TBytes& bytes) { return {bytes.begin(), bytes.end()}; }

    void MakeInputs() const {
        for (const auto& [name, bytes] : inputs_)
            std::ofstream(At(name), std::ios::binary)
                .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }

    /// The words of a command line, with folders in the place of their names.
    std::vector<std::string> GetArguments(const TTranscript& transcript) const {
        std::istringstream words(transcript.arguments);
        std::vector<std::string> arguments;
        for (std::string word; words >> word;) {
            // The separator of the system, as the program's messages have it.
            word = Replace(word, "{here}/", At(""));
            word = Replace(word, "{plugin}", BesideProgram("vorlund-plugins").string());
            arguments.push_back(word == "''" ? std::string() : word);
        }
        return arguments;
    }

    /// Runs the program over fresh inputs and writes down what came of it.
    std::string Play(const TTranscript& transcript) const {
        MakeInputs();
        const TChildEnd end = RunProgramAlone({.arguments = GetArguments(transcript)});
        std::string result = end.hasTimedOut ? "timed out\n"
                             : end.signal    ? "signal " + std::to_string(end.signal) + "\n"
                                             : "exit " + std::to_string(end.exitCode) + "\n";
        result += DescribeOutput("out", WithoutFigures(end.output));
        result += DescribeOutput("err", Replace(end.errors, At(""), "{here}/"));
        for (const std::string& name : List()) {
            const std::string bytes = Text(Load(name));
            const auto input = inputs_.find(name);
            if (input == inputs_.end() || input->second != bytes)
                result += "file " + name + " " + Digest(bytes) + "\n";
            std::filesystem::remove(At(name));
        }
        return result;
    }

    /// Without the test's folder, and without figures that depend on the machine's speed.
    std::string WithoutFigures(const std::string& output) const {
        if (output.find("per second") == std::string::npos) return Replace(output, At(""), "{here}/");
        return std::regex_replace(output, std::regex("(Dropped|Rate)( +)[0-9.]+"), "$1$2#");
    }

    static bool IsForThisMachine(const TTranscript& transcript) {
        if (transcript.Has("@win32\n") && !IsWindows()) return false;
        if (transcript.Has("@posix\n") && IsWindows()) return false;
        return !transcript.Has("@display\n") ||
               ((IsWindows() || std::getenv("DISPLAY")) &&
                exists(BesideProgram(IsWindows() ? "vorlund-plugins/window-output.dll"
                                                 : "vorlund-plugins/window-output.so")));
    }

private:
    std::map<std::string, std::string> inputs_;
};

TEST_P(Transcripts, AreAsTheyWere) {
    const std::string name = std::string(GetParam()) + ".txt";
    std::vector<TTranscript> transcripts = ReadTranscripts(BesideProgram("transcripts") / name);
    ASSERT_FALSE(transcripts.empty()) << name;

    const char* const recording = std::getenv("VORLUND_RECORD_TRANSCRIPTS");
    for (TTranscript& transcript : transcripts) {
        if (!IsForThisMachine(transcript)) continue;
        const std::string result = Play(transcript);
        if (recording) {
            transcript.result = result;
        } else {
            EXPECT_EQ(result, transcript.result) << "vorlund " << transcript.arguments;
        }
    }
    if (!recording) return;
    std::ofstream file(std::filesystem::path(recording) / name, std::ios::binary);
    for (const TTranscript& transcript : transcripts)
        file << transcript.head << ">" << transcript.arguments << "\n" << transcript.result;
    ADD_FAILURE() << name << " was written, not compared";
}

INSTANTIATE_TEST_SUITE_P(All, Transcripts,
                         testing::Values("program", "decode", "play", "random", "plasma", "window"),
                         [](const auto& row) { return std::string(row.param); });

} // namespace
} // namespace vorlund::test
