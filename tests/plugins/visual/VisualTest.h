/// \file
/// The library with the plug-in visual, and what pictures it makes.
#pragma once

#include "data/file/TemporaryFolder.h"
#include "support/ChildProcess.h"
#include "support/LibraryScope.h"
#include "support/RandomReads.h"
#include "support/Streams.h"
#include "support/Text.h"

#include <vorlund/AudioPictures.h>
#include <vorlund/DataFormat.h>
#include <vorlund/PluginStore.h>
#include <vorlund/RefPtr.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>
#include <random>
#include <vector>

namespace vorlund::test {

using TFloats = std::vector<float>;
using TPixels = std::vector<std::uint32_t>;

class CVisualTest : public testing::Test {
protected:
    CVisualTest() {
        store_.AddPluginPath(ToVorlund(BesideProgram("vorlund-plugins")).c_str());
        store_.LoadPlugin(VRL_L("visual"));
        pictures_ = CreateAs<IAudioPictures>(classid::CAudioPictures);
    }
    ~CVisualTest() noexcept override {
        pictures_.Reset();
        store_.Close();
    }

    TBytes ReadAll(unsigned int seed, std::size_t most) { return ReadRandomly(*pictures_, seed, most); }
    std::size_t GetPictureSize() {
        return static_cast<const TDataFormat_VideoRgb&>(pictures_->GetFormat()).image.GetSizeInBytes();
    }
    /// A picture by its number; empty when there is none.
    TPixels ReadPicture(std::int64_t number) {
        TPixels pixels(GetPictureSize() / sizeof(std::uint32_t));
        const std::size_t size = pixels.size() * sizeof(std::uint32_t);
        pictures_->Seek(number * static_cast<std::int64_t>(size));
        if (pictures_->Read(pixels.data(), size) != size) pixels.clear();
        return pixels;
    }

    CLibraryScope library_;
    CPluginStore store_;
    CRefPtr<IAudioPictures> pictures_;
};

/// A sound of a format; `samples` are floats, which become 16 bits where that is asked for.
inline CRefPtr<CFaultyInputStream> MakeSound(const TFloats& samples, std::uint32_t channels,
                                             std::uint32_t rate, std::uint32_t format = SAMPLE_FORMAT_16BIT) {
    auto source = Make<CFaultyInputStream>();
    source->format = TDataFormat_AudioPcm(format, channels, rate);
    if (format == SAMPLE_FORMAT_FLOAT) {
        source->bytes.resize(samples.size() * sizeof(float));
        if (!samples.empty()) std::memcpy(source->bytes.data(), samples.data(), source->bytes.size());
    }
    for (const float sample : samples) {
        // Whole numbers from here on: the same on every system.
        const auto value = static_cast<std::uint32_t>(std::lround(sample * 32767));
        if (format == SAMPLE_FORMAT_16BIT) {
            source->bytes.push_back(static_cast<std::uint8_t>(value));
            source->bytes.push_back(static_cast<std::uint8_t>(value >> 8));
        }
    }
    return source;
}

/// A tone with the same amplitude in all channels, each a little later than the one before.
inline TFloats MakeTone(double frequency, double amplitude, std::size_t frames, std::uint32_t channels,
                        std::uint32_t rate) {
    TFloats samples;
    samples.reserve(frames * channels);
    for (std::size_t i = 0; i < frames; ++i)
        for (std::uint32_t channel = 0; channel < channels; ++channel)
            samples.push_back(static_cast<float>(
                amplitude *
                std::sin(2 * std::numbers::pi * frequency * static_cast<double>(i) / rate - channel)));
    return samples;
}

/// FNV-1a of the pixels.
inline std::uint64_t HashOf(const TPixels& pixels, std::uint64_t hash = 0xCBF29CE484222325) {
    for (const std::uint32_t pixel : pixels)
        for (int shift = 0; shift < 32; shift += 8) hash = (hash ^ (pixel >> shift & 0xFF)) * 0x100000001B3;
    return hash;
}

} // namespace vorlund::test
