#include "SoundSource.h"

#include "Decoding.h"
#include "Diagnostics.h"
#include "RiffTable.h"
#include "SoundReader.h"
#include "StandardInput.h"

#include <vorlund/DecodeReport.h>
#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/Resampler.h>

#include <algorithm>
#include <cmath>

using namespace vorlund;

namespace {

constexpr std::size_t kSkippedFrames = 4096;
constexpr std::uint16_t kPcm = 1;

std::uint64_t ToFrames(double seconds, std::uint32_t rate) {
    return static_cast<std::uint64_t>(std::llround(seconds * rate));
}

CRefPtr<IInputStream> Resample(const CRefPtr<IInputStream>& decoded, std::uint32_t rate) {
    CRefPtr<IResampler> resampler;
    try {
        resampler = CreateAs<IResampler>(kResamplerClassId);
    } catch (const CClassNotFoundException&) {
        throw TProgramError{VRL_L(
            "Another rate needs the plug-in 'resample', which is not loaded; 'vorlund plugins' tells why")};
    }
    resampler->SetTarget(rate);
    resampler->Connect(decoded.Get());
    return CRefPtr<IInputStream>::Share(resampler.Get());
}

} // namespace

CSoundSource::CSoundSource(const TConvertJob& job, const TConvertTarget& target,
                           const std::function<std::uint32_t(std::uint32_t rate)>& usualRate)
    : path_(PathFromUtf8(job.input.c_str())), target_(target) {
    Open(job, usualRate);
    if (!end_) return;
    first_ = ToFrames(target.from, format_.samplesPerSec);
    if (target.to) last_ = ToFrames(*target.to, format_.samplesPerSec);
    const std::int64_t length = end_->GetLength();
    if (length >= 0) {
        const std::uint64_t all = static_cast<std::uint64_t>(length) / format_.GetBlockSize();
        const std::uint64_t end = std::min(all, last_.value_or(all));
        frames_ = end - std::min(end, first_);
    }
    Rewind();
}

void CSoundSource::Open(const TConvertJob& job,
                        const std::function<std::uint32_t(std::uint32_t)>& usualRate) {
    source_.emplace(job.input == "-" ? ReadStandardInput() : CInputStreamSelector(path_.c_str()));
    IInputStream& stream = *source_->GetInputStreamTmp();
    LookIntoFile(stream);
    CDecodeReport report;
    CRefPtr<IInputStream> decoded;
    try {
        decoded = DecodeSource(*source_, TDataFormat_AudioPcm::FormatId, report);
    } catch (const CDataFormatException&) {
        CheckReading(stream, path_);
        // A folder may hold texts and pictures.
        if (job.isFound && report.GetPlugin().Length() == 0 && !report.GetFurthest()) return;
        throw TProgramError{VRL_L("Cannot decode '") + path_ + VRL_L("': ") + report.Explain().GetBuffer()};
    }
    format_ = static_cast<const TDataFormat_AudioPcm&>(decoded->GetFormat());
    if (texts_.empty()) texts_ = GetSoundTexts(*decoded);
    decodedFormat_ = format_.sampleFormat;
    const std::uint32_t rate = target_.rate.value_or(usualRate(format_.samplesPerSec));
    end_ = rate == format_.samplesPerSec ? decoded : Resample(decoded, rate);
    const bool isWhole = rate == format_.samplesPerSec && target_.from == 0;
    if (!isWhole) metadata_.cues.clear();
    format_ = static_cast<const TDataFormat_AudioPcm&>(end_->GetFormat());
    if (format_.GetBlockSize() == 0)
        throw TProgramError{VRL_L("'") + path_ + VRL_L("' has sound without samples")};
}

void CSoundSource::LookIntoFile(IInputStream& stream) {
    if ((stream.GetCapabilities() & STREAM_CAPABILITY_SEEK) == 0) return;
    if (const std::optional<TRiffTable> riff = ReadRiffTable(stream)) {
        isStoredIn24_ = riff->format && riff->format->tag == kPcm && riff->format->bits == 24;
        if (riff->HasWavMetadata()) {
            stream.Seek(0);
            metadata_ = ReadWavMetadata(&stream);
            texts_ = GetWavTexts(metadata_);
        }
    }
    stream.Seek(0);
}

std::size_t CSoundSource::Read(void* buffer, std::size_t frames) {
    if (last_) {
        const std::uint64_t end = *last_ - std::min(*last_, first_);
        frames = static_cast<std::size_t>(std::min<std::uint64_t>(frames, end - std::min(end, done_)));
    }
    const std::size_t block = format_.GetBlockSize();
    const std::size_t read = Fill(*end_, buffer, frames * block) / block;
    done_ += read;
    return read;
}

void CSoundSource::Rewind() {
    done_ = 0;
    if ((end_->GetCapabilities() & STREAM_CAPABILITY_SEEK) != 0) {
        end_->Seek(static_cast<std::int64_t>(first_ * format_.GetBlockSize()));
    } else {
        SkipFrames(first_);
    }
}

void CSoundSource::SkipFrames(std::uint64_t frames) {
    std::vector<std::uint8_t> skipped(kSkippedFrames * format_.GetBlockSize());
    while (frames > 0) {
        const std::size_t size = static_cast<std::size_t>(std::min<std::uint64_t>(frames, kSkippedFrames));
        if (Fill(*end_, skipped.data(), size * format_.GetBlockSize()) == 0) return;
        frames -= size;
    }
}

double CSoundSource::GetShare() const {
    if (!frames_ || *frames_ == 0) return 0;
    return std::min(static_cast<double>(done_) / static_cast<double>(*frames_), 1.0);
}

void CSoundSource::CheckEnd() {
    CheckReading(*source_->GetInputStreamTmp(), path_);
}
