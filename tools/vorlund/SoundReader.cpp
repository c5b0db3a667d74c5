#include "SoundReader.h"

#include "Diagnostics.h"

#include <vorlund/AudioConversion.h>
#include <vorlund/DecoderSupport.h>

#include <algorithm>
#include <vector>

using namespace vorlund;

namespace {

constexpr std::size_t kBlockSize = 64 * 1024;

} // namespace

std::size_t Fill(IInputStream& stream, void* buffer, std::size_t size) {
    auto* const bytes = static_cast<std::uint8_t*>(buffer);
    std::size_t filled = 0;
    while (filled < size) {
        const std::uint64_t count = stream.Read(bytes + filled, size - filled);
        if (count == 0) break;
        filled += static_cast<std::size_t>(count);
    }
    return filled;
}

std::uint64_t ReadSound(IInputStream& decoded, std::span<CSoundSink* const> sinks,
                        const std::function<void(std::uint64_t done)>& onBlock) {
    const TDataFormat_AudioPcm format = static_cast<const TDataFormat_AudioPcm&>(decoded.GetFormat());
    const std::size_t frameSize = format.GetBlockSize();
    if (frameSize == 0) throw TProgramError{VRL_L("The decoded sound has no samples")};
    const TAudioConversion conversion{
        .from = format.sampleFormat, .to = BUFFER_FORMAT_FLOAT, .channels = format.channels};
    std::vector<std::uint8_t> bytes(std::max(kBlockSize / frameSize, std::size_t{1}) * frameSize);
    std::vector<float> samples(bytes.size() / format.GetSampleSize());
    std::uint64_t total = 0;
    while (const std::size_t frames = Fill(decoded, bytes.data(), bytes.size()) / frameSize) {
        ConvertAudio(samples.data(), bytes.data(), frames, conversion);
        for (CSoundSink* const sink : sinks) sink->Write(samples.data(), frames);
        total += frames;
        onBlock(total * frameSize);
    }
    return total;
}
