// Half a second of what an input hears, as a WAV file. The input is one for tests, whose time goes on only
// when it is told to, so that the recording is the same each time; one of the plug-in audio would be used in
// the same way.
#include <cstdio>
#include <numeric>
#include <vorlund/All.h>
using namespace vorlund;

const TDataFormat_AudioPcm kFormat{SAMPLE_FORMAT_16BIT, 1, 48000};

/// Everything that the input gives until it is stopped.
void Record(IAudioInput& input, IOutputStream* file) {
    CWavWriter writer(file, TWavWriterFormat(kFormat));
    const auto heard = CRefPtr<IInputStream>::Adopt(input.GetStream());
    std::array<std::int16_t, 4096> block;
    while (const std::size_t count = ReadValues(*heard.Get(), block)) writer.Write(block.data(), count * 2);
    writer.Finish();
}

void RecordAndPrint() {
    CSteppedAudio audio;
    // The device hears the numbers 0, 1, 2 and so on.
    std::vector<std::int16_t> numbers(30000);
    std::iota(numbers.begin(), numbers.end(), std::int16_t{0});
    audio.SetInput(VRL_L("a"), numbers.data(), numbers.size() * 2);
    const auto system = CRefPtr<IAudioSystem>::Adopt(audio.GetSystem());
    const auto input = CRefPtr<IAudioInput>::Adopt(system->CreateInput(VRL_L("a")));
    input->OpenInput(kFormat, kDefaultAudioLatency);
    audio.Step(24000);
    input->Stop();

    const auto file = CRefPtr<IMemoryOutputStream>::Adopt(CreateMemoryOutput());
    Record(*input.Get(), file.Get());
    std::printf("%llu frames recorded, a file of %lld bytes\n",
                static_cast<unsigned long long>(input->GetPosition()),
                static_cast<long long>(file->GetLength()));
    const auto written = CRefPtr<IMemoryInputStream>::Adopt(
        CreateMemoryInput(file->GetData(), static_cast<std::uint64_t>(file->GetLength())));
    CFrameReader sound(CRefPtr<IInputStream>::Adopt(
        v.GetCodecClassStore().DecodeStream(written.Get(), TDataFormat_AudioPcm::FormatId)));
    const std::vector<float> samples = sound.ReadRest();
    std::printf("the last one is %.0f\n", double{samples.back()} * 32768);
}

int main() {
    try {
        const CSession session;
        RecordAndPrint();
        return 0;
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        return 1;
    }
}
