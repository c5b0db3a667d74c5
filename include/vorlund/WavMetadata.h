/// \file
/// What a WAV file says about itself beside its sound: the texts of its INFO list, the record of broadcasters
/// (EBU Tech 3285, "bext"), and its cue points with labels. Plain values, read from any stream, written by
/// `CWavWriter` (WavWriter.h), and changed in a file without moving its sound. RIFF, RF64 and BW64 alike.
///
/// Texts are UTF-8, as other programs write them today; bytes that are not, of older programs, are kept as
/// they are. They end at their first zero byte.
#pragma once

#include <vorlund/Platform.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vorlund {

class IInputStream;

/// A text of the INFO list. Since version 0.1.
struct TWavInfoEntry {
    /// Four characters: "INAM" title, "IART" artist, "IPRD" album, "ICMT" comment, "ICRD" date, "IGNR" genre,
    /// "ISFT" program, "ITRK" track, "ICOP" copyright.
    std::string id;
    std::string text;

    bool operator==(const TWavInfoEntry&) const = default;
};

/// The record of broadcasters. Texts that are longer than their fields are cut when they are written. Since
/// version 0.1.
struct TWavBroadcast {
    /// At most 256, 32 and 32 bytes.
    std::string description;
    std::string originator;
    std::string originatorReference;
    /// "2026-03-31" and "23:59:59".
    std::string originationDate;
    std::string originationTime;
    /// The first frame's number since midnight.
    std::uint64_t timeReference = 0;
    /// Of the record: 0 as it was at first, 1 with `umid`, 2 with the loudness.
    std::uint16_t version = 1;
    /// A SMPTE UMID (SMPTE 330M), or zeros.
    std::array<std::uint8_t, 64> umid = {};
    /// In hundredths of LUFS, LU, dBTP, LUFS and LUFS; they count with version 2.
    std::int16_t loudnessValue = 0;
    std::int16_t loudnessRange = 0;
    std::int16_t maxTruePeakLevel = 0;
    std::int16_t maxMomentaryLoudness = 0;
    std::int16_t maxShortTermLoudness = 0;
    /// Lines of what was done to the sound, each with "\r\n" at its end.
    std::string codingHistory;

    bool operator==(const TWavBroadcast&) const = default;
};

/// A marked place. Since version 0.1.
struct TWavCuePoint {
    /// Different for each point.
    std::uint32_t id = 0;
    /// The number of a frame.
    std::uint32_t position = 0;
    /// Frames from there that belong to it; 0 for a place alone.
    std::uint32_t length = 0;
    std::string label;
    std::string note;

    bool operator==(const TWavCuePoint&) const = default;
};

/// Everything of a file. Empty members have no chunk. Since version 0.1.
struct TWavMetadata {
    std::vector<TWavInfoEntry> info;
    std::optional<TWavBroadcast> broadcast;
    std::vector<TWavCuePoint> cues;

    bool operator==(const TWavMetadata&) const = default;
};

/// The most bytes that one chunk of metadata may have. A longer one is neither read nor written.
constexpr std::uint32_t kMaxWavMetadataChunk = 16 * 1024 * 1024;

/// Reads the metadata of the WAV file that begins where `stream` is. The stream may be of any kind: one that
/// cannot seek is read to its end. Where several chunks of a kind follow each other, the texts and points of
/// all count, and the first record of broadcasters. A damaged file gives what comes before the damage.
///
/// Raises `CNullPtrException` "stream is NULL", `CDataFormatException` "Invalid header", and what the stream
/// raises. Since version 0.1.
VRL_API TWavMetadata ReadWavMetadata(IInputStream* stream);

/// Gives the file `path` this metadata in place of its own. Only the kinds that differ are written: into the
/// place of the former ones and into room that is kept free ("JUNK" and "PAD " chunks), else behind all else;
/// the former chunks then become free room. No byte of the sound is moved or written, other chunks and what
/// the lists hold beside this stay, and a process that ends in between leaves a file that opens.
///
/// Raises `CFileAccessException` "Cannot open '...' for writing" (`GetOpenFailure` in StreamErrors.h says
/// why), `CDataFormatException` "Invalid header" and "The sizes of the chunks are wrong" (`RepairWav` in
/// WavRepair.h mends them), also when bytes of another kind follow the last chunk and more than one kind of
/// metadata, or one that finds no room, would change, `CInvalidParameterException` "An id has not four
/// characters" and "The metadata are too long", `CIOException` "Cannot read the file" and "Cannot write the
/// file". Since version 0.1.
VRL_API void EditWavMetadata(const wchar* path, const TWavMetadata& metadata);

} // namespace vorlund
