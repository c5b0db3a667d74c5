// The chunks of a file that is changed in place.
#pragma once

#include "vorlund/data/file/UpdateFile.h"
#include "vorlund/data/wav/RiffFields.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vorlund::riff {

/// A chunk of a file. Positions are those of the file.
struct TChunk {
    std::string id;
    /// Of the id.
    std::uint64_t begin = 0;
    /// As far as it is known: of a "data" chunk of an RF64 that of the "ds64" chunk.
    std::uint64_t size = 0;
    /// What the field of 32 bits says.
    std::uint32_t declared = 0;

    std::uint64_t GetBody() const { return begin + kHeadSize; }
    std::uint64_t GetEnd() const { return GetBody() + size; }
    /// Where the next chunk begins.
    std::uint64_t GetNext() const { return GetBody() + Pad(size); }
};

/// The head of a file and its first chunk.
struct TFileHead {
    /// "RIFF", "RF64" or "BW64".
    std::string id;
    /// One of the latter.
    bool is64 = false;
    /// As declared; of 64 bits when `hasDs64`.
    std::uint64_t riffSize = 0;
    std::uint32_t declaredRiffSize = 0;
    /// The first chunk holds sizes of 64 bits, or is room for them.
    bool hasDs64 = false;
    bool hasRoom64 = false;
    std::uint64_t dataSize = 0;
    std::uint64_t frames = 0;
};

/// Positions up to here are possible.
inline constexpr std::uint64_t kMaxFileSize = std::uint64_t{1} << 62;

/// More chunks than that are no file of ours, but zeros or noise.
inline constexpr std::size_t kMaxChunks = 100000;

/// Reads the head. False when it is none of a WAV file.
bool ReadFileHead(CUpdateFile& file, TFileHead& head);

/// The chunk at `position`; false when no whole head of one is there.
bool ReadChunk(CUpdateFile& file, const TFileHead& head, std::uint64_t position, TChunk& chunk);

/// The data of a chunk, at most `limit` bytes, and what the file has of them.
TBytes ReadBody(CUpdateFile& file, const TChunk& chunk, std::uint64_t limit);

/// What the sizes of a file are to be.
struct TSizes {
    std::uint64_t riff = 0;
    std::uint64_t data = 0;
    std::uint64_t frames = 0;
    /// Whether the file is an RF64 or BW64 then, as it must be when `riff` is no number of 32 bits.
    bool is64 = false;
};

/// Whether the file can have them: fields or room of 64 bits where they are needed.
bool CanHold(const TFileHead& head, const TSizes& sizes);

/// Writes the head of the file for `sizes`, which it can hold, at once.
void WriteFileHead(CUpdateFile& file, const TFileHead& head, const TSizes& sizes);

} // namespace vorlund::riff
