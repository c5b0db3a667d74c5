// Writes the head of a RIFF/WAVE file.
#pragma once

#include <vorlund/DataFormat.h>

#include <array>
#include <cstdint>

constexpr std::size_t kWavHeaderSize = 44;

/// The header of a file of `dataSize` bytes of PCM. Sizes that the format cannot state are its largest ones.
std::array<std::uint8_t, kWavHeaderSize> MakeWavHeader(const vorlund::TDataFormat_AudioPcm& format,
                                                       std::uint64_t dataSize);
