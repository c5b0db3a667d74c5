// Metadata out of a stream of any kind, from its beginning to its end.
#include "vorlund/data/wav/WavMetadataChunks.h"

#include <vorlund/Exception.h>
#include <vorlund/Stream.h>
#include <vorlund/WavMetadata.h>

#include <algorithm>

namespace vorlund {
namespace {

using riff::TBytes;

constexpr const wchar* kFile = VRL_L("src/vorlund/data/wav/WavMetadata");
constexpr const wchar* kMethod = VRL_L("vorlund::ReadWavMetadata");

constexpr TFailure kNoStream{kMethod, kFile, 1, VRL_L("stream is NULL")};
constexpr TFailure kBadHeader{kMethod, kFile, 2, VRL_L("Invalid header")};

/// What is read at once, so that a size that is none costs no memory.
constexpr std::uint64_t kStep = 64 * 1024;

/// Goes forward only.
class CReader {
public:
    explicit CReader(IInputStream& stream) : stream_(stream) {
        constexpr std::uint32_t kNeeded = STREAM_CAPABILITY_SEEK | STREAM_CAPABILITY_TELL;
        canSeek_ = (stream.GetCapabilities() & kNeeded) == kNeeded;
    }

    bool Read(void* buffer, std::uint64_t size) { return ReadWhole(stream_, buffer, size); }

    /// What there is of `size` bytes.
    TBytes ReadUpTo(std::uint64_t size) {
        TBytes bytes;
        while (size > 0) {
            const std::size_t filled = bytes.size();
            const std::uint64_t step = std::min(size, kStep);
            bytes.resize(filled + static_cast<std::size_t>(step));
            const std::uint64_t count = stream_.Read(bytes.data() + filled, step);
            bytes.resize(filled + static_cast<std::size_t>(std::min(count, step)));
            if (count == 0 || count > step) break;
            size -= count;
        }
        return bytes;
    }

    /// False when the stream ends before.
    bool Skip(std::uint64_t size) {
        if (canSeek_) {
            const std::int64_t position = stream_.Tell();
            const std::int64_t length = stream_.GetLength();
            if (position > length || size > static_cast<std::uint64_t>(length - position)) return false;
            stream_.Seek(position + static_cast<std::int64_t>(size));
            return true;
        }
        std::uint8_t dropped[4096];
        while (size > 0) {
            const std::uint64_t step = std::min<std::uint64_t>(size, sizeof dropped);
            if (!Read(dropped, step)) return false;
            size -= step;
        }
        return true;
    }

private:
    IInputStream& stream_;
    bool canSeek_;
};

} // namespace

TWavMetadata ReadWavMetadata(IInputStream* stream) {
    if (!stream) Raise<CNullPtrException>(kNoStream);
    CReader reader(*stream);
    std::uint8_t head[riff::kFileHeadSize];
    if (!reader.Read(head, sizeof head)) Raise<CDataFormatException>(kBadHeader);
    const std::string form = riff::LoadId(head);
    const bool isWav = form == "RIFF" || form == "RF64" || form == "BW64";
    if (!isWav || riff::LoadId(head + 8) != "WAVE") Raise<CDataFormatException>(kBadHeader);

    wav::TWholeMetadata metadata;
    std::uint64_t dataSize = 0;
    while (reader.Read(head, riff::kHeadSize)) {
        const std::string id = riff::LoadId(head);
        if (!riff::IsId(id)) break;
        std::uint64_t size = LoadLittleEndian32(head + 4);
        if (id == "data" && size == riff::kSizeElsewhere && dataSize != 0) size = dataSize;
        std::uint64_t rest = riff::Pad(size);
        if (id == "ds64" && size >= riff::kDs64Size) {
            const TBytes sizes = reader.ReadUpTo(riff::kDs64Size);
            if (sizes.size() < riff::kDs64Size) break;
            dataSize = riff::LoadLittleEndian64(sizes.data() + 8);
            rest -= riff::kDs64Size;
        } else if (wav::IsMetadata(id) && size <= kMaxWavMetadataChunk) {
            const TBytes body = reader.ReadUpTo(size);
            wav::AddChunk(id, body, metadata);
            if (body.size() < size) break;
            rest -= size;
        }
        if (!reader.Skip(rest)) break;
    }
    wav::SortCues(metadata);
    return std::move(metadata.known);
}

} // namespace vorlund
