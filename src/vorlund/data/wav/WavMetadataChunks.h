// The chunks of metadata.
#pragma once

#include "vorlund/data/wav/RiffFields.h"

#include <vorlund/WavMetadata.h>

#include <cstddef>
#include <string>
#include <unordered_map>

namespace vorlund::wav {

/// The kinds of chunks, each of which is there once or not at all.
enum class TMetadataKind { Info, Broadcast, Cues, Labels };
inline constexpr TMetadataKind kMetadataKinds[] = {TMetadataKind::Broadcast, TMetadataKind::Info,
                                                   TMetadataKind::Cues, TMetadataKind::Labels};

/// Metadata, and what other programs have put between the labels.
struct TWholeMetadata {
    TWavMetadata known = {};
    /// Chunks inside the list of labels that are none of ours.
    riff::TBytes otherLabels = {};
    /// Where the point of each id is, and whether a chunk has said its position.
    struct TPlace {
        std::size_t index = 0;
        bool isKnown = false;
    };
    std::unordered_map<std::uint32_t, TPlace> places = {};
    /// The number of each cue's point; the greatest for those that have labels alone.
    std::vector<std::size_t> ranks = {};
    std::size_t points = 0;
};

/// To be called behind the last chunk: the cues come in the order of their points, whatever came before
/// these.
void SortCues(TWholeMetadata& metadata);

/// The chunk of a kind; empty when there is nothing of it. The metadata are possible.
riff::TBytes MakeChunk(TMetadataKind kind, const TWholeMetadata& metadata);

/// All chunks behind each other.
riff::TBytes MakeChunks(const TWholeMetadata& metadata);

/// Whether a chunk with that id may be of metadata.
bool IsMetadata(const std::string& id);
/// Whether it is free room.
bool IsFree(const std::string& id);

/// Adds what a chunk says. Chunks of other kinds say nothing.
///
/// \param body  its data, cut at `kMaxWavMetadataChunk`
void AddChunk(const std::string& id, const riff::TBytes& body, TWholeMetadata& metadata);

/// The kind of a chunk by its id and the first bytes of its data.
bool IsKind(TMetadataKind kind, const std::string& id, const std::string& listType);

/// Whether every id has four characters.
bool HasGoodIds(const TWavMetadata& metadata);
/// Whether a chunk would be longer than it may be.
bool IsTooLong(const TWholeMetadata& metadata);

} // namespace vorlund::wav
