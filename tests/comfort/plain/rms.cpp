// How loud each second of a recording is, as examples/07-rms tells it, without the headers of comfort, and
// for samples of 8 and 16 bits alone.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>
using namespace vorlund;

void PrintLevels(const wchar* path) {
    const CInputStreamSelector file(path);
    IInputStream* const stream = file.DecodeStream(TDataFormat_AudioPcm::FormatId);
    try {
        const TDataFormat& format = stream->GetFormat();
        if (format.id != TDataFormat_AudioPcm::FormatId || format.size < sizeof(TDataFormat_AudioPcm))
            throw CDataFormatException(VRL_L("PrintLevels"), VRL_L("rms"), 0, VRL_L("No PCM"));
        const auto& pcm = static_cast<const TDataFormat_AudioPcm&>(format);
        const bool isWide = pcm.sampleFormat == SAMPLE_FORMAT_16BIT;
        if (!isWide && pcm.sampleFormat != SAMPLE_FORMAT_8BIT)
            throw CDataFormatException(VRL_L("PrintLevels"), VRL_L("rms"), 0, VRL_L("Other samples"));
        const std::size_t size = isWide ? 2 : 1;
        std::vector<unsigned char> second(pcm.samplesPerSec * pcm.channels * size);
        for (int number = 0;; ++number) {
            std::size_t filled = 0;
            while (filled < second.size()) {
                const std::uint64_t got = stream->Read(second.data() + filled, second.size() - filled);
                if (got == 0) break;
                filled += static_cast<std::size_t>(got);
            }
            const std::size_t count = filled / (size * pcm.channels) * pcm.channels;
            if (count == 0) break;
            double sum = 0;
            for (std::size_t i = 0; i < count; ++i) {
                const unsigned char* const bytes = second.data() + i * size;
                const double sample = isWide ? static_cast<std::int16_t>(bytes[0] | bytes[1] << 8) / 32768.0
                                             : (bytes[0] - 128) / 128.0;
                sum += sample * sample;
            }
            const double level = 20 * std::log10(std::sqrt(sum / static_cast<double>(count)));
            std::printf("%3d s  %6.1f dB\n", number, level);
        }
    } catch (...) {
        stream->Release();
        throw;
    }
    stream->Release();
}

int main(int argc, char** argv) {
    try {
        v.Init();
        PrintLevels(PathFromUtf8(argc > 1 ? argv[1] : "strings.wav").c_str());
        v.Close();
        return 0;
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        v.Close();
        return 1;
    }
}
