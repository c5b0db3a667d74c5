#include "SoundWriter.h"

#include <vorlund/DecodeNotes.h>
#include <vorlund/Exception.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/sndfile/SoundWriter");

constexpr TFailure kNotPossible{VRL_L("CSndfileEncoder::SetFormat"), kFile, 1,
                                VRL_L("This kind of file cannot have this sample rate, number of channels or "
                                      "sample format")};
constexpr TFailure kNoSound{VRL_L("CSndfileEncoder::Finish"), kFile, 3,
                            VRL_L("This kind of file cannot be without sound")};
constexpr TFailure kFailed{VRL_L("CSndfileEncoder::Write"), kFile, 2, VRL_L("The encoder failed")};

/// A byte of the head of Vorbis; libsndfile cuts greater numbers.
constexpr std::uint32_t kMaxVorbisChannels = 255;

/// Those of MPEG 1, 2 and 2.5. Libsndfile finds out with an encoder at hand, which it then leaks.
constexpr std::uint32_t kMpegRates[] = {8000, 11025, 12000, 16000, 22050, 24000, 32000, 44100, 48000};

/// Samples that are passed at once.
constexpr std::size_t kMaxSamples = 16 * 1024;

int GetSubtype(const CEncoderOptions& options, std::uint32_t sampleFormat) {
    const TSoundKind& kind = options.GetKind();
    if (kind.subtype != 0) return kind.subtype;
    if (options.bits) return *options.bits;
    switch (sampleFormat) {
    case SAMPLE_FORMAT_8BIT:
        return SF_FORMAT_PCM_S8;
    case SAMPLE_FORMAT_16BIT:
        return SF_FORMAT_PCM_16;
    case SAMPLE_FORMAT_32BIT:
        return kind.hasFloats ? SF_FORMAT_PCM_32 : SF_FORMAT_PCM_24;
    default:
        return kind.hasFloats ? SF_FORMAT_FLOAT : SF_FORMAT_PCM_24;
    }
}

template <class TValue> void Command(SNDFILE* file, int command, std::optional<TValue> value) {
    if (value) sf_command(file, command, &*value, sizeof(*value));
}

/// What `sf_format_check` does not ask.
bool IsPossible(const TSoundKind& kind, const TDataFormat_AudioPcm& format) {
    if (kind.subtype == SF_FORMAT_VORBIS) return format.channels <= kMaxVorbisChannels;
    if (kind.subtype != SF_FORMAT_MPEG_LAYER_III) return true;
    return std::find(std::begin(kMpegRates), std::end(kMpegRates), format.samplesPerSec) !=
           std::end(kMpegRates);
}

} // namespace

CSoundWriter::CSoundWriter(IOutputStream& stream, const CEncoderOptions& options,
                           const TDataFormat_AudioPcm& format)
    : output_(stream), kind_(options.GetKind()), format_(format) {
    SF_INFO info{};
    info.samplerate = static_cast<int>(format.samplesPerSec);
    info.channels = static_cast<int>(format.channels);
    info.format = kind_.format | GetSubtype(options, format.sampleFormat);
    if (format.sampleFormat > SAMPLE_FORMAT_FLOAT || !IsPossible(kind_, format) || !sf_format_check(&info))
        Raise<CDataFormatException>(kNotPossible);
    file_.reset(sf_open_virtual(COutputFile::GetCallbacks(), SFM_WRITE, &info, &output_));
    output_.RethrowFailure();
    if (!file_) Raise<CDataFormatException>(kNotPossible);
    // What is beyond the range of the file is cut there.
    sf_command(file_.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
    Command(file_.get(), SFC_SET_BITRATE_MODE, options.bitrateMode);
    Command(file_.get(), SFC_SET_VBR_ENCODING_QUALITY, options.quality);
    Command(file_.get(), SFC_SET_COMPRESSION_LEVEL, options.compression);
    for (const auto& [number, text] : options.GetTags()) sf_set_string(file_.get(), number, text.c_str());
}

CSoundWriter::~CSoundWriter() {
    output_.Abandon();
}

void CSoundWriter::Check(bool isGood) {
    try {
        output_.RethrowFailure();
        if (!isGood) Raise<CIOException>(kFailed);
    } catch (...) {
        output_.Abandon();
        file_.reset();
        throw;
    }
}

void CSoundWriter::Write(const std::uint8_t* bytes, std::uint64_t size) {
    if (!file_) Raise<CIOException>(kFailed);
    const std::size_t block = format_.GetBlockSize();
    length_ += static_cast<std::int64_t>(size);
    while (size > 0) {
        const std::size_t missing = block - part_.size();
        if (!part_.empty() || size < block) {
            const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(size, missing));
            part_.insert(part_.end(), bytes, bytes + count);
            bytes += count;
            size -= count;
            if (part_.size() < block) return;
            const std::vector<std::uint8_t> frame = std::exchange(part_, {});
            WriteFrames(frame.data(), 1);
            continue;
        }
        const std::size_t most = std::max<std::size_t>(kMaxSamples / format_.channels, 1);
        const auto frames = static_cast<std::size_t>(std::min<std::uint64_t>(size / block, most));
        WriteFrames(bytes, frames);
        bytes += frames * block;
        size -= frames * block;
    }
}

void CSoundWriter::WriteFrames(const std::uint8_t* bytes, std::size_t frames) {
    const std::size_t samples = frames * format_.channels;
    aligned_.resize(samples);
    void* const to = aligned_.data();
    const auto count = static_cast<sf_count_t>(frames);
    sf_count_t written = 0;
    if (format_.sampleFormat == SAMPLE_FORMAT_8BIT) {
        auto* const shorts = static_cast<short*>(to);
        for (std::size_t i = 0; i < samples; ++i) shorts[i] = static_cast<short>((bytes[i] - 128) * 256);
        written = sf_writef_short(file_.get(), shorts, count);
    } else {
        std::memcpy(to, bytes, frames * format_.GetBlockSize());
        if (format_.sampleFormat == SAMPLE_FORMAT_16BIT)
            written = sf_writef_short(file_.get(), static_cast<const short*>(to), count);
        else if (format_.sampleFormat == SAMPLE_FORMAT_32BIT)
            written = sf_writef_int(file_.get(), static_cast<const int*>(to), count);
        else
            written = sf_writef_float(file_.get(), static_cast<const float*>(to), count);
    }
    Check(written == count);
}

void CSoundWriter::Finish() {
    if (!file_) Raise<CIOException>(kFailed);
    if (length_ < static_cast<std::int64_t>(format_.GetBlockSize())) {
        // Nobody reads an MP3 or Opus file without a frame.
        if (kind_.subtype != 0) {
            output_.Abandon();
            file_.reset();
            Raise<CDataFormatException>(kNoSound);
        }
        // Without a frame there would be no head either.
        sf_command(file_.get(), SFC_UPDATE_HEADER_NOW, nullptr, 0);
    }
    const int result = sf_close(file_.release());
    Check(result == 0);
    if (kind_.format == SF_FORMAT_AIFF) MendAiffHead();
}

void CSoundWriter::MendAiffHead() {
    const std::vector<std::uint8_t> head = output_.GetHead();
    const auto number = [&head](std::size_t at) {
        return std::uint32_t{head[at]} << 24 | head[at + 1] << 16 | head[at + 2] << 8 | head[at + 3];
    };
    const auto frames = static_cast<std::uint32_t>(length_ / format_.GetBlockSize());
    std::uint32_t frameSize = 0;
    // Behind "FORM", the size and "AIFF": chunks, each an id, a size and the data.
    for (std::size_t at = 12; at + 16 <= head.size();) {
        const std::uint32_t size = number(at + 4);
        if (std::memcmp(&head[at], "COMM", 4) == 0) {
            const std::uint32_t bits = head[at + 14] << 8 | head[at + 15];
            frameSize = format_.channels * ((bits + 7) / 8);
            if (number(at + 10) != frames) WriteAt(static_cast<std::int64_t>(at) + 10, frames);
        }
        if (std::memcmp(&head[at], "SSND", 4) == 0) {
            const std::uint32_t right = 8 + frames * frameSize;
            if (size == right + right % 2 && size != right) WriteAt(static_cast<std::int64_t>(at) + 4, right);
            return;
        }
        if (size > head.size()) return;
        at += 8 + size + size % 2;
    }
}

void CSoundWriter::WriteAt(std::int64_t position, std::uint32_t bigEndian) {
    const std::uint8_t bytes[] = {
        static_cast<std::uint8_t>(bigEndian >> 24), static_cast<std::uint8_t>(bigEndian >> 16),
        static_cast<std::uint8_t>(bigEndian >> 8), static_cast<std::uint8_t>(bigEndian)};
    output_.Seek(position);
    Check(output_.Write(bytes, sizeof bytes) == sizeof bytes);
}
