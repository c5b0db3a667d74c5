// A filter of one's own: sound that grows from nothing within its first second, and its loudest sample in
// each quarter of that.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vorlund/All.h>
using namespace vorlund;

/// PCM of 16 bits, faded in. Its position must not be changed while it fades.
class CFadeIn : public CInputFilterImpl<IInputStreamFilter> {
public:
    static constexpr CId ClassId{0x3B0E5C17, 0x8A4D4F02, 0x9C61D7E8, 0x24F5A0B9};

    const TDataFormat& GetFormat() override { return stream_->GetFormat(); }
    using CInputFilterImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        const std::span samples(static_cast<std::int16_t*>(buffer), static_cast<std::size_t>(size / 2));
        const std::size_t count = ReadValues(*stream_, samples);
        for (std::int16_t& sample : samples.first(count))
            sample = static_cast<std::int16_t>(sample * std::min(1.0, done_++ / length_));
        return count * 2;
    }

protected:
    explicit CFadeIn(double length) : length_(length) {}
    ~CFadeIn() = default;

private:
    double length_, done_ = 0;
};

void PrintFade(const std::string& path) {
    const CInputStreamSelector file(PathFromUtf8(path.c_str()).c_str());
    const auto pcm = CRefPtr<IInputStream>::Adopt(file.DecodeStream(TDataFormat_AudioPcm::FormatId));
    const auto* const format = FormatCast<TDataFormat_AudioPcm>(pcm->GetFormat());
    if (!format || format->sampleFormat != SAMPLE_FORMAT_16BIT)
        throw CDataFormatException(VRL_L("PrintFade"), VRL_L("filter"), 0, VRL_L("No PCM of 16 bits"));
    std::vector<float> second(format->samplesPerSec * format->channels);
    const auto fade = MakeObject<CFadeIn>(static_cast<double>(second.size()));
    fade->Connect(pcm.Get());
    CFrameReader(fade).Read(second);
    for (std::size_t i = 0; i < 4; ++i) {
        const auto quarter = std::span(second).subspan(i * (second.size() / 4), second.size() / 4);
        const float peak =
            std::abs(std::ranges::max(quarter, {}, [](float sample) { return std::abs(sample); }));
        std::printf("%.2f s  %.3f\n", static_cast<double>(i) / 4, double{peak});
    }
}

int main(int argc, char** argv) {
    try {
        const CSession session;
        const std::vector<std::string> files = GetUtf8Arguments(argc, argv);
        PrintFade(files.empty() ? "strings.wav" : files[0]);
        return 0;
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        return 1;
    }
}
