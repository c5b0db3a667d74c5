// A filter of one's own, as in examples/10-filter, without the headers of comfort, and for 16 bits alone.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/StreamFilterImpl.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>
using namespace vorlund;

/// Fills the buffer as far as the stream goes.
std::uint64_t ReadWhole(IInputStream* stream, void* buffer, std::uint64_t size) {
    std::uint64_t filled = 0;
    while (filled < size) {
        const std::uint64_t got = stream->Read(static_cast<char*>(buffer) + filled, size - filled);
        if (got == 0) break;
        filled += got;
    }
    return filled;
}

/// PCM of 16 bits, faded in. Its position must not be changed while it fades.
class CFadeIn : public CInputFilterImpl<IInputStreamFilter> {
public:
    static constexpr CId ClassId{0x3B0E5C17, 0x8A4D4F02, 0x9C61D7E8, 0x24F5A0B9};

    /// The objects are made without arguments.
    void SetLength(double length) { length_ = length; }

    const TDataFormat& GetFormat() override { return stream_->GetFormat(); }
    using CInputFilterImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        const std::uint64_t count = ReadWhole(stream_.Get(), buffer, size / 2 * 2) / 2;
        auto* const samples = static_cast<std::int16_t*>(buffer);
        for (std::uint64_t i = 0; i < count; ++i)
            samples[i] = static_cast<std::int16_t>(samples[i] * std::min(1.0, done_++ / length_));
        return count * 2;
    }

protected:
    ~CFadeIn() = default;

private:
    double length_ = 1, done_ = 0;
};

void PrintFade(const wchar* path) {
    const CInputStreamSelector file(path);
    IInputStream* const stream = file.DecodeStream(TDataFormat_AudioPcm::FormatId);
    IObject* made = nullptr;
    try {
        const TDataFormat& format = stream->GetFormat();
        const auto& pcm = static_cast<const TDataFormat_AudioPcm&>(format);
        if (format.id != TDataFormat_AudioPcm::FormatId || format.size < sizeof(TDataFormat_AudioPcm) ||
            pcm.sampleFormat != SAMPLE_FORMAT_16BIT)
            throw CDataFormatException(VRL_L("PrintFade"), VRL_L("filter"), 0, VRL_L("No PCM of 16 bits"));
        const std::uint32_t second = pcm.samplesPerSec * pcm.channels;
        made = NewObject<CFadeIn>();
        auto* const filter = static_cast<IInputStreamFilter*>(made);
        static_cast<CFadeIn*>(filter)->SetLength(second);
        filter->Connect(stream);
        std::vector<std::int16_t> samples(second);
        ReadWhole(filter, samples.data(), samples.size() * 2);
        for (std::size_t i = 0; i < 4; ++i) {
            double peak = 0;
            for (std::size_t k = 0; k < second / 4; ++k)
                peak = std::max(peak, std::abs(samples[i * (second / 4) + k] / 32768.0));
            std::printf("%.2f s  %.3f\n", static_cast<double>(i) / 4, peak);
        }
    } catch (...) {
        if (made) made->Release();
        stream->Release();
        throw;
    }
    made->Release();
    stream->Release();
}

int main(int argc, char** argv) {
    try {
        v.Init();
        PrintFade(PathFromUtf8(argc > 1 ? argv[1] : "strings.wav").c_str());
        v.Close();
        return 0;
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        v.Close();
        return 1;
    }
}
