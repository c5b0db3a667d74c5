// Writes the head of a RIFF/WAVE file.
#pragma once

#include <vorlund/DataFormat.h>

#include <cstdint>
#include <vector>

/// The header of a file of `dataSize` bytes of PCM, integer or IEEE float (RFC 2361; Library of Congress,
/// fdd000001). What is not integer PCM has an extended "fmt " chunk and a "fact" chunk with its number of
/// frames. Sizes that the format cannot state are its largest ones.
std::vector<std::uint8_t> MakeWavHeader(const vorlund::TDataFormat_AudioPcm& format, std::uint64_t dataSize);
