#include "Writing.h"

#include "Records.h"
#include "vorlund_c/stream.h"

#include <vorlund/AudioConversion.h>
#include <vorlund/StreamErrors.h>
#include <vorlund/Text.h>
#include <vorlund/Vorlund.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace vorlund::capi {

namespace {

struct TKindOfFile {
    std::basic_string_view<wchar> name;
    CId format;
};

constexpr TKindOfFile kKinds[] = {
    {VRL_L("wav"), CId::Null()},           {VRL_L("aiff"), SOUND_FILE_AIFF},
    {VRL_L("flac"), SOUND_FILE_FLAC},      {VRL_L("mp3"), SOUND_FILE_MP3},
    {VRL_L("ogg"), SOUND_FILE_OGG_VORBIS}, {VRL_L("opus"), SOUND_FILE_OGG_OPUS},
};

/// Bytes that are converted at a time.
constexpr std::size_t kPiece = 65536;

CRefPtr<IAudioEncoder> MakeEncoder(const wstring& kind) {
    const auto* const found = std::find_if(std::begin(kKinds), std::end(kKinds),
                                           [&](const TKindOfFile& row) { return row.name == kind; });
    Require(found != std::end(kKinds), "There is no such kind of file");
    if (found->format == CId::Null()) return {};
    auto encoder = CRefPtr<IObject>::Adopt(
                       v.GetCodecClassStore().CreateEncoder(TDataFormat_AudioPcm::FormatId, found->format))
                       .Query<IAudioEncoder>();
    if (!encoder) throw CFailure(VORLUND_ERROR_CLASS_NOT_FOUND, "The class is none of an encoder");
    return encoder;
}

TWavWriterFormat WavFormatOf(const TSoundFormat& format) {
    constexpr TWavSampleFormat kFormats[] = {WAV_SAMPLE_8BIT, WAV_SAMPLE_16BIT, WAV_SAMPLE_32BIT,
                                             WAV_SAMPLE_FLOAT, WAV_SAMPLE_24BIT};
    return {kFormats[format.sampleFormat], format.channels, format.rate};
}

} // namespace

std::uint32_t TSoundFormat::GetFrameSize() const {
    return GetBufferSampleSize(sampleFormat) * channels;
}

CWritingPlan::CWritingPlan(const wstring& kind) : encoder_(MakeEncoder(kind)) {}

void CWritingPlan::SetOption(const wstring& name, const wstring& value) {
    if (!encoder_) throw CFailure(VORLUND_ERROR_INVALID_PARAMETER, "This kind of file has no options");
    encoder_->SetOption(name.c_str(), value.c_str());
}

void CWritingPlan::SetTag(const wstring& name, const wstring& text) {
    if (encoder_) return encoder_->SetTag(name.c_str(), text.c_str());
    if (name.size() != 4) throw CFailure(VORLUND_ERROR_INVALID_PARAMETER, "An id has not four characters");
    metadata_.info.push_back({TextToUtf8(name), TextToUtf8(text)});
}

TSoundFormat CWritingPlan::TakeFormat(const vorlund_audio_format* format) const {
    const auto taken = TakeRecord(format, sizeof(vorlund_audio_format));
    Require(taken.sample_format <= (encoder_ ? VORLUND_SAMPLE_FLOAT : VORLUND_SAMPLE_24BIT),
            "This kind of file has no such samples");
    Require(taken.channels > 0 && taken.channels <= 1024, "There must be 1 to 1024 channels");
    return {taken.sample_format, taken.channels, taken.rate};
}

CWriting::CWriting(const CWritingPlan& plan, const COutputStreamSelector& output, const TSoundFormat& format,
                   std::shared_ptr<CSinkObject> sink)
    : CHandleObject(TKind::Writer), sink_(std::move(sink)), format_(format), encoder_(plan.GetEncoder()) {
    chain_ = sink_ ? sink_->GetChain() : std::make_shared<CChain>();
    if (!sink_) file_ = CRefPtr<IOutputStream>::Adopt(output.GetOutputStream());
    if (!encoder_) {
        TWavWriterOptions options;
        options.metadata = plan.GetMetadata();
        wav_ = std::make_unique<CWavWriter>(output, WavFormatOf(format), options);
        return;
    }
    encoder_->Connect(output.GetOutputStreamTmp());
    const TDataFormat_AudioPcm pcm(format.sampleFormat, format.channels, format.rate);
    encoder_->SetFormat(&pcm);
}

void CWriting::Write(const void* bytes, std::size_t count) {
    if (isFinished_) throw CFailure(VORLUND_ERROR_INVALID_STATE, "The file is finished");
    if (wav_) return wav_->Write(bytes, count);
    encoder_->Write(bytes, count);
}

void CWriting::WriteFrames(std::uint32_t sampleFormat, const void* samples, std::size_t frames) {
    const std::size_t from = std::size_t{GetBufferSampleSize(sampleFormat)} * format_.channels;
    const std::size_t to = format_.GetFrameSize();
    if (sampleFormat == format_.sampleFormat) return Write(samples, frames * from);
    const std::byte* next = static_cast<const std::byte*>(samples);
    const std::size_t piece = std::min(frames, std::max<std::size_t>(1, kPiece / to));
    converted_.resize(piece * to);
    while (frames > 0) {
        const std::size_t count = std::min(piece, frames);
        ConvertAudio(converted_.data(), next, count,
                     {.from = sampleFormat, .to = format_.sampleFormat, .channels = format_.channels});
        Write(converted_.data(), count * to);
        next += count * from;
        frames -= count;
    }
}

void CWriting::WriteStream(CStreamObject& stream, std::uint64_t& frames) {
    const TDataFormat_AudioPcm format = stream.GetPcm();
    Require(format.channels == format_.channels && format.samplesPerSec == format_.rate,
            "The stream has other channels or another rate");
    const std::size_t frame = format.GetBlockSize();
    std::vector<std::byte> bytes(std::max<std::size_t>(1, kPiece / frame) * frame);
    std::uint32_t count = 0;
    do {
        stream.Read(bytes.data(), bytes.size(), &count);
        WriteFrames(format.sampleFormat, bytes.data(), count / frame);
        frames += count / frame;
    } while (count > 0);
}

void CWriting::Finish() {
    if (isFinished_) return;
    if (wav_) {
        file_ ? wav_->Close() : wav_->Finish();
    } else {
        encoder_->Finish();
        if (file_) CloseOutput(*file_);
    }
    isFinished_ = true;
}

} // namespace vorlund::capi
