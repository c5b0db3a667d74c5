#include "vorlund/data/wav/WavMetadataChunks.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace vorlund::wav {
namespace {

using riff::CFields;
using riff::TBytes;

// The record of broadcasters: its texts from the beginning, and where the rest is.
constexpr std::size_t kDescriptionSize = 256;
constexpr std::size_t kOriginatorSize = 32;
constexpr std::size_t kDateSize = 10;
constexpr std::size_t kTimeSize = 8;
constexpr std::size_t kReservedSize = 180;
constexpr std::size_t kBroadcastSize = 602;

constexpr std::size_t kCueSize = 24;
/// A "ltxt" chunk without a text: point, length, purpose, and four numbers of 16 bits about the text.
constexpr std::size_t kRegionSize = 20;

std::string TextOf(const std::uint8_t* bytes, std::size_t size) {
    return {bytes, std::find(bytes, bytes + size, 0)};
}

/// A text as a reader finds it again.
std::string_view UpToZero(const std::string& text) {
    return std::string_view(text).substr(0, text.find('\0'));
}

/// A chunk inside a list, whose text ends in a zero; the size does not count the padding.
void AppendText(CFields& fields, std::string_view id, const TBytes& head, const std::string& text) {
    const std::string_view shown = UpToZero(text);
    const std::size_t size = head.size() + shown.size() + 1;
    fields.Text(id).Number(size, 4).Bytes(head).Text(shown).Zeros(1 + size % 2);
}

TBytes MakeInfo(const TWavMetadata& metadata) {
    if (metadata.info.empty()) return {};
    CFields fields;
    fields.Text("INFO");
    for (const TWavInfoEntry& entry : metadata.info) AppendText(fields, entry.id, {}, entry.text);
    return fields.Get();
}

TBytes MakeBroadcast(const TWavMetadata& metadata) {
    if (!metadata.broadcast) return {};
    const TWavBroadcast& record = *metadata.broadcast;
    CFields fields;
    fields.Text(UpToZero(record.description), kDescriptionSize)
        .Text(UpToZero(record.originator), kOriginatorSize)
        .Text(UpToZero(record.originatorReference), kOriginatorSize)
        .Text(UpToZero(record.originationDate), kDateSize)
        .Text(UpToZero(record.originationTime), kTimeSize)
        .Number(record.timeReference, 8)
        .Number(record.version, 2);
    fields.Bytes({record.umid.begin(), record.umid.end()});
    for (const std::int16_t value : {record.loudnessValue, record.loudnessRange, record.maxTruePeakLevel,
                                     record.maxMomentaryLoudness, record.maxShortTermLoudness})
        fields.Number(static_cast<std::uint16_t>(value), 2);
    return fields.Zeros(kReservedSize).Text(UpToZero(record.codingHistory)).Get();
}

TBytes MakeCues(const TWavMetadata& metadata) {
    if (metadata.cues.empty()) return {};
    CFields fields;
    fields.Number(metadata.cues.size(), 4);
    for (const TWavCuePoint& cue : metadata.cues)
        fields.Number(cue.id, 4).Number(cue.position, 4).Text("data").Number(0, 8).Number(cue.position, 4);
    return fields.Get();
}

TBytes MakeLabels(const TWholeMetadata& metadata) {
    CFields fields;
    for (const TWavCuePoint& cue : metadata.known.cues) {
        const TBytes point = CFields().Number(cue.id, 4).Get();
        if (!UpToZero(cue.label).empty()) AppendText(fields, "labl", point, cue.label);
        if (!UpToZero(cue.note).empty()) AppendText(fields, "note", point, cue.note);
        if (cue.length > 0)
            fields.Text("ltxt")
                .Number(kRegionSize, 4)
                .Bytes(point)
                .Number(cue.length, 4)
                .Text("rgn ")
                .Zeros(8);
    }
    fields.Bytes(metadata.otherLabels);
    return fields.GetSize() == 0 ? TBytes() : CFields().Text("adtl").Bytes(fields.Get()).Get();
}

/// The chunks of a list one after the other; ends at the first one that is none.
template <class TAct> void ForEachInList(const TBytes& body, TAct act) {
    for (std::size_t at = 4; body.size() >= riff::kHeadSize && at <= body.size() - riff::kHeadSize;) {
        const std::string id = riff::LoadId(body.data() + at);
        if (!riff::IsId(id)) return;
        const std::size_t start = at + riff::kHeadSize;
        const std::size_t size =
            std::min<std::size_t>(LoadLittleEndian32(body.data() + at + 4), body.size() - start);
        act(id, body.data() + start, size);
        at = start + size + size % 2;
    }
}

void AddInfo(const TBytes& body, TWavMetadata& metadata) {
    ForEachInList(body, [&metadata](const std::string& id, const std::uint8_t* bytes, std::size_t size) {
        metadata.info.push_back({id, TextOf(bytes, size)});
    });
}

void AddBroadcast(const TBytes& body, TWavMetadata& metadata) {
    if (metadata.broadcast || body.size() < kBroadcastSize) return;
    TWavBroadcast& record = metadata.broadcast.emplace();
    const std::uint8_t* next = body.data();
    const auto takeText = [&next](std::size_t size) {
        next += size;
        return TextOf(next - size, size);
    };
    const auto takeNumber = [&next]() {
        next += 2;
        return LoadLittleEndian16(next - 2);
    };
    record.description = takeText(kDescriptionSize);
    record.originator = takeText(kOriginatorSize);
    record.originatorReference = takeText(kOriginatorSize);
    record.originationDate = takeText(kDateSize);
    record.originationTime = takeText(kTimeSize);
    record.timeReference = riff::LoadLittleEndian64(next);
    next += 8;
    record.version = takeNumber();
    std::copy_n(next, record.umid.size(), record.umid.begin());
    next += record.umid.size();
    for (std::int16_t TWavBroadcast::*value :
         {&TWavBroadcast::loudnessValue, &TWavBroadcast::loudnessRange, &TWavBroadcast::maxTruePeakLevel,
          &TWavBroadcast::maxMomentaryLoudness, &TWavBroadcast::maxShortTermLoudness})
        record.*value = static_cast<std::int16_t>(takeNumber());
    record.codingHistory = TextOf(body.data() + kBroadcastSize, body.size() - kBroadcastSize);
}

/// The place of the first point of that id, which is made when there is none: labels may come before their
/// points, and those without one belong to one at the beginning, so that nothing is lost.
TWholeMetadata::TPlace& FindPlace(TWholeMetadata& metadata, std::uint32_t id) {
    std::vector<TWavCuePoint>& cues = metadata.known.cues;
    const auto [place, isNew] = metadata.places.try_emplace(id, TWholeMetadata::TPlace{cues.size()});
    if (isNew) {
        cues.emplace_back().id = id;
        metadata.ranks.push_back(~std::size_t{0});
    }
    return place->second;
}

void AddCues(const TBytes& body, TWholeMetadata& metadata) {
    for (std::size_t at = 4; at + kCueSize <= body.size(); at += kCueSize) {
        const std::uint32_t id = LoadLittleEndian32(body.data() + at);
        TWholeMetadata::TPlace* place = &FindPlace(metadata, id);
        TWholeMetadata::TPlace another{metadata.known.cues.size()};
        if (place->isKnown) {
            metadata.known.cues.emplace_back();
            metadata.ranks.emplace_back();
            place = &another;
        }
        place->isKnown = true;
        metadata.ranks[place->index] = ++metadata.points;
        TWavCuePoint& cue = metadata.known.cues[place->index];
        cue.id = id;
        // The sound is one piece, so the point is at the offset in it. Some programs leave that at 0.
        const std::uint32_t offset = LoadLittleEndian32(body.data() + at + 20);
        cue.position = offset != 0 ? offset : LoadLittleEndian32(body.data() + at + 4);
    }
}

void AddLabels(const TBytes& body, TWholeMetadata& metadata) {
    CFields others;
    ForEachInList(body, [&](const std::string& id, const std::uint8_t* bytes, std::size_t size) {
        const bool isText = id == "labl" || id == "note";
        const bool isRegion = id == "ltxt" && size == kRegionSize && riff::LoadId(bytes + 8) == "rgn ";
        if ((isText && size >= 4) || isRegion) {
            const std::string text = isText ? TextOf(bytes + 4, size - 4) : std::string();
            const std::uint32_t length = isRegion ? LoadLittleEndian32(bytes + 4) : 0;
            // What says nothing is not written either, and makes no point.
            if (text.empty() && length == 0) return;
            TWavCuePoint& cue = metadata.known.cues[FindPlace(metadata, LoadLittleEndian32(bytes)).index];
            if (isRegion)
                cue.length = length;
            else
                (id == "labl" ? cue.label : cue.note) = text;
            return;
        }
        others.Text(id).Number(size, 4).Bytes({bytes, bytes + size}).Zeros(size % 2);
    });
    metadata.otherLabels.insert(metadata.otherLabels.end(), others.Get().begin(), others.Get().end());
}

TBytes MakeBody(TMetadataKind kind, const TWholeMetadata& metadata) {
    switch (kind) {
    case TMetadataKind::Info:
        return MakeInfo(metadata.known);
    case TMetadataKind::Broadcast:
        return MakeBroadcast(metadata.known);
    case TMetadataKind::Cues:
        return MakeCues(metadata.known);
    default:
        return MakeLabels(metadata);
    }
}

} // namespace

void SortCues(TWholeMetadata& metadata) {
    std::vector<std::size_t> order(metadata.known.cues.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&metadata](std::size_t one, std::size_t other) {
        return metadata.ranks[one] < metadata.ranks[other];
    });
    std::vector<TWavCuePoint> sorted;
    sorted.reserve(order.size());
    for (const std::size_t index : order) sorted.push_back(std::move(metadata.known.cues[index]));
    metadata.known.cues = std::move(sorted);
    metadata.places.clear();
    metadata.ranks.clear();
}

TBytes MakeChunk(TMetadataKind kind, const TWholeMetadata& metadata) {
    const TBytes body = MakeBody(kind, metadata);
    if (body.empty()) return {};
    const bool isBroadcast = kind == TMetadataKind::Broadcast;
    return CFields().Chunk(isBroadcast ? "bext" : kind == TMetadataKind::Cues ? "cue " : "LIST", body).Get();
}

TBytes MakeChunks(const TWholeMetadata& metadata) {
    CFields fields;
    for (const TMetadataKind kind : kMetadataKinds) fields.Bytes(MakeChunk(kind, metadata));
    return fields.Get();
}

bool IsMetadata(const std::string& id) {
    return id == "LIST" || id == "bext" || id == "cue ";
}

bool IsFree(const std::string& id) {
    return id == "JUNK" || id == "junk" || id == "PAD " || id == "FLLR";
}

bool IsKind(TMetadataKind kind, const std::string& id, const std::string& listType) {
    switch (kind) {
    case TMetadataKind::Info:
        return id == "LIST" && listType == "INFO";
    case TMetadataKind::Broadcast:
        return id == "bext";
    case TMetadataKind::Cues:
        return id == "cue ";
    default:
        return id == "LIST" && listType == "adtl";
    }
}

void AddChunk(const std::string& id, const TBytes& body, TWholeMetadata& metadata) {
    const std::string listType = body.size() >= 4 ? riff::LoadId(body.data()) : std::string();
    if (IsKind(TMetadataKind::Info, id, listType)) AddInfo(body, metadata.known);
    if (IsKind(TMetadataKind::Broadcast, id, listType)) AddBroadcast(body, metadata.known);
    if (IsKind(TMetadataKind::Cues, id, listType)) AddCues(body, metadata);
    if (IsKind(TMetadataKind::Labels, id, listType)) AddLabels(body, metadata);
}

bool HasGoodIds(const TWavMetadata& metadata) {
    return std::all_of(metadata.info.begin(), metadata.info.end(),
                       [](const TWavInfoEntry& entry) { return riff::IsId(entry.id); });
}

bool IsTooLong(const TWholeMetadata& metadata) {
    return std::any_of(std::begin(kMetadataKinds), std::end(kMetadataKinds), [&](TMetadataKind kind) {
        return MakeChunk(kind, metadata).size() > kMaxWavMetadataChunk;
    });
}

} // namespace vorlund::wav
