// A piece of sound that a picture is made of.
#pragma once

#include <cstddef>
#include <cstdint>

/// Frames of finite samples, channels interleaved. `centre` is the frame that the picture is about.
struct TSound {
    const float* samples;
    std::uint32_t channels;
    std::size_t frames;
    std::size_t centre;

    float At(std::size_t frame, std::uint32_t channel) const { return samples[frame * channels + channel]; }
};

/// How many frames before the centre, and from it on, are needed.
struct TReach {
    std::size_t back = 0;
    std::size_t ahead = 0;
};
