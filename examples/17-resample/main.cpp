// A recording at another rate, in mono, with 16 bits: a chain of two filters behind the decoder, written as a
// WAV file.
#include <cstdio>
#include <filesystem>
#include <vorlund/All.h>
using namespace vorlund;

void PrintFormat(IInputStream& pcm) {
    const auto* const format = FormatCast<TDataFormat_AudioPcm>(pcm.GetFormat());
    if (!format) return;
    std::printf("%5u Hz, %u x %2u bits: %lld frames\n", format->samplesPerSec, format->channels,
                8 * format->GetSampleSize(),
                static_cast<long long>(pcm.GetLength() / format->GetBlockSize()));
}

void Convert(const std::string& from, const std::string& to) {
    const CInputStreamSelector file(PathFromUtf8(from.c_str()).c_str());
    const auto source = CRefPtr<IInputStream>::Adopt(file.DecodeStream(TDataFormat_AudioPcm::FormatId));
    // The plug-in resample has the class.
    const auto resampler = CreateAs<IResampler>(kResamplerClassId);
    resampler->SetTarget(48000);
    resampler->Connect(source.Get());
    // Floats become integers at the end, once, so that rounding and clipping happen once.
    const auto result = CRefPtr<IInputStreamFilter>::Adopt(CreateAudioConverter(
        {.sampleFormat = SAMPLE_FORMAT_16BIT, .layout = CHANNEL_LAYOUT_MONO, .dither = DITHER_TRIANGULAR}));
    result->Connect(resampler.Get());
    PrintFormat(*source.Get());
    PrintFormat(*resampler.Get());
    PrintFormat(*result.Get());

    CWavWriter writer(PathFromUtf8(to.c_str()).c_str(), {WAV_SAMPLE_16BIT, 1, 48000});
    std::array<std::byte, 65536> block;
    while (const std::size_t count = ReadValues(*result.Get(), block)) writer.Write(block.data(), count);
    writer.Close();
}

int main(int argc, char** argv) {
    try {
        const CSession session;
        const std::vector<std::string> words = GetUtf8Arguments(argc, argv);
        if (words.size() == 2) {
            Convert(words[0], words[1]);
            return 0;
        }
        const std::filesystem::path copy =
            std::filesystem::temp_directory_path() / "vorlund-example-resampled.wav";
        Convert("strings.wav", copy.string());
        std::filesystem::remove(copy);
        return 0;
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        return 1;
    }
}
