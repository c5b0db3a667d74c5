// Writes the head of a RIFF/WAVE file.
#pragma once

#include <vorlund/DataFormat.h>

#include <cstdint>
#include <vector>

/// The header of a file of `dataSize` bytes of PCM, integer or IEEE float (RFC 2361; Library of Congress,
/// fdd000001). Float PCM has an extended "fmt " chunk and a "fact" chunk with its number of frames. A size
/// that does not fit into its field becomes the largest one that does.
std::vector<std::uint8_t> MakeWavHeader(const vorlund::TDataFormat_AudioPcm& format, std::uint64_t dataSize);
