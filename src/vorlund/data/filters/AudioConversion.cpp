// Plain buffers: the converters' own routines, and the loop over blocks of conversions at true scale.
#include "vorlund/data/filters/AudioConversion.h"

#include "vorlund/data/filters/Packed24.h"
#include "vorlund/data/filters/PcmConversions.h"
#include "vorlund/data/filters/PcmMixes.h"
#include "vorlund/data/filters/TrueScale.h"

#include <vorlund/AudioConversion.h>
#include <vorlund/Exception.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/filters/AudioConversion");
constexpr const wchar* kConvertSamples = VRL_L("vorlund::ConvertSamples");
constexpr const wchar* kMixChannels = VRL_L("vorlund::MixChannels");
constexpr const wchar* kConvertAudio = VRL_L("vorlund::ConvertAudio");
constexpr const wchar* kConvertToDoubles = VRL_L("vorlund::ConvertToDoubles");
constexpr const wchar* kUnknownFormat = VRL_L("Unknown sample format");
constexpr const wchar* kBufferIsNull = VRL_L("buffer is NULL");

constexpr TFailure kSamplesFormat{kConvertSamples, kFile, 1, kUnknownFormat};
constexpr TFailure kSamplesBuffer{kConvertSamples, kFile, 2, kBufferIsNull};
constexpr TFailure kChannelsFormat{kMixChannels, kFile, 3, kUnknownFormat};
constexpr TFailure kChannelsNumber{kMixChannels, kFile, 4, VRL_L("Channel amount must be 1, 2 or 6")};
constexpr TFailure kChannelsBuffer{kMixChannels, kFile, 5, kBufferIsNull};
constexpr TFailure kAudioFormat{kConvertAudio, kFile, 6, kUnknownFormat};
constexpr TFailure kAudioChannels{kConvertAudio, kFile, 7, VRL_L("There are no channels")};
constexpr TFailure kAudioMatrix{kConvertAudio, kFile, 8,
                                VRL_L("The matrix must have 1 to 8 channels and finite weights")};
constexpr TFailure kAudioBuffer{kConvertAudio, kFile, 9, kBufferIsNull};
constexpr TFailure kDoublesFormat{kConvertToDoubles, kFile, 10, kUnknownFormat};
constexpr TFailure kDoublesBuffer{kConvertToDoubles, kFile, 11, kBufferIsNull};

/// Samples of 32 bits between others and those of 24.
constexpr std::size_t kBlock = 768;

void Widen(std::int32_t* to, const std::byte* from, std::size_t count) {
    for (; count > 0; --count, ++to, from += 3) *to = pcm::LoadPacked24(from);
}

void Narrow(std::byte* to, const std::int32_t* from, std::size_t count) {
    for (; count > 0; --count, ++from, to += 3)
        pcm::StorePacked24(to, static_cast<std::uint32_t>(*from) >> 8);
}

/// Units of the routine, samples or frames, in steps of `step`; a side of 24 bits goes through 32.
void Run(pcm::TRoutine routine, std::byte* to, std::size_t toSize, bool narrows, const std::byte* from,
         std::size_t fromSize, bool widens, std::size_t count, std::size_t step) {
    if (!narrows && !widens) return routine(to, from, count);
    std::int32_t wide[kBlock];
    std::int32_t result[kBlock];
    while (count > 0) {
        const std::size_t units = std::min(count, step);
        const void* source = from;
        if (widens) {
            Widen(wide, from, units * fromSize / 3);
            source = wide;
        }
        if (routine) {
            routine(narrows ? static_cast<void*>(result) : to, source, units);
        } else if (narrows) {
            std::memcpy(result, source, units * 4);
        } else {
            std::memcpy(to, source, units * 4);
        }
        if (narrows) Narrow(to, result, units * toSize / 3);
        to += units * toSize;
        from += units * fromSize;
        count -= units;
    }
}

std::uint32_t AsWide(std::uint32_t format) {
    return format == BUFFER_FORMAT_24BIT ? std::uint32_t{BUFFER_FORMAT_32BIT} : format;
}

/// The bits that a sample of the format can tell; more than any integer for floats.
std::uint32_t GetPrecision(std::uint32_t format) {
    return format == BUFFER_FORMAT_FLOAT ? 64 : GetBufferSampleSize(format) * 8;
}

} // namespace

bool IsGoodMatrix(const TMixMatrix& mix) {
    if (mix.inputs == 0 || mix.inputs > kMaxMixChannels) return false;
    if (mix.outputs == 0 || mix.outputs > kMaxMixChannels) return false;
    for (std::size_t to = 0; to < mix.outputs; ++to)
        for (std::size_t from = 0; from < mix.inputs; ++from)
            if (!std::isfinite(mix.weights[to][from])) return false;
    return true;
}

namespace {

/// Whether the converters' own routines give the same: where no sample loses anything, and from integers to
/// floats, which both round once.
bool IsPlain(const TAudioConversion& conversion) {
    if (conversion.mix) return false;
    if (conversion.to == BUFFER_FORMAT_FLOAT)
        return conversion.from != BUFFER_FORMAT_FLOAT || !conversion.clipsFloats;
    return GetPrecision(conversion.from) <= GetPrecision(conversion.to);
}

/// Whether every output is one input as it is, or silent.
bool IsExact(const TMixMatrix& mix) {
    for (std::size_t to = 0; to < mix.outputs; ++to) {
        const double* const row = mix.weights[to];
        const auto others = mix.inputs - std::count(row, row + mix.inputs, 0.0);
        if (others > 1 || (others == 1 && std::count(row, row + mix.inputs, 1.0) == 0)) return false;
    }
    return true;
}

} // namespace

std::uint32_t GetBufferSampleSize(std::uint32_t format) noexcept {
    constexpr std::uint32_t kSizes[] = {1, 2, 4, 4, 3};
    return format < std::size(kSizes) ? kSizes[format] : 0;
}

void ConvertSamples(void* destination, std::uint32_t to, const void* source, std::uint32_t from,
                    std::size_t count) {
    const std::size_t toSize = GetBufferSampleSize(to);
    const std::size_t fromSize = GetBufferSampleSize(from);
    if (toSize == 0 || fromSize == 0) Raise<CInvalidParameterException>(kSamplesFormat);
    if (count == 0) return;
    if (!destination || !source) Raise<CNullPtrException>(kSamplesBuffer);
    if (to == from) {
        std::memcpy(destination, source, count * toSize);
        return;
    }
    Run(pcm::FindConversion(AsWide(from), AsWide(to)), static_cast<std::byte*>(destination), toSize,
        to == BUFFER_FORMAT_24BIT, static_cast<const std::byte*>(source), fromSize,
        from == BUFFER_FORMAT_24BIT, count, kBlock);
}

void ConvertToDoubles(double* destination, const void* source, std::uint32_t from, std::size_t count) {
    if (GetBufferSampleSize(from) == 0) Raise<CInvalidParameterException>(kDoublesFormat);
    if (count == 0) return;
    if (!destination || !source) Raise<CNullPtrException>(kDoublesBuffer);
    pcm::LoadReals(destination, static_cast<const std::byte*>(source), from, count);
}

void MixChannels(void* destination, std::uint32_t to, const void* source, std::uint32_t from,
                 std::uint32_t format, std::size_t frames) {
    const std::size_t sampleSize = GetBufferSampleSize(format);
    if (sampleSize == 0) Raise<CInvalidParameterException>(kChannelsFormat);
    const pcm::TRoutine mix = pcm::FindMix(from, to, AsWide(format));
    if (!mix && (to != from || to == 0)) Raise<CInvalidParameterException>(kChannelsNumber);
    if (frames == 0) return;
    if (!destination || !source) Raise<CNullPtrException>(kChannelsBuffer);
    if (!mix) {
        std::memcpy(destination, source, frames * sampleSize * to);
        return;
    }
    const bool isPacked = format == BUFFER_FORMAT_24BIT;
    Run(mix, static_cast<std::byte*>(destination), sampleSize * to, isPacked,
        static_cast<const std::byte*>(source), sampleSize * from, isPacked, frames, kBlock / 6);
}

std::uint64_t ConvertAudio(void* destination, const void* source, std::size_t frames,
                           const TAudioConversion& conversion, std::uint64_t firstFrame) {
    const std::size_t toSize = GetBufferSampleSize(conversion.to);
    const std::size_t fromSize = GetBufferSampleSize(conversion.from);
    if (toSize == 0 || fromSize == 0) Raise<CInvalidParameterException>(kAudioFormat);
    const TMixMatrix* const mix = conversion.mix;
    if (!mix && conversion.channels == 0) Raise<CInvalidParameterException>(kAudioChannels);
    if (mix && !IsGoodMatrix(*mix)) Raise<CInvalidParameterException>(kAudioMatrix);
    if (frames == 0) return 0;
    if (!destination || !source) Raise<CNullPtrException>(kAudioBuffer);

    if (IsPlain(conversion)) {
        ConvertSamples(destination, conversion.to, source, conversion.from, frames * conversion.channels);
        return 0;
    }
    const bool isLossy =
        GetPrecision(conversion.from) > GetPrecision(conversion.to) || (mix && !IsExact(*mix));
    const pcm::TStore store{conversion.to, conversion.clipsFloats,
                            conversion.dither == DITHER_TRIANGULAR && isLossy, conversion.seed};
    // Without a mix samples stand for themselves, whatever frames they are of.
    const std::size_t inputs = mix ? mix->inputs : 1;
    const std::size_t outputs = mix ? mix->outputs : 1;
    std::size_t left = mix ? frames : frames * conversion.channels;
    std::uint64_t sample = firstFrame * (mix ? mix->outputs : conversion.channels);
    const std::size_t step = pcm::kMaxReals / std::max(inputs, outputs);
    auto* to = static_cast<std::byte*>(destination);
    const auto* from = static_cast<const std::byte*>(source);
    double input[pcm::kMaxReals];
    double mixed[pcm::kMaxReals];
    std::uint64_t clipped = 0;
    while (left > 0) {
        const std::size_t units = std::min(left, step);
        pcm::LoadReals(input, from, conversion.from, units * inputs);
        if (mix) pcm::MixReals(mixed, input, *mix, units);
        clipped += pcm::StoreReals(to, mix ? mixed : input, store, units * outputs, sample);
        to += units * outputs * toSize;
        from += units * inputs * fromSize;
        sample += units * outputs;
        left -= units;
    }
    return clipped;
}

} // namespace vorlund
