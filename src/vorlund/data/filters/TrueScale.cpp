// Loops without a branch over samples, so that compilers make vector code of them.
#include "vorlund/data/filters/TrueScale.h"

#include "vorlund/data/filters/Packed24.h"
#include "vorlund/data/filters/PcmReals.h"

#include <algorithm>
#include <cstring>

namespace vorlund::pcm {
namespace {

void Load24(double* reals, const std::byte* source, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i, source += 3) reals[i] = LoadPacked24(source) * 0x1p-31;
}

/// The noise of a sample: two numbers of 32 bits out of one hash of its place, the first less the second.
double GetNoise(std::uint64_t seed, std::uint64_t sample) {
    std::uint64_t hash = seed + (sample + 1) * 0x9E3779B97F4A7C15;
    hash = (hash ^ hash >> 30) * 0xBF58476D1CE4E5B9;
    hash = (hash ^ hash >> 27) * 0x94D049BB133111EB;
    hash ^= hash >> 31;
    const auto upper = static_cast<std::int64_t>(hash >> 32);
    const auto lower = static_cast<std::int64_t>(hash & 0xFFFFFFFF);
    return static_cast<double>(upper - lower) * 0x1p-32;
}

/// Silence for what is not a number.
double WithoutNan(double real) {
    return real == real ? real : 0;
}

std::uint32_t CountOvers(const double* reals, std::size_t count) {
    std::uint32_t overs = 0;
    for (std::size_t i = 0; i < count; ++i) overs += !(reals[i] >= -1 && reals[i] <= 1);
    return overs;
}

/// `scaled` holds the numbers times `scale`, with dither and one half added.
void RoundDown(std::int32_t* integers, const double* scaled, std::size_t count, double scale) {
    for (std::size_t i = 0; i < count; ++i) {
        double value = scaled[i] > -scale ? scaled[i] : -scale;
        value = value < scale - 1 ? value : scale - 1;
        const auto truncated = static_cast<std::int32_t>(value);
        integers[i] = truncated - (value < truncated);
    }
}

template <class TSample>
void Put(std::byte* destination, const std::int32_t* integers, std::size_t count, std::int32_t zero) {
    for (std::size_t i = 0; i < count; ++i) {
        const auto sample = static_cast<TSample>(integers[i] + zero);
        std::memcpy(destination + i * sizeof sample, &sample, sizeof sample);
    }
}

void Put24(std::byte* destination, const std::int32_t* integers, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i, destination += 3)
        StorePacked24(destination, static_cast<std::uint32_t>(integers[i]));
}

double GetScale(std::uint32_t format) {
    switch (format) {
    case BUFFER_FORMAT_8BIT:
        return 0x1p7;
    case BUFFER_FORMAT_16BIT:
        return 0x1p15;
    case BUFFER_FORMAT_24BIT:
        return 0x1p23;
    default:
        return 0x1p31;
    }
}

void StoreFloats(std::byte* destination, const double* reals, bool clips, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const double real = clips ? std::clamp(WithoutNan(reals[i]), -1.0, 1.0) : reals[i];
        const auto sample = static_cast<float>(real);
        std::memcpy(destination + i * sizeof sample, &sample, sizeof sample);
    }
}

} // namespace

void LoadReals(double* reals, const std::byte* source, std::uint32_t from, std::size_t count) {
    if (from == BUFFER_FORMAT_24BIT) return Load24(reals, source, count);
    FindReals(from)(reals, source, count);
}

void MixReals(double* output, const double* input, const TMixMatrix& mix, std::size_t frames) {
    std::fill_n(output, frames * mix.outputs, 0.0);
    for (std::size_t to = 0; to < mix.outputs; ++to) {
        for (std::size_t from = 0; from < mix.inputs; ++from) {
            const double weight = mix.weights[to][from];
            if (weight == 0) continue;
            for (std::size_t i = 0; i < frames; ++i)
                output[i * mix.outputs + to] += weight * input[i * mix.inputs + from];
        }
    }
}

std::uint32_t StoreReals(std::byte* destination, const double* reals, const TStore& store, std::size_t count,
                         std::uint64_t firstSample) {
    if (store.to == BUFFER_FORMAT_FLOAT) {
        StoreFloats(destination, reals, store.clipsFloats, count);
        return store.clipsFloats ? CountOvers(reals, count) : 0;
    }
    const double scale = GetScale(store.to);
    double scaled[kMaxReals];
    for (std::size_t i = 0; i < count; ++i) scaled[i] = WithoutNan(reals[i]) * scale;
    if (store.dithers)
        for (std::size_t i = 0; i < count; ++i) scaled[i] += GetNoise(store.seed, firstSample + i);
    for (std::size_t i = 0; i < count; ++i) scaled[i] += 0.5;
    std::int32_t integers[kMaxReals];
    RoundDown(integers, scaled, count, scale);

    switch (store.to) {
    case BUFFER_FORMAT_8BIT:
        Put<std::uint8_t>(destination, integers, count, 128);
        break;
    case BUFFER_FORMAT_16BIT:
        Put<std::int16_t>(destination, integers, count, 0);
        break;
    case BUFFER_FORMAT_24BIT:
        Put24(destination, integers, count);
        break;
    default:
        Put<std::int32_t>(destination, integers, count, 0);
        break;
    }
    return CountOvers(reals, count);
}

} // namespace vorlund::pcm
