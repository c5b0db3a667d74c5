#include "SndfileEncoder.h"

#include "SoundWriter.h"

#include <vorlund/CodecClassStore.h>
#include <vorlund/Exception.h>
#include <vorlund/Vorlund.h>

#include <utility>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/sndfile/SndfileEncoder");
constexpr const wchar* kSetFormat = VRL_L("CSndfileEncoder::SetFormat");

constexpr TFailure kNotConnected{kSetFormat, kFile, 1, VRL_L("Stream is not connected")};
constexpr TFailure kNullFormat{kSetFormat, kFile, 2, VRL_L("format is NULL")};
constexpr TFailure kNotPcm{kSetFormat, kFile, 3, VRL_L("Not PCM")};
constexpr TFailure kNoPositions{kSetFormat, kFile, 4, VRL_L("Stream has no positions")};
constexpr TFailure kNullBuffer{VRL_L("CSndfileEncoder::Write"), kFile, 5, VRL_L("buffer is NULL")};
constexpr TFailure kNoFormat{VRL_L("CSndfileEncoder::Write"), kFile, 6, VRL_L("No format is set")};
constexpr TFailure kNoSeek{VRL_L("CSndfileEncoder::Seek"), kFile, 7, VRL_L("An encoder has no positions")};

constexpr TSoundKind kAiff{.formatId = SOUND_FILE_AIFF,
                           .format = SF_FORMAT_AIFF,
                           .subtype = 0,
                           .hasFloats = true,
                           .hasQuality = false,
                           .hasCompression = false,
                           .hasBitrateMode = false,
                           .hasAllTags = false};
constexpr TSoundKind kFlac{.formatId = SOUND_FILE_FLAC,
                           .format = SF_FORMAT_FLAC,
                           .subtype = 0,
                           .hasFloats = false,
                           .hasQuality = false,
                           .hasCompression = true,
                           .hasBitrateMode = false,
                           .hasAllTags = true};
constexpr TSoundKind kMp3{.formatId = SOUND_FILE_MP3,
                          .format = SF_FORMAT_MPEG,
                          .subtype = SF_FORMAT_MPEG_LAYER_III,
                          .hasFloats = false,
                          .hasQuality = true,
                          .hasCompression = false,
                          .hasBitrateMode = true,
                          .hasAllTags = true};
constexpr TSoundKind kOpus{.formatId = SOUND_FILE_OGG_OPUS,
                           .format = SF_FORMAT_OGG,
                           .subtype = SF_FORMAT_OPUS,
                           .hasFloats = false,
                           .hasQuality = true,
                           .hasCompression = false,
                           .hasBitrateMode = false,
                           .hasAllTags = true};
constexpr TSoundKind kVorbis{.formatId = SOUND_FILE_OGG_VORBIS,
                             .format = SF_FORMAT_OGG,
                             .subtype = SF_FORMAT_VORBIS,
                             .hasFloats = false,
                             .hasQuality = true,
                             .hasCompression = false,
                             .hasBitrateMode = false,
                             .hasAllTags = true};

template <const TSoundKind& kKind, std::uint32_t kNumber> class CEncoder : public CSndfileEncoder {
public:
    static constexpr CId ClassId{kNumber, 0x39C14E5B, 0xF2067A8D, 0x51BB90E4};

    CEncoder() : CSndfileEncoder(kKind) {}

protected:
    ~CEncoder() noexcept(false) = default;
};

template <const TSoundKind& kKind, std::uint32_t kNumber> void Register(const wchar* name) {
    using TEncoder = CEncoder<kKind, kNumber>;
    // A libsndfile may have been built without one of its codecs.
    SF_INFO info{};
    info.samplerate = 48000;
    info.channels = 1;
    info.format = kKind.format | (kKind.subtype != 0 ? kKind.subtype : SF_FORMAT_PCM_16);
    if (!sf_format_check(&info)) return;
    v.GetClassStore().RegisterClassVrl({TEncoder::ClassId, name, &NewObject<TEncoder>});
    v.GetCodecClassStore().RegisterEncoder(
        {TEncoder::ClassId, TDataFormat_AudioPcm::FormatId, kKind.formatId});
}

} // namespace

void RegisterEncoders() {
    Register<kAiff, 0x7D20E6A0>(VRL_L("sndfile::CAiffEncoder"));
    Register<kFlac, 0x7D20E6A1>(VRL_L("sndfile::CFlacEncoder"));
    Register<kMp3, 0x7D20E6A2>(VRL_L("sndfile::CMp3Encoder"));
    Register<kOpus, 0x7D20E6A3>(VRL_L("sndfile::COpusEncoder"));
    Register<kVorbis, 0x7D20E6A4>(VRL_L("sndfile::CVorbisEncoder"));
}

CSndfileEncoder::CSndfileEncoder(const TSoundKind& kind) : options_(kind) {}
CSndfileEncoder::~CSndfileEncoder() noexcept(false) = default;

void CSndfileEncoder::SetOption(const wchar* name, const wchar* value) {
    options_.SetOption(name, value);
}

void CSndfileEncoder::SetTag(const wchar* name, const wchar* text) {
    options_.SetTag(name, text);
}

void CSndfileEncoder::SetFormat(const TDataFormat* format) {
    if (!format) Raise<CNullPtrException>(kNullFormat);
    if (format->id != TDataFormat_AudioPcm::FormatId || format->size != sizeof(TDataFormat_AudioPcm))
        Raise<CDataFormatException>(kNotPcm);
    // The stream may use this encoder inside each call.
    const auto stream = stream_;
    if (!stream) Raise<CIOException>(kNotConnected);
    constexpr std::uint32_t kNeeded = STREAM_CAPABILITY_SEEK | STREAM_CAPABILITY_TELL;
    if ((stream->GetCapabilities() & kNeeded) != kNeeded) Raise<CDataFormatException>(kNoPositions);
    writer_.reset();
    const CFilterCalls::CCall call(calls_);
    auto writer =
        std::make_shared<CSoundWriter>(*stream, options_, static_cast<const TDataFormat_AudioPcm&>(*format));
    if (call.IsUnchanged()) writer_ = std::move(writer);
}

void CSndfileEncoder::Write(const void* buffer, std::uint64_t size) {
    if (!buffer) Raise<CNullPtrException>(kNullBuffer);
    const auto stream = stream_;
    const auto writer = writer_;
    if (!writer) Raise<CInvalidStateException>(kNoFormat);
    writer->Write(static_cast<const std::uint8_t*>(buffer), size);
}

void CSndfileEncoder::Finish() {
    const auto stream = stream_;
    const auto writer = std::exchange(writer_, nullptr);
    if (!writer) return;
    writer->Finish();
    stream->Flush();
}

void CSndfileEncoder::Close() {
    const auto stream = stream_;
    Finish();
    if (stream) stream->Close();
}

std::uint32_t CSndfileEncoder::GetCapabilities() {
    return STREAM_CAPABILITY_WRITE | STREAM_CAPABILITY_TELL;
}

std::int64_t CSndfileEncoder::GetLength() {
    return writer_ ? writer_->GetLength() : 0;
}

void CSndfileEncoder::Seek(std::int64_t) {
    Raise<COperationNotSupportedException>(kNoSeek);
}

void CSndfileEncoder::Disconnect() {
    writer_.reset();
    TLayer::Disconnect();
}
