// The command "decode".
#include "Chain.h"
#include "Commands.h"
#include "DecodeAdvice.h"
#include "Decoding.h"
#include "Diagnostics.h"
#include "Interrupt.h"
#include "OutputFile.h"
#include "PcmPipeline.h"
#include "Progress.h"

#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>
#include <vorlund/StreamErrors.h>
#include <vorlund/StreamSelector.h>

#include <cinttypes>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace vorlund;

namespace {

constexpr std::size_t kBlockSize = 64 * 1024;

/// The bytes that will come, when that is known: streams that do not know it say 0.
std::optional<std::uint64_t> GetLength(const CPcmPipeline& pcm, IInputStream& decoded) {
    const std::int64_t length = pcm.GetEnd().GetLength();
    if (length > 0) return static_cast<std::uint64_t>(length);
    return decoded.GetLength() > 0 || decoded.Eof() ? std::optional<std::uint64_t>(0) : std::nullopt;
}

/// Reads the stream to its end; returns the bytes read.
std::uint64_t Copy(CPcmPipeline& from, COutputFile& to) {
    const std::int64_t length = from.GetEnd().GetLength();
    CProgress progress(length > 0 ? static_cast<std::uint64_t>(length) : 0);
    const CInterrupt interrupt;
    std::vector<std::uint8_t> block(kBlockSize);
    std::uint64_t total = 0;
    while (const std::uint64_t count = from.Read(block.data(), block.size())) {
        to.Write(block.data(), count);
        total += count;
        progress.Show(total);
        if (interrupt.IsRaised()) throw TProgramError{VRL_L("Interrupted")};
    }
    return total;
}

/// Raises when data have been lost: the file could not be read, or it ended before the length that it had,
/// with less in it than the decoder was promised. A file that declares more than it has is another thing.
void CheckWhole(const CPcmPipeline& pcm, IInputStream& decoded, IInputStream& source, std::uint64_t bytes,
                const wstring& path) {
    CheckReading(source, path);
    const std::int64_t length = pcm.GetEnd().GetLength();
    if (length <= 0 || bytes >= static_cast<std::uint64_t>(length) || decoded.Eof() || source.Eof()) return;
    throw TProgramError{VRL_L("Cannot read '") + path + VRL_L("': It has become shorter")};
}

std::string FormatBits(const TDataFormat_AudioPcm& format) {
    const std::string bits = std::to_string(format.GetSampleSize() * 8);
    return format.sampleFormat == SAMPLE_FORMAT_FLOAT ? bits + " float" : bits;
}

std::string FormatDuration(const TDataFormat_AudioPcm& format, std::uint64_t bytes) {
    const std::uint32_t bytesPerSec = format.GetBytesPerSec();
    if (bytesPerSec == 0) return "unknown";
    char text[32];
    std::snprintf(text, sizeof text, "%.3f s", static_cast<double>(bytes) / bytesPerSec);
    return text;
}

} // namespace

void RunDecode(const TDecodeOptions& options, CDiagnostics& diagnostics) {
    if (options.output == "-") diagnostics.KeepStandardOutputFree();
    const wstring path = PathFromUtf8(options.input.c_str());
    std::unique_ptr<COutputFile> output;
    TDataFormat_AudioPcm format;
    std::uint64_t bytes = 0;
    wstring chain;
    {
        const CInputStreamSelector source(path.c_str());
        const auto decoded = OpenDecoded(source, path);
        CPcmPipeline pcm(decoded, options.target, path);
        format = pcm.GetFormat();
        output = COutputFile::Create(options.output, options.raw, format, GetLength(pcm, *decoded));
        bytes = Copy(pcm, *output);
        CheckWhole(pcm, *decoded, *source.GetInputStreamTmp(), bytes, path);
        chain = DescribeChain(ListChain(pcm.GetEnd()));
    }
    const wstring chunks = DescribeChunks(path.c_str());
    output->Finish();

    diagnostics.PrintField("File", path);
    diagnostics.PrintField("Format", VRL_L("audio PCM ") + format.id.ToString());
    diagnostics.PrintField("Channels", std::to_string(format.channels));
    diagnostics.PrintField("Rate", std::to_string(format.samplesPerSec) + " Hz");
    diagnostics.PrintField("Bits", FormatBits(format));
    diagnostics.PrintField("Duration", FormatDuration(format, bytes));
    diagnostics.PrintField("Bytes", std::to_string(bytes));
    if (!chunks.empty()) diagnostics.PrintField("Chunks", chunks);
    diagnostics.PrintField("Chain", chain);
    if (!options.output.empty() && options.output != "-") {
        diagnostics.PrintField("Output", PathFromUtf8(options.output.c_str()));
    }
    // The report may take the last memory, and then nothing stays. The input is closed by now, so the output
    // may take its place.
    output->Keep();
}
