#include "FileEncoder.h"

#include "Diagnostics.h"

#include <vorlund/AudioConversion.h>
#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/Vorlund.h>

#include <algorithm>
#include <array>
#include <string_view>

using namespace vorlund;

namespace {

constexpr struct {
    std::string_view type;
    CId file;
    bool isLossy;
} kEncoders[] = {
    {"aiff", SOUND_FILE_AIFF, false},     {"flac", SOUND_FILE_FLAC, false},    {"mp3", SOUND_FILE_MP3, true},
    {"ogg", SOUND_FILE_OGG_VORBIS, true}, {"opus", SOUND_FILE_OGG_OPUS, true},
};

constexpr struct {
    std::string_view bits;
    std::uint32_t buffer;
    TWavSampleFormat wav;
    /// What an encoder is given.
    TSampleFormat encoder;
} kBits[] = {
    {"8", BUFFER_FORMAT_8BIT, WAV_SAMPLE_8BIT, SAMPLE_FORMAT_8BIT},
    {"16", BUFFER_FORMAT_16BIT, WAV_SAMPLE_16BIT, SAMPLE_FORMAT_16BIT},
    {"24", BUFFER_FORMAT_24BIT, WAV_SAMPLE_24BIT, SAMPLE_FORMAT_32BIT},
    {"32", BUFFER_FORMAT_32BIT, WAV_SAMPLE_32BIT, SAMPLE_FORMAT_32BIT},
    {"float", BUFFER_FORMAT_FLOAT, WAV_SAMPLE_FLOAT, SAMPLE_FORMAT_FLOAT},
};

const auto& FindBits(std::string_view bits) {
    return *std::find_if(std::begin(kBits), std::end(kBits),
                         [bits](const auto& row) { return row.bits == bits; });
}

/// The samples that lose nothing of the source.
std::string_view GetUsualBits(const CSoundSource& source, bool isFlac) {
    switch (source.GetDecodedFormat()) {
    case SAMPLE_FORMAT_8BIT:
        return "8";
    case SAMPLE_FORMAT_16BIT:
        return "16";
    case SAMPLE_FORMAT_32BIT:
        // FLAC files of this library have no more.
        return source.IsStoredIn24() || isFlac ? "24" : "32";
    default:
        return isFlac ? "24" : "float";
    }
}

} // namespace

std::function<std::uint32_t(std::uint32_t rate)> GetUsualRate(const TWrittenType& type) {
    // RFC 7845: an Opus file is one of 48,000 Hz, and its encoder takes four rates more.
    if (std::string_view(type.name) == "opus") {
        return [](std::uint32_t rate) {
            constexpr std::array kRates{8000U, 12000U, 16000U, 24000U, 48000U};
            return std::find(kRates.begin(), kRates.end(), rate) == kRates.end() ? kRates.back() : rate;
        };
    }
    return [](std::uint32_t rate) { return rate; };
}

CFileEncoder::CFileEncoder(const std::string& name, const TWrittenType& type, const TConvertTarget& target,
                           const CSoundSource& source, std::uint32_t channels)
    : channels_(channels) {
    const bool isWav = std::string_view(type.name) == "wav";
    if (isWav && !target.quality.empty()) throw TProgramError{VRL_L("WAV files have no quality to choose")};
    const std::string_view bits =
        target.bits.empty() ? GetUsualBits(source, std::string_view(type.name) == "flac") : target.bits;
    const auto& row = FindBits(bits);
    sampleFormat_ = isWav ? row.buffer : static_cast<std::uint32_t>(row.encoder);
    file_ = COutputFile::Create(name, true, {});
    if (isWav) {
        BeginWav(source);
    } else {
        BeginEncoder(type, target, source);
    }
}

void CFileEncoder::BeginWav(const CSoundSource& source) {
    const auto* const row = std::find_if(std::begin(kBits), std::end(kBits),
                                         [this](const auto& each) { return each.buffer == sampleFormat_; });
    TWavWriterFormat format(row->wav, channels_, source.GetFormat().samplesPerSec);
    TWavWriterOptions options;
    options.metadata = source.GetMetadata();
    if (options.metadata.info.empty()) options.metadata.info = MakeInfoEntries(source.GetTexts());
    if (source.GetFrames()) options.length = *source.GetFrames() * format.GetBlockSize();
    writer_ = std::make_unique<CWavWriter>(file_->OpenStream().Get(), format, options);
}

void CFileEncoder::BeginEncoder(const TWrittenType& type, const TConvertTarget& target,
                                const CSoundSource& source) {
    const auto* const kind = std::find_if(std::begin(kEncoders), std::end(kEncoders),
                                          [&type](const auto& row) { return row.type == type.name; });
    try {
        encoder_ = CRefPtr<IObject>::Adopt(
                       v.GetCodecClassStore().CreateEncoder(TDataFormat_AudioPcm::FormatId, kind->file))
                       .Query<IAudioEncoder>();
    } catch (const CClassNotFoundException&) {
        throw TProgramError{
            VRL_L("No loaded encoder writes ") + PathFromUtf8(type.name) +
            VRL_L(" files; the plug-in 'sndfile' may, and 'vorlund plugins' tells why it is not loaded")};
    }
    if (kind->isLossy) {
        sampleFormat_ = BUFFER_FORMAT_FLOAT;
    } else {
        const std::string_view bits =
            target.bits.empty() ? GetUsualBits(source, kind->type == "flac") : std::string_view(target.bits);
        encoder_->SetOption(VRL_L("bits"), PathFromUtf8(std::string(bits).c_str()).c_str());
    }
    if (kind->isLossy && !target.bits.empty())
        throw TProgramError{VRL_L("Lossy files have no bits to choose")};
    if (!target.quality.empty())
        encoder_->SetOption(VRL_L("quality"), PathFromUtf8(target.quality.c_str()).c_str());
    SetEncoderTexts(*encoder_, source.GetTexts());
    encoder_->Connect(file_->OpenStream().Get());
    const TDataFormat_AudioPcm format(sampleFormat_, channels_, source.GetFormat().samplesPerSec);
    encoder_->SetFormat(&format);
}

void CFileEncoder::Write(const void* samples, std::size_t frames) {
    const std::uint64_t size = std::uint64_t{frames} * channels_ * GetBufferSampleSize(sampleFormat_);
    if (writer_) {
        writer_->Write(samples, size);
    } else {
        encoder_->Write(samples, size);
    }
}

void CFileEncoder::Finish() {
    if (writer_) {
        writer_->Finish();
    } else {
        encoder_->Finish();
        encoder_->Disconnect();
    }
    file_->Finish();
}

void CFileEncoder::Keep() {
    file_->Keep();
}
