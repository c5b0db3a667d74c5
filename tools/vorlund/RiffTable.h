// What is in a file of the RIFF family, chunk by chunk: RIFF and RIFX (Microsoft and IBM, 1991), RF64 (EBU
// Tech 3306) and BW64 (ITU-R BS.2088).
#pragma once

#include <vorlund/Stream.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// Chunks of one name and size that follow each other, mostly one.
struct TRiffRow {
    /// Four bytes; those that cannot be printed are written as "\x00".
    std::string name;
    /// How many of the name came before, and one: 2 for the second.
    std::uint64_t number = 1;
    /// Of the first byte of the first one's data.
    std::uint64_t offset = 0;
    /// As it is declared.
    std::uint64_t size = 0;
    std::uint64_t count = 1;
};

/// The chunk "fmt ".
struct TRiffFormat {
    /// Of WAVE_FORMAT_EXTENSIBLE, the tag that stands in its place.
    std::uint16_t tag = 0;
    bool isExtensible = false;
    std::uint16_t channels = 0;
    std::uint32_t samplesPerSec = 0;
    std::uint16_t blockSize = 0;
    std::uint16_t bits = 0;
    std::uint16_t validBits = 0;
    std::uint32_t channelMask = 0;
};

struct TRiffTable {
    /// "RIFF", "RIFX", "RF64" or "BW64", and the kind of contents, "WAVE".
    std::string form;
    std::string type;
    /// Bytes of the whole file, by its head and as it is.
    std::uint64_t declaredSize = 0;
    std::uint64_t foundSize = 0;
    /// At most `kMaxRiffRows`, and how many chunks there are in all.
    std::vector<TRiffRow> rows;
    std::uint64_t chunks = 0;
    std::optional<TRiffFormat> format;
    /// The bytes of the sound, by its chunk and as they are.
    std::optional<std::uint64_t> declaredSound;
    std::uint64_t foundSound = 0;
    /// What is wrong, in a few words each.
    std::vector<std::string> warnings;

    /// Whether `ReadWavMetadata` reads it.
    bool HasWavMetadata() const { return type == "WAVE" && form != "RIFX"; }
};

constexpr std::size_t kMaxRiffRows = 1000;

/// The table of the file that `stream` has from its beginning to its end; nothing when it is of another
/// family. Only the heads of chunks are read, and memory does not grow with their number. Raises what the
/// stream raises.
std::optional<TRiffTable> ReadRiffTable(vorlund::IInputStream& stream);
