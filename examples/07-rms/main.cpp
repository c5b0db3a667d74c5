// How loud each second of a recording is: the root of the mean square of its samples.
#include <cmath>
#include <cstdio>
#include <vorlund/All.h>
using namespace vorlund;

void PrintLevels(const std::string& path) {
    const CInputStreamSelector file(PathFromUtf8(path.c_str()).c_str());
    CFrameReader sound(CRefPtr<IInputStream>::Adopt(file.DecodeStream(TDataFormat_AudioPcm::FormatId)));
    std::vector<float> second(sound.GetFormat().samplesPerSec * sound.GetChannels());
    std::size_t frames = 0;
    for (int number = 0; (frames = sound.Read(second)) > 0; ++number) {
        double sum = 0;
        for (const float sample : std::span(second).first(frames * sound.GetChannels()))
            sum += double{sample} * sample;
        const auto count = static_cast<double>(frames * sound.GetChannels());
        std::printf("%3d s  %6.1f dB\n", number, ToDecibels(std::sqrt(sum / count)));
    }
}

int main(int argc, char** argv) {
    try {
        const CSession session;
        const std::vector<std::string> files = GetUtf8Arguments(argc, argv);
        PrintLevels(files.empty() ? "strings.wav" : files[0]);
        return 0;
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        return 1;
    }
}
