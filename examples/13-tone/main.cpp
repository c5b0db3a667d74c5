// A tone generator as a stream: whoever reads sound can read it, and whoever knows its name can make one.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <vorlund/All.h>
using namespace vorlund;

/// Two seconds of a tone: PCM of 16 bits, mono. Its samples are computed when they are read.
class CTone : public CInputStreamImpl<IInputStream> {
public:
    static constexpr CId ClassId{0x2C7E91B4, 0x60D34A8F, 0x95F1C07A, 0xE83B6D25};

    const TDataFormat& GetFormat() override { return format_; }
    std::int64_t GetLength() override { return kSeconds * kRate * 2; }
    std::int64_t Tell() override { return position_; }
    void Seek(std::int64_t position) override {
        position_ = std::clamp<std::int64_t>(position, 0, GetLength());
    }
    bool Eof() override { return position_ == GetLength(); }
    void Skip(std::uint64_t count) override {
        position_ += static_cast<std::int64_t>(std::min(count, GetRest()));
    }
    using CInputStreamImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        if (!buffer) return CInputStreamImpl::Read(buffer, size);
        const std::span bytes(static_cast<std::uint8_t*>(buffer),
                              static_cast<std::size_t>(std::min(size, GetRest())));
        for (std::uint8_t& byte : bytes) byte = ComputeByte(position_++);
        return bytes.size();
    }

private:
    static constexpr int kRate = 44100;
    static constexpr int kSeconds = 2;
    static constexpr double kFrequency = 440;

    std::uint64_t GetRest() { return static_cast<std::uint64_t>(GetLength() - position_); }
    /// Readers may ask for half a sample.
    static std::uint8_t ComputeByte(std::int64_t position) {
        const std::int64_t frame = position / 2;
        const double time = static_cast<double>(frame) / kRate;
        const long sample = std::lround(16384 * std::sin(2 * std::numbers::pi * kFrequency * time));
        return static_cast<std::uint8_t>(position % 2 == 0 ? sample : sample >> 8);
    }

    TDataFormat_AudioPcm format_{SAMPLE_FORMAT_16BIT, 1, kRate};
    std::int64_t position_ = 0;
};

void PrintTone() {
    v.GetClassStore().RegisterClassVrl({CTone::ClassId, VRL_L("example::CTone"), &NewObject<CTone>});
    // Plug-ins and other parts of a program need to know the name, or the identifier, and nothing else.
    const auto tone = CRefPtr<IObject>::Adopt(v.GetClassStore().CreateObject(VRL_L("example::CTone")));
    CFrameReader sound(tone.Query<IInputStream>());
    const std::vector<float> samples = sound.ReadRest();
    int waves = 0;
    for (std::size_t i = 1; i < samples.size(); ++i) waves += samples[i - 1] < 0 && samples[i] >= 0;
    std::printf("%.1f seconds, %d waves, loudest sample %.1f dB\n", sound.GetSeconds(), waves,
                ToDecibels(*std::ranges::max_element(samples)));
}

int main() {
    try {
        const CSession session;
        PrintTone();
        return 0;
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        return 1;
    }
}
