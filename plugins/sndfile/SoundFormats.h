// What the formats of libsndfile are in ours.
#pragma once

#include <vorlund/DataFormat.h>

#include <sndfile.h>

#include <cstdint>

/// How a frame in the middle is reached so that its samples are those of a decoding from the beginning.
enum class TSeekRule {
    Direct,   ///< libsndfile goes there
    Pages,    ///< Vorbis: from a page of the file before it, if that is not the last one
    DecodeOn, ///< what comes before it is decoded
};

struct TSoundFormat {
    vorlund::TSampleFormat sampleFormat;
    TSeekRule seekRule;
};

/// The format in which the samples of `info` are announced and read, and how they are reached.
TSoundFormat GetSoundFormat(const SF_INFO& info);

/// Reads `frames` frames in a sample format that `GetSoundFormat` gives; the frames that were read.
std::int64_t ReadFrames(SNDFILE* file, std::uint32_t format, void* buffer, std::int64_t frames);
