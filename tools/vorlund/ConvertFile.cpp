#include "ConvertFile.h"

#include "Decoding.h"
#include "Diagnostics.h"
#include "FileEncoder.h"
#include "FileNames.h"
#include "Metering.h"
#include "OutputFile.h"
#include "SoundReader.h"
#include "SoundSource.h"

#include <vorlund/AudioConversion.h>
#include <vorlund/Exception.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

using namespace vorlund;
namespace fs = std::filesystem;

namespace {

constexpr std::size_t kBlockFrames = 16384;

/// True peaks stay below full scale by that, so that lossy decoders have room (EBU R 128).
constexpr double kHighestPeak = -1;

/// The share of the work that measuring is.
constexpr double kMeasuring = 0.4;

/// The factor by which the sound gets the loudness, or less where its peaks forbid that.
double FindGain(CSoundSource& source, double loudness, const std::function<void(double)>& onProgress) {
    const CRefPtr<IAudioMeter> meter = StartMeter(source.GetFormat(), 0);
    std::vector<std::uint8_t> bytes(kBlockFrames * source.GetFormat().GetBlockSize());
    std::vector<float> samples(kBlockFrames * source.GetFormat().channels);
    const TAudioConversion toFloat{.from = source.GetFormat().sampleFormat,
                                   .to = BUFFER_FORMAT_FLOAT,
                                   .channels = source.GetFormat().channels};
    while (const std::size_t frames = source.Read(bytes.data(), kBlockFrames)) {
        ConvertAudio(samples.data(), bytes.data(), frames, toFloat);
        meter->Write(samples.data(), frames);
        onProgress(kMeasuring * source.GetShare());
    }
    source.Rewind();
    const TAudioLevels levels = meter->GetLevels();
    if (!std::isfinite(levels.integrated)) return 1;
    const double wanted = loudness - levels.integrated;
    return std::pow(10, std::min(wanted, kHighestPeak - ToDecibels(levels.truePeak)) / 20);
}

void MakeFolderOf(const std::string& name) {
    const fs::path folder = ToPath(name).parent_path();
    std::error_code error;
    fs::create_directories(folder, error);
    // What is wrong is told when the file is opened.
}

/// The mix that the samples need, or none.
std::optional<TMixMatrix> MakeMix(std::uint32_t from, std::uint32_t to, double gain) {
    if (from == to && gain == 1) return {};
    if (from > kMaxMixChannels || to > kMaxMixChannels)
        throw TProgramError{VRL_L("More than 8 channels can be neither mixed nor normalised")};
    TMixMatrix matrix = MakeMixMatrix(GetDefaultLayout(from), GetDefaultLayout(to), MIX_LEVEL_SAFE);
    for (auto& row : matrix.weights) {
        for (double& weight : row) weight *= gain;
    }
    return matrix;
}

} // namespace

TConverted ConvertFile(const TConvertJob& job, const TWrittenType& type, const TConvertTarget& target,
                       const std::function<void(double share)>& onProgress) {
    std::optional<CSoundSource> opened(std::in_place, job, target, GetUsualRate(type));
    CSoundSource& source = *opened;
    if (source.IsSkipped()) return {.isSkipped = true};
    double gain = 1;
    double begin = 0;
    if (target.loudness) {
        gain = FindGain(source, *target.loudness, onProgress);
        begin = kMeasuring;
    }
    const TDataFormat_AudioPcm& from = source.GetFormat();
    const std::uint32_t channels = target.channels.value_or(from.channels);
    const std::optional<TMixMatrix> mix = MakeMix(from.channels, channels, gain);
    if (job.isInFolder) MakeFolderOf(job.output);
    CFileEncoder output(job.output, type, target, source, channels);
    const TAudioConversion conversion{.from = from.sampleFormat,
                                      .to = output.GetSampleFormat(),
                                      .channels = from.channels,
                                      .mix = mix ? &*mix : nullptr,
                                      .dither = target.isDithered ? DITHER_TRIANGULAR : DITHER_NONE};
    std::vector<std::uint8_t> read(kBlockFrames * from.GetBlockSize());
    std::vector<std::uint8_t> written(kBlockFrames * channels * GetBufferSampleSize(conversion.to));
    TConverted converted;
    std::uint64_t frame = 0;
    while (const std::size_t frames = source.Read(read.data(), kBlockFrames)) {
        converted.clipped += ConvertAudio(written.data(), read.data(), frames, conversion, frame);
        output.Write(written.data(), frames);
        frame += frames;
        onProgress(begin + (1 - begin) * source.GetShare());
    }
    source.CheckEnd();
    output.Finish();
    // The output may take the place of the input.
    opened.reset();
    output.Keep();
    return converted;
}
