// Outputs and inputs without hardware.
#include "faults/Scenario.h"

#include <vorlund/AudioDevices.h>
#include <vorlund/DataFormat.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamSelector.h>

#include <array>

namespace vorlund::faults {
namespace {

using TSound = std::array<unsigned char, 2048>;

/// That of the file, so that no resampler is needed.
constexpr TDataFormat_AudioPcm kSound(SAMPLE_FORMAT_16BIT, 2, 8000);

TSound MakeSound() {
    TSound sound;
    for (std::size_t index = 0; index < sound.size(); ++index)
        sound[index] = static_cast<unsigned char>(index * 7);
    return sound;
}

} // namespace

void RunAudioOutput(CResult& result) {
    CSteppedAudio audio;
    // It goes after the output that plays it.
    const CInputStreamSelector file(files.wav.c_str());
    const auto pcm = CRefPtr<IInputStream>::Adopt(file.DecodeStream(TDataFormat_AudioPcm::FormatId));
    const auto system = CRefPtr<IAudioSystem>::Adopt(audio.GetSystem());
    const auto list = CRefPtr<IObjectList>::Adopt(system->EnumerateDevices(AUDIO_DIRECTION_OUTPUT));
    const auto output = CRefPtr<IAudioOutput>::Adopt(system->CreateOutput(nullptr));
    output->OpenOutput(kSound, kDefaultAudioLatency);
    static const TSound sound = MakeSound();
    output->Write(sound.data(), sound.size());
    audio.Step(100);
    result.Add("%u devices, at %lld, ", list->GetObjectCount(),
               static_cast<long long>(output->GetPosition()));
    output->Play(pcm.Get());
    audio.SetDefaultAt(1000, VRL_L("b"));
    audio.Step(5000);
    output->Flush();
    wchar error[200];
    output->GetStreamError(error, 200);
    result.AddText(error);
    static std::array<unsigned char, 32768> played;
    for (const wchar* const device : {VRL_L("a"), VRL_L("b")})
        result.AddBytes(played.data(),
                        static_cast<std::size_t>(audio.GetPlayed(device, 0, played.data(), played.size())));
    output->Close();
}

void RunAudioFile(CResult& result) {
    static const TSound sound = MakeSound();
    const auto output = CRefPtr<IAudioOutput>::Adopt(CreateFileAudioOutput(files.output.c_str()));
    output->OpenOutput(kSound, kDefaultAudioLatency);
    result.Add("%lld bytes, ", static_cast<long long>(output->Write(sound.data(), sound.size())));
    result.Add(output->Drain() ? "drained, " : "not drained, ");
    output->Close();
    const CInputStreamSelector file(files.output.c_str());
    result.Add("%lld in the file", static_cast<long long>(file.GetInputStreamTmp()->GetLength()));
}

void RunAudioInput(CResult& result) {
    static const TSound sound = MakeSound();
    CSteppedAudio audio;
    audio.SetInput(VRL_L("a"), sound.data(), sound.size());
    const auto system = CRefPtr<IAudioSystem>::Adopt(audio.GetSystem());
    const auto input = CRefPtr<IAudioInput>::Adopt(system->CreateInput(nullptr));
    input->OpenInput(kSound, kDefaultAudioLatency);
    const auto stream = CRefPtr<IInputStream>::Adopt(input->GetStream());
    audio.Step(512);
    input->Stop();
    static TSound heard;
    result.AddBytes(heard.data(), static_cast<std::size_t>(stream->Read(heard.data(), heard.size())));
    input->Close();
}

} // namespace vorlund::faults
