// What there is to know about a media file.
#pragma once

#include "RiffTable.h"
#include "SoundTexts.h"

#include <vorlund/AudioMeter.h>
#include <vorlund/DataFormat.h>
#include <vorlund/DecodeReport.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct TInfoLevels {
    vorlund::TAudioLevels whole = {};
    std::vector<vorlund::TChannelLevels> channels;
    std::vector<vorlund::TFrameRange> silences;
    std::vector<vorlund::TFrameRange> clippings;
};

struct TMediaInfo {
    vorlund::wstring path;
    std::uint64_t size = 0;
    /// As reports name it; empty when it is not known.
    vorlund::wstring container;
    std::optional<TRiffTable> riff;
    /// What is delivered when the file is decoded; none when it cannot be.
    std::optional<vorlund::TDataFormat_AudioPcm> sound;
    std::optional<vorlund::TDataFormat_ImageRgb> picture;
    std::optional<vorlund::TDataFormat_VideoRgb> video;
    /// Bytes of what is delivered; negative when that is not known.
    std::int64_t decodedSize = -1;
    std::vector<vorlund::TChainLink> chain;
    std::vector<TSoundText> tags;
    /// Marked places of a WAV file.
    std::vector<vorlund::TWavCuePoint> cues;
    std::optional<TInfoLevels> levels;
    std::vector<vorlund::wstring> warnings;
    /// Why it cannot be decoded; empty when it can.
    vorlund::wstring failure;

    /// Frames of sound or video; nothing when that is not known.
    std::optional<std::uint64_t> GetFrames() const;
    /// Of a frame, in seconds; 0 for pictures.
    double GetFrameSeconds() const;
};

/// What else is wanted of the sound.
struct TSoundWishes {
    bool hasLevels = false;
    /// Names of files, UTF-8, "-" for the standard output; empty for none.
    std::string picture;
    std::string peaks;
    std::uint32_t points = 1000;
};

/// Looks into the file. Raises `TProgramError` and the library's exceptions when it cannot be read; one that
/// cannot be decoded is told of all the same.
TMediaInfo CollectInfo(const std::string& name, const TSoundWishes& wishes);
