#include "vorlund/data/filters/WavChunkDecoder.h"

#include "vorlund/api/objects/CreateOrRaise.h"
#include "vorlund/data/base/QuietCall.h"

#include <vorlund/DecodeNotes.h>
#include <vorlund/DecoderSupport.h>
#include <vorlund/ObjectList.h>
#include <vorlund/StringObject.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/data/filters/WavChunkDecoder");
constexpr const wchar* kConnect = VRL_L("vorlund::CWavChunkDecoder::Connect");
constexpr const wchar* kEnumerateChunks = VRL_L("vorlund::CWavChunkDecoder::EnumerateChunks");
constexpr const wchar* kRead = VRL_L("vorlund::CWavChunkDecoder::Read");
constexpr const wchar* kSelectChunk = VRL_L("vorlund::CWavChunkDecoder::SelectChunk");
constexpr const wchar* kNotConnected = VRL_L("Stream is not connected");

constexpr TFailure kSeekUnsupported{kConnect, kFile, 244, VRL_L("Seek unsupported")};
constexpr TFailure kTellUnsupported{kConnect, kFile, 247, VRL_L("Tell unsupported")};
constexpr TFailure kInvalidHeader{kConnect, kFile, 256, VRL_L("Invalid header")};
constexpr TFailure kNoList{kEnumerateChunks, kFile, 292, VRL_L("Cannot create object list")};
constexpr TFailure kNoString{kEnumerateChunks, kFile, 297, VRL_L("Cannot create string object")};
constexpr TFailure kSelectNotConnected{kSelectChunk, kFile, 321, kNotConnected};
constexpr TFailure kCannotFindChunk{kSelectChunk, kFile, 331, VRL_L("Cannot find chunk")};

constexpr std::size_t kFileHeaderSize = 12;
constexpr std::size_t kWordSize = 4;

} // namespace

/// The records of a stream from its beginning on. Where its end is known, nothing is asked for behind it: for
/// a file, that would be a call of the system for each opening.
class CWavRecords {
public:
    CWavRecords(IInputStream& stream, std::optional<std::uint64_t> end) : stream_(stream), end_(end) {}

    /// False when the record is not whole.
    bool Read(std::uint8_t* record, std::size_t size) {
        const std::uint64_t left = GetLeft();
        position_ += size;
        return ReadWhole(stream_, record, std::min<std::uint64_t>(left, size)) && left >= size;
    }
    void Skip(std::uint32_t size) {
        position_ += size;
        // A file that is not moved beyond its window keeps it, for the chunks that are read next.
        if (GetLeft() > 0) stream_.Skip(size);
    }

private:
    std::uint64_t GetLeft() const {
        if (!end_) return std::numeric_limits<std::uint64_t>::max();
        return *end_ > position_ ? *end_ - position_ : 0;
    }

    IInputStream& stream_;
    const std::optional<std::uint64_t> end_;
    /// Only counts while the end is known.
    std::uint64_t position_ = 0;
};

namespace {

/// True when the file begins with the head of a RIFF/WAVE file.
bool ReadFileHeader(CWavRecords& records) {
    std::uint8_t header[kFileHeaderSize];
    try {
        if (!records.Read(header, sizeof header)) return false;
    } catch (const CIOException&) {
        return false;
    }
    // Between the two is the size of the file, which many writers leave wrong: nothing reads it.
    return std::memcmp(header, "RIFF", kWordSize) == 0 && std::memcmp(header + 8, "WAVE", kWordSize) == 0;
}

/// Ends `SelectChunk`: raises, unless the caller only asks whether there is such a chunk.
void Miss(refusals::CQuietCall* call, const TFailure& failure) {
    if (!call) Raise<CObjectNotFoundException>(failure);
    call->Give(CObjectNotFoundException(failure.method, failure.file, failure.line, failure.reason));
}

} // namespace

// Kept for callers: what is raised for an unconnected stream differs by operation.
constexpr TGuardedFilterFailures kWavChunkDecoderFailures{
    .seekNotConnected{VRL_L("vorlund::CWavChunkDecoder::Seek"), kFile, 161, kNotConnected},
    .tellNotConnected{VRL_L("vorlund::CWavChunkDecoder::Tell"), kFile, 178, kNotConnected},
    .flushNotConnected{VRL_L("vorlund::CWavChunkDecoder::Flush"), kFile, 190, kNotConnected},
    .readNoBuffer{kRead, kFile, 207, VRL_L("buffer is NULL")},
    .readNotConnected{kRead, kFile, 209, kNotConnected},
    .readNoSample{kRead, kFile, 225, VRL_L("sample is NULL")},
    .readSample{kRead, kFile, 226, VRL_L("Media samples are not supported")},
    .skipNotConnected{VRL_L("vorlund::CWavChunkDecoder::Skip"), kFile, 232, kNotConnected},
};

std::uint32_t CWavChunkDecoder::GetCapabilities() {
    if (!stream_) return 0;
    return stream_->GetCapabilities() | STREAM_CAPABILITY_SEEK | STREAM_CAPABILITY_TELL |
           STREAM_CAPABILITY_READ;
}

std::int64_t CWavChunkDecoder::GetLength() {
    return static_cast<std::int64_t>(GetChunkSize());
}

void CWavChunkDecoder::Flush() {
    Connected<COperationNotSupportedException>(kWavChunkDecoderFailures.flushNotConnected).Flush();
}

void CWavChunkDecoder::Seek(std::int64_t position) {
    IInputStream& stream = ForSeek();
    std::uint64_t target = 0;
    if (current_) {
        // A negative position is a huge one here, so it too ends at the end of the chunk.
        target = std::min(static_cast<std::uint64_t>(position), current_->size);
        const CFilterCalls::CCall call(calls_);
        stream.Seek(current_->dataOffset + static_cast<std::int64_t>(target));
        if (!call.IsUnchanged()) return;
    }
    SetPosition(target);
}

std::int64_t CWavChunkDecoder::Tell() {
    ForTell();
    return static_cast<std::int64_t>(position_);
}

bool CWavChunkDecoder::Eof() {
    return !current_ || position_ >= current_->size;
}

std::uint64_t CWavChunkDecoder::Read(void* buffer, std::uint64_t size) {
    IInputStream& stream = ForRead(buffer);
    const std::uint64_t wanted = Clamp(size);
    if (wanted == 0) return 0;
    const CFilterCalls::CCall call(calls_);
    const std::uint64_t count = stream.Read(buffer, wanted);
    if (call.IsUnchanged()) position_ += count;
    return count;
}

CLoan CWavChunkDecoder::Lend(std::uint64_t size, std::uint64_t grain) {
    Connected<CIOException>(kWavChunkDecoderFailures.readNotConnected);
    if (!lender_) return {};
    const std::uint64_t wanted = Clamp(size);
    if (wanted == 0) return {nullptr, 0};
    const CFilterCalls::CCall call(calls_);
    CLoan loan = lender_->Lend(wanted, std::min(grain, wanted));
    if (call.IsUnchanged()) position_ += loan.GetCount();
    return loan;
}

void CWavChunkDecoder::Skip(std::uint64_t count) {
    // Kept for callers: only the connected stream moves, the position in the chunk does not.
    CGuardedFilterImpl::Skip(Clamp(count));
}

void CWavChunkDecoder::Connect(IInputStream* stream) {
    // Holds the stream until the end, whatever it does to the connection. When it has done something, that is
    // the last word.
    const CRefusal refusal(*this);
    auto next = BeginConnect(stream);
    if (!next) return;
    const CFilterCalls::CCall call(calls_);
    const std::uint32_t capabilities = next->GetCapabilities();
    if (!(capabilities & STREAM_CAPABILITY_SEEK))
        return refusal.Raise<CDataFormatException>(kSeekUnsupported);
    if (!(capabilities & STREAM_CAPABILITY_TELL))
        return refusal.Raise<CDataFormatException>(kTellUnsupported);
    auto connected = next;
    if (!call.IsUnchanged()) return;

    lender_ = AsLending(connected.Get());
    stream_ = std::move(connected);
    next->Seek(0);
    CWavRecords records(*next, refusals::CQuietCall::GetEnd(refusal));
    const bool isWav = ReadFileHeader(records);
    if (!call.IsUnchanged()) return;
    if (!isWav) {
        stream_.Reset();
        next.Reset();
        return refusal.Raise<CDataFormatException>(kInvalidHeader);
    }
    NoteContainer(VRL_L("WAV"));
    next->Seek(kFileHeaderSize);
    if (!call.IsUnchanged()) return;
    IndexChunks(*next, records, call);
    if (call.IsUnchanged()) next->Seek(0);
}

void CWavChunkDecoder::Disconnect() {
    if (!stream_) return;
    chunks_.Clear();
    Select({});
    stream_.Reset();
}

IObjectList* CWavChunkDecoder::EnumerateChunks() {
    auto list = CreateOrRaise<IObjectList>(classid::CObjectList, kNoList);
    // The classes of the list and its members may be an application's, and do anything.
    const CFilterCalls::CCall call(calls_);
    CWavChunkTable::CReader reader(chunks_);
    while (call.IsUnchanged()) {
        const std::optional<TWavChunkInfo> chunk = reader.GetNext();
        if (!chunk) break;
        const auto text = CreateOrRaise<IStringObject>(classid::CStringObject, kNoString);
        text->SetString(chunk->id);
        list->AddObject(text.Get());
    }
    return list.Detach();
}

std::uint64_t CWavChunkDecoder::GetChunkSize() {
    return current_ ? current_->size : 0;
}

std::int64_t CWavChunkDecoder::GetChunkOffset() {
    return current_ ? current_->dataOffset : -1;
}

void CWavChunkDecoder::SelectChunk(const wchar* id) {
    refusals::CQuietCall* const call = refusals::CQuietCall::Take(*this);
    if (id && !stream_) return Miss(call, kSelectNotConnected);
    Select(id ? chunks_.Find(id) : std::nullopt);
    if (!id) return;
    if (!current_) return Miss(call, kCannotFindChunk);
    stream_->Seek(current_->dataOffset);
}

void CWavChunkDecoder::IndexChunks(IInputStream& stream, CWavRecords& records,
                                   const CFilterCalls::CCall& call) {
    // Sizes never lead backwards and a head moves the stream on by eight bytes, so this ends at the end of
    // the stream, in a time that grows with its length. What a chunk declares beyond that end costs nothing.
    std::uint8_t id[kWordSize];
    std::uint8_t size[kWordSize];
    while (records.Read(id, sizeof id) && records.Read(size, sizeof size)) {
        const std::uint32_t dataSize = LoadLittleEndian32(size);
        const std::int64_t dataOffset = stream.Tell();
        if (!call.IsUnchanged()) return;
        chunks_.Append(id, dataOffset, dataSize);
        // Kept for callers: no pad byte follows a chunk of odd size.
        records.Skip(dataSize);
    }
}

void CWavChunkDecoder::Select(std::optional<TWavChunkInfo> chunk) {
    current_ = std::move(chunk);
    SetPosition(0);
}

void CWavChunkDecoder::SetPosition(std::uint64_t position) {
    position_ = position;
    calls_.NoteChange();
}

std::uint64_t CWavChunkDecoder::Clamp(std::uint64_t count) const {
    if (!current_ || position_ >= current_->size) return 0;
    return std::min(count, current_->size - position_);
}

} // namespace vorlund
