/// \file
/// Decodes the files that prepare.sh has made and compares the PCM, byte for byte, with what other programs
/// read. usage: vorlund_real_files FOLDER
#include "support/Text.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Debug.h>
#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>
#include <vorlund/WavDecoder.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

using namespace vorlund;

namespace {

/// One line of files.txt.
struct TRow {
    std::string name;
    bool isAccepted;
    TDataFormat_AudioPcm format;
    std::string reason;
};

TRow Parse(const std::string& line) {
    std::istringstream words(line);
    TRow row{};
    std::string outcome;
    words >> row.name >> outcome;
    row.isAccepted = outcome == "ok";
    if (row.isAccepted) {
        int bits = 0;
        words >> row.format.channels >> row.format.samplesPerSec >> bits;
        row.format.sampleFormat = bits == 8 ? SAMPLE_FORMAT_8BIT : SAMPLE_FORMAT_16BIT;
    } else {
        words.get();
        std::getline(words, row.reason);
    }
    return row;
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string ReadToEnd(IInputStream& stream) {
    std::string bytes;
    std::string block(10000, '\0');
    while (const std::uint64_t count = stream.Read(block.data(), block.size())) {
        bytes.append(block, 0, static_cast<std::size_t>(count));
    }
    return bytes;
}

std::string Describe(const TDataFormat_AudioPcm& format) {
    return "code " + std::to_string(format.sampleFormat) + ", channels " + std::to_string(format.channels) +
           ", rate " + std::to_string(format.samplesPerSec);
}

/// What is wrong with the decoding of an acceptable file, or empty.
std::string CheckAccepted(const TRow& row, const wstring& path, const std::string& pcm) {
    const auto stream = CRefPtr<IInputStream>::Adopt(
        v.GetCodecClassStore().DecodeFile(path.c_str(), TDataFormat_AudioPcm::FormatId));
    const auto& format = static_cast<const TDataFormat_AudioPcm&>(stream->GetFormat());
    if (Describe(format) != Describe(row.format)) return "the format is " + Describe(format);
    const std::string decoded = ReadToEnd(*stream);
    if (pcm.empty()) return "there is nothing to compare with";
    if (decoded != pcm) {
        return std::to_string(decoded.size()) + " bytes differ from the " + std::to_string(pcm.size()) +
               " that they should be";
    }
    // What is read again is the same.
    stream->Seek(static_cast<std::int64_t>(pcm.size() / 3));
    if (ReadToEnd(*stream) != pcm.substr(pcm.size() / 3)) return "the bytes differ after a seek";
    return "";
}

/// What is wrong with the refusal of another file, or empty.
std::string CheckRefused(const TRow& row, const wstring& path) {
    try {
        CRefPtr<IInputStream>::Adopt(
            v.GetCodecClassStore().DecodeFile(path.c_str(), TDataFormat_AudioPcm::FormatId));
        return "it was decoded";
    } catch (const CDataFormatException& exception) {
        const std::string reason = test::Narrow(exception.GetReason());
        const std::string expected = "Cannot decode file '" + test::Narrow(path) + "'";
        if (reason != expected.substr(0, 255)) return "the reason is " + reason;
    }
    const CInputStreamSelector file(path.c_str());
    const auto decoder = CreateAs<IWavDecoder>(classid::CWavDecoder);
    try {
        decoder->Connect(file.GetInputStreamTmp());
        return "the decoder connected";
    } catch (const CDataFormatException& exception) {
        const std::string reason = test::Narrow(exception.GetReason());
        return reason == row.reason ? "" : "the decoder's reason is " + reason;
    }
}

std::string Check(const TRow& row, const std::string& folder) {
    const std::string stem = folder + '/' + row.name;
    const wstring path = PathFromUtf8((stem + ".wav").c_str());
    try {
        return row.isAccepted ? CheckAccepted(row, path, ReadFile(stem + ".raw")) : CheckRefused(row, path);
    } catch (const CException& exception) {
        return test::Narrow(exception.ToString().GetBuffer());
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    CDebug::SetHandler(DEBUG_MESSAGE_OUTPUT, [](TDebugMessageType, const wchar*, void*) {});
    v.Init();
    const std::string folder = argv[1];
    std::ifstream list(folder + "/files.txt");
    int count = 0;
    int failures = 0;
    for (std::string line; std::getline(list, line); ++count) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        const std::string problem = Check(Parse(line), folder);
        std::printf("%s %s%s%s\n", problem.empty() ? "good" : "BAD ", line.c_str(),
                    problem.empty() ? "" : ": ", problem.c_str());
        failures += !problem.empty();
    }
    v.Close();
    std::printf("%d files, %d of them wrong\n", count, failures);
    return count == 0 || failures > 0;
}
