// A decoder in one file: the program's own, for a format of its own, without a plug-in. The library finds it
// as it finds any other.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <numbers>
#include <vorlund/All.h>
using namespace vorlund;

constexpr TFailure kNoTune{VRL_L("CTuneDecoder::Connect"), VRL_L("14-decoder/main"), 1, VRL_L("No tune")};

/// Tunes are text: "TUNE", a blank, and a letter for each note, A to G from the A below middle C on; what is
/// none is a rest. They become PCM of 8 bits, mono, a fifth of a second for each letter.
class CTuneDecoder : public CInputFilterImpl<IInputStreamFilter> {
public:
    static constexpr CId ClassId{0x7D40B8E2, 0x19AC4F63, 0x8B2E57D0, 0x46F19C3A};

    void Connect(IInputStream* stream) override {
        // A search for decoders then goes on with the next one, without the price of an exception.
        const CRefusal refusal(*this);
        auto next = BeginConnect(stream);
        if (!next) return;
        if (!ReadNotes(*next)) return refusal.Raise<CDataFormatException>(kNoTune);
        stream_ = std::move(next);
    }
    const TDataFormat& GetFormat() override { return format_; }
    std::int64_t GetLength() override { return static_cast<std::int64_t>(notes_.size()) * kNoteFrames; }
    std::int64_t Tell() override { return position_; }
    void Seek(std::int64_t position) override {
        position_ = std::clamp<std::int64_t>(position, 0, GetLength());
    }
    bool Eof() override { return position_ == GetLength(); }
    void Skip(std::uint64_t count) override {
        position_ += static_cast<std::int64_t>(std::min(count, GetRest()));
    }
    using CInputFilterImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        if (!buffer) return CInputFilterImpl::Read(buffer, size);
        const std::span samples(static_cast<std::uint8_t*>(buffer),
                                static_cast<std::size_t>(std::min(size, GetRest())));
        for (std::uint8_t& sample : samples) sample = ComputeSample(position_++);
        return samples.size();
    }

private:
    static constexpr int kRate = 8000;
    static constexpr int kNoteFrames = kRate / 5;
    static constexpr std::size_t kMostNotes = 1000;

    /// Another decoder may have read before, so it begins at the beginning.
    bool ReadNotes(IInputStream& stream) {
        char head[5] = {};
        notes_.assign(kMostNotes, '\n');
        stream.Seek(0);
        if (!ReadWhole(stream, head, sizeof head) || std::memcmp(head, "TUNE ", sizeof head) != 0)
            return false;
        notes_.resize(ReadValues(stream, notes_));
        notes_.resize(std::min(notes_.find('\n'), notes_.size()));
        position_ = 0;
        return true;
    }
    std::uint64_t GetRest() { return static_cast<std::uint64_t>(GetLength() - position_); }
    std::uint8_t ComputeSample(std::int64_t position) const {
        constexpr int kHalfTones[] = {0, 2, 3, 5, 7, 8, 10};
        const char note = notes_[static_cast<std::size_t>(position / kNoteFrames)];
        if (note < 'A' || note > 'G') return 128;
        const auto frame = static_cast<double>(position % kNoteFrames);
        const double frequency = 220 * std::exp2(kHalfTones[note - 'A'] / 12.0);
        const double fade = 1 - frame / kNoteFrames;
        return static_cast<std::uint8_t>(
            std::lround(128 + 100 * fade * std::sin(2 * std::numbers::pi * frequency * frame / kRate)));
    }

    TDataFormat_AudioPcm format_{SAMPLE_FORMAT_8BIT, 1, kRate};
    std::string notes_;
    std::int64_t position_ = 0;
};

void PrintSound(const std::string& path) {
    const CInputStreamSelector file(PathFromUtf8(path.c_str()).c_str());
    const auto pcm = CRefPtr<IInputStream>::Adopt(file.DecodeStream(TDataFormat_AudioPcm::FormatId));
    const CFrameReader sound(pcm);
    std::printf("%s: %.1f seconds by %s\n", path.c_str(), sound.GetSeconds(),
                ToUtf8(ListChain(*pcm.Get()).front().className).c_str());
}

int main(int argc, char** argv) {
    try {
        const CSession session;
        v.GetClassStore().RegisterClassVrl(
            {CTuneDecoder::ClassId, VRL_L("example::CTuneDecoder"), &NewObject<CTuneDecoder>});
        // From any bytes to sound.
        v.GetCodecClassStore().RegisterDecoder(
            {CTuneDecoder::ClassId, CId::Null(), TDataFormat_AudioPcm::FormatId});
        std::vector<std::string> files = GetUtf8Arguments(argc, argv);
        if (files.empty()) files = {"scale.tune", "strings.wav"};
        for (const std::string& file : files) PrintSound(file);
        return 0;
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        return 1;
    }
}
