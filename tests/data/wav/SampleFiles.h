/// \file
/// WAV files of every format, number of channels and size, for comparisons.
#pragma once

#include "data/wav/Metadata.h"
#include "data/wav/WavFile.h"

#include <cstring>
#include <string>
#include <vector>

namespace vorlund::test {

struct TSampleFile {
    std::string name;
    TWavWriterFormat format;
    std::uint32_t frames = 0;
    TBytes bytes;
    /// Its samples, and the same as signed 32 bits.
    TBytes sound;
    TBytes wide;
};

/// Samples of a made-up sound, and the same as 32 bits.
inline void MakeSound(TWavSampleFormat format, std::uint32_t count, TBytes& sound, TBytes& wide) {
    std::uint32_t state = 1;
    for (std::uint32_t i = 0; i < count; ++i) {
        state = state * 1664525 + 1013904223;
        std::uint32_t value = state;
        switch (format) {
        case WAV_SAMPLE_8BIT:
            value &= 0xFF000000;
            sound.push_back(static_cast<std::uint8_t>((value >> 24) + 128));
            break;
        case WAV_SAMPLE_16BIT:
            value &= 0xFFFF0000;
            Append16(sound, value >> 16);
            break;
        case WAV_SAMPLE_24BIT:
            value &= 0xFFFFFF00;
            for (int shift = 8; shift < 32; shift += 8)
                sound.push_back(static_cast<std::uint8_t>(value >> shift));
            break;
        case WAV_SAMPLE_32BIT:
            Append32(sound, value);
            break;
        case WAV_SAMPLE_FLOAT: {
            // Exact in single precision.
            value &= 0xFFFF0000;
            const float number = static_cast<float>(static_cast<std::int32_t>(value)) / 2147483648.0f;
            std::uint32_t bits;
            std::memcpy(&bits, &number, sizeof bits);
            Append32(sound, bits);
            break;
        }
        }
        Append32(wide, value);
    }
}

/// Needs the library to be open.
inline std::vector<TSampleFile> MakeSampleFiles() {
    const std::vector<std::pair<TWavSampleFormat, std::string>> formats{{WAV_SAMPLE_8BIT, "u8"},
                                                                        {WAV_SAMPLE_16BIT, "s16"},
                                                                        {WAV_SAMPLE_24BIT, "s24"},
                                                                        {WAV_SAMPLE_32BIT, "s32"},
                                                                        {WAV_SAMPLE_FLOAT, "f32"}};
    std::vector<TSampleFile> files;
    for (const auto& [format, name] : formats) {
        for (std::uint32_t channels = 1; channels <= 8; ++channels) {
            for (const std::uint32_t frames : {0, 1, 37}) {
                TSampleFile& file = files.emplace_back();
                file.name = name + "-" + std::to_string(channels) + "-" + std::to_string(frames);
                file.format = TWavWriterFormat(format, channels, 48000);
                file.frames = frames;
                MakeSound(format, frames * channels, file.sound, file.wide);
                TWavWriterOptions options;
                if (frames == 37) options.metadata = FullMetadata();
                file.bytes = WriteWav(file.format, file.sound, options);
            }
        }
    }
    return files;
}

} // namespace vorlund::test
