// What sound files say about themselves, by the same names for every kind of file.
#pragma once

#include <vorlund/AudioEncoder.h>
#include <vorlund/Stream.h>
#include <vorlund/WavMetadata.h>

#include <string>
#include <vector>

/// A text of a file: "title", "artist".
struct TSoundText {
    std::string name;
    vorlund::wstring text;
};

/// The texts that the decoder of the plug-in sndfile has found; none of other streams.
std::vector<TSoundText> GetSoundTexts(vorlund::IInputStream& decoded);

/// The texts of a WAV file. INFO texts without a name of their own have their four letters.
std::vector<TSoundText> GetWavTexts(const vorlund::TWavMetadata& metadata);

/// The texts in an INFO list; those that it has no place for are left out.
std::vector<vorlund::TWavInfoEntry> MakeInfoEntries(const std::vector<TSoundText>& texts);

/// Gives an encoder the texts; those that its kind of file has no place for are left out.
void SetEncoderTexts(vorlund::IAudioEncoder& encoder, const std::vector<TSoundText>& texts);
