// Which pictures there can be.
#pragma once

#include <vorlund/AudioPictures.h>

#include <cstdint>

constexpr std::uint32_t kMaxRate = 1000000;
constexpr std::uint32_t kMaxSoundChannels = 1024;

/// Whether every member is in the range that AudioPictures.h tells.
bool AreInRange(const vorlund::TAudioPictureSettings& settings);
