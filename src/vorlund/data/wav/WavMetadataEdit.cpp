// Metadata in a file that stays where it is. Each kind is replaced for itself, and each write leaves a file
// whose chunks follow each other: a place is one free chunk until its new content is whole, and bytes behind
// the end that the head of the file tells are no part of it until it tells a new end.
#include "vorlund/data/wav/RiffFile.h"
#include "vorlund/data/wav/WavDescription.h"
#include "vorlund/data/wav/WavMetadataChunks.h"

#include <vorlund/Exception.h>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace vorlund {
namespace {

using riff::CFields;
using riff::TBytes;
using riff::TChunk;
using wav::TMetadataKind;

constexpr const wchar* kFile = VRL_L("src/vorlund/data/wav/WavMetadataEdit");
constexpr const wchar* kMethod = VRL_L("vorlund::EditWavMetadata");

constexpr TFailure kBadHeader{kMethod, kFile, 1, VRL_L("Invalid header")};
constexpr TFailure kBadSizes{kMethod, kFile, 2, VRL_L("The sizes of the chunks are wrong")};
constexpr TFailure kBadId{kMethod, kFile, 3, VRL_L("An id has not four characters")};
constexpr TFailure kTooLong{kMethod, kFile, 4, VRL_L("The metadata are too long")};

/// What an edit writes behind the file before that has it.
constexpr std::uint64_t kMaxRest = kMaxWavMetadataChunk + std::uint64_t{4} * riff::kHeadSize;

/// A chunk, and the kind of metadata that it holds.
struct TPart : TChunk {
    std::optional<TMetadataKind> kind = {};
    bool isFree = false;
};

/// Parts that follow each other, as one place.
struct TPlace {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    /// Some of it is what will be replaced.
    bool isUsed = false;

    std::uint64_t GetSize() const { return end - begin; }
    /// Whether a chunk fills it, or leaves a whole free chunk.
    bool Fits(std::uint64_t size) const { return size == GetSize() || size + riff::kHeadSize <= GetSize(); }
};

class CEditor {
public:
    explicit CEditor(const wchar* path) : file_(path, false) { Look(); }

    const wav::TWholeMetadata& GetMetadata() const { return metadata_; }

    /// Whether there are bytes behind the last chunk: nothing can be put at the end. What an edit that ended
    /// early has left there is nothing.
    bool HasTail() {
        const std::uint64_t length = file_.GetLength();
        if (length <= end_) return false;
        const std::uint64_t size = length - end_;
        if (size > kMaxRest) return true;
        TBytes rest(static_cast<std::size_t>(size));
        rest.resize(static_cast<std::size_t>(file_.Read(end_, rest.data(), size)));
        const bool hasHead = rest.size() >= riff::kHeadSize && riff::LoadId(rest.data()) == "JUNK";
        return std::any_of(rest.begin() + (hasHead ? riff::kHeadSize : 0), rest.end(),
                           [](std::uint8_t byte) { return byte != 0; });
    }

    /// Puts `chunk`, which may be empty, into the place of those of its kind.
    void Replace(TMetadataKind kind, const TBytes& chunk) {
        if (!chunk.empty()) {
            if (const std::optional<TPlace> place = FindPlace(kind, chunk.size()))
                Fill(*place, chunk, chunk.size());
            else
                Append(kind, chunk);
        }
        // What was not written over.
        for (const TPart& part : parts_) {
            if (part.kind == kind && !IsInside(part)) file_.Write(part.begin, "JUNK", 4);
        }
        Look();
    }

    void Close() { file_.Close(); }

private:
    /// Takes in what the file holds now.
    void Look() {
        parts_.clear();
        metadata_ = {};
        data_ = {};
        written_ = {};
        if (!riff::ReadFileHead(file_, head_)) Raise<CDataFormatException>(kBadHeader);
        const std::uint64_t end = std::min(head_.riffSize, riff::kMaxFileSize) + riff::kHeadSize;
        // The last byte may be one of padding that was not written, or not counted.
        if (end > file_.GetLength() + 1 || (head_.is64 && !head_.hasDs64))
            Raise<CDataFormatException>(kBadSizes);
        std::uint64_t position = riff::kFileHeadSize;
        while (position + riff::kHeadSize <= end) {
            TPart part;
            const bool isChunk = riff::ReadChunk(file_, head_, position, part);
            if (!isChunk || part.GetEnd() > end || parts_.size() >= riff::kMaxChunks)
                Raise<CDataFormatException>(kBadSizes);
            position = part.GetNext();
            Take(part);
        }
        wav::SortCues(metadata_);
        end_ = position;
        if (!data_ || position > file_.GetLength() + 1) Raise<CDataFormatException>(kBadSizes);
    }

    void Take(TPart& part) {
        if (part.id == "data") {
            if (!data_) data_ = part;
        } else if (part.id == "fmt ") {
            const TBytes body = riff::ReadBody(file_, part, wav::kMinDescription);
            if (body.size() >= wav::kMinDescription) blockSize_ = wav::ReadDescription(body).blockSize;
        } else if (wav::IsFree(part.id)) {
            // The first chunk may have to hold sizes one day.
            part.isFree = part.begin != riff::kFileHeadSize || !head_.hasRoom64;
        } else if (wav::IsMetadata(part.id) && part.size <= kMaxWavMetadataChunk) {
            const TBytes body = riff::ReadBody(file_, part, part.size);
            const std::string listType = body.size() >= 4 ? riff::LoadId(body.data()) : std::string();
            for (const TMetadataKind kind : wav::kMetadataKinds) {
                if (wav::IsKind(kind, part.id, listType)) part.kind = kind;
            }
            wav::AddChunk(part.id, body, metadata_);
        }
        parts_.push_back(part);
    }

    bool IsInside(const TChunk& part) const {
        return written_ && part.begin >= written_->begin && part.begin < written_->end;
    }

    /// The places that may be written over for this kind, in their order.
    std::vector<TPlace> GetPlaces(TMetadataKind kind) const {
        std::vector<TPlace> places;
        for (const TPart& part : parts_) {
            const bool isOld = part.kind == kind;
            if (!isOld && !part.isFree) continue;
            const bool follows = !places.empty() && places.back().end == part.begin &&
                                 part.GetNext() - places.back().begin < riff::kSizeElsewhere;
            if (!follows) places.push_back({part.begin, part.begin, false});
            places.back().end = part.GetNext();
            places.back().isUsed = places.back().isUsed || isOld;
        }
        return places;
    }

    /// Room that is free comes first: until all is written, the former metadata stay.
    std::optional<TPlace> FindPlace(TMetadataKind kind, std::uint64_t size) const {
        const std::vector<TPlace> places = GetPlaces(kind);
        for (const bool isUsed : {false, true}) {
            for (const TPlace& place : places) {
                if (place.isUsed == isUsed && place.Fits(size)) return place;
            }
        }
        return {};
    }

    /// Writes a chunk into a place of `size` bytes or more, whose rest becomes free.
    void Fill(const TPlace& place, const TBytes& chunk, std::uint64_t used) {
        WriteHead(place.begin, "JUNK", place.GetSize());
        CFields content;
        content.Bytes({chunk.begin() + riff::kHeadSize, chunk.end()});
        if (place.GetSize() > used) content.Text("JUNK").Number(place.GetSize() - used - riff::kHeadSize, 4);
        file_.Write(place.begin + riff::kHeadSize, content.Get().data(), content.GetSize());
        file_.Write(place.begin, chunk.data(), riff::kHeadSize);
        written_ = place;
    }

    /// \param size  of the whole chunk
    void WriteHead(std::uint64_t position, std::string_view id, std::uint64_t size) {
        const TBytes head = CFields().Text(id).Number(size - riff::kHeadSize, 4).Get();
        file_.Write(position, head.data(), head.size());
    }

    /// Puts a chunk at the end of the file.
    void Append(TMetadataKind kind, const TBytes& chunk) {
        // There must be nothing else.
        if (HasTail()) Raise<CDataFormatException>(kBadSizes);
        const std::vector<TPlace> places = GetPlaces(kind);
        const bool isLastFree = !places.empty() && places.back().end == end_;
        TPlace place = isLastFree ? places.back() : TPlace{end_, end_, false};
        // A place grows by a whole free chunk, and the rest of it is one too.
        place.end = std::max(place.begin + chunk.size(), end_ + riff::kHeadSize);
        if (!place.Fits(chunk.size())) place.end = place.begin + chunk.size() + riff::kHeadSize;
        const riff::TSizes sizes = GetSizes(place.end);
        if (!riff::CanHold(head_, sizes)) Raise<CInvalidParameterException>(kTooLong);
        if (file_.GetLength() < end_) file_.Write(file_.GetLength(), "", 1);
        // All of it, before anything tells of it.
        const std::uint64_t more = place.end - end_;
        file_.Write(end_, TBytes(static_cast<std::size_t>(more)).data(), more);
        WriteHead(end_, "JUNK", more);
        riff::WriteFileHead(file_, head_, sizes);
        Fill(place, chunk, chunk.size());
    }

    riff::TSizes GetSizes(std::uint64_t end) const {
        const std::uint64_t frames = blockSize_ == 0 ? 0 : data_->size / blockSize_;
        riff::TSizes sizes{end - riff::kHeadSize, data_->size, head_.hasDs64 ? head_.frames : frames,
                           head_.is64};
        sizes.is64 = sizes.is64 || sizes.riff >= riff::kSizeElsewhere;
        return sizes;
    }

    CUpdateFile file_;
    riff::TFileHead head_;
    std::vector<TPart> parts_;
    wav::TWholeMetadata metadata_;
    std::optional<TChunk> data_;
    std::uint32_t blockSize_ = 0;
    /// Where the next chunk would be.
    std::uint64_t end_ = 0;
    std::optional<TPlace> written_;
};

} // namespace

void EditWavMetadata(const wchar* path, const TWavMetadata& metadata) {
    if (!wav::HasGoodIds(metadata)) Raise<CInvalidParameterException>(kBadId);
    CEditor editor(path);
    wav::TWholeMetadata wanted{metadata, editor.GetMetadata().otherLabels};
    if (wav::IsTooLong(wanted)) Raise<CInvalidParameterException>(kTooLong);
    std::vector<std::pair<TMetadataKind, TBytes>> changes;
    for (const TMetadataKind kind : wav::kMetadataKinds) {
        TBytes chunk = wav::MakeChunk(kind, wanted);
        if (chunk != wav::MakeChunk(kind, editor.GetMetadata())) changes.emplace_back(kind, std::move(chunk));
    }
    // One kind has its place or not; of several, the last might find none when the first are written.
    if (changes.size() > 1 && editor.HasTail()) Raise<CDataFormatException>(kBadSizes);
    for (const auto& [kind, chunk] : changes) editor.Replace(kind, chunk);
    editor.Close();
}

} // namespace vorlund
