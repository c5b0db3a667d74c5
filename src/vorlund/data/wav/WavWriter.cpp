// The header is written first and again and again: as a whole, because a write of the system is not torn when
// the process is killed. It never says more than the system has: the sound before it is flushed first.
#include "vorlund/data/base/StreamChain.h"
#include "vorlund/data/file/FileOutputStream.h"
#include "vorlund/data/wav/WavHeader.h"
#include "vorlund/data/wav/WavMetadataChunks.h"

#include <vorlund/Exception.h>
#include <vorlund/Resource.h>
#include <vorlund/StreamErrors.h>
#include <vorlund/WavWriter.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace vorlund {
namespace {

using riff::TBytes;
using TClock = std::chrono::steady_clock;

constexpr const wchar* kFile = VRL_L("src/vorlund/data/wav/WavWriter");
constexpr const wchar* kConstructor = VRL_L("vorlund::CWavWriter::CWavWriter");
constexpr const wchar* kWrite = VRL_L("vorlund::CWavWriter::Write");
constexpr const wchar* kFlush = VRL_L("vorlund::CWavWriter::Flush");
constexpr const wchar* kSetMetadata = VRL_L("vorlund::CWavWriter::SetMetadata");
constexpr const wchar* kFinish = VRL_L("vorlund::CWavWriter::Finish");
constexpr const wchar* kIsFinished = VRL_L("The file is finished");
constexpr const wchar* kBadId = VRL_L("An id has not four characters");
constexpr const wchar* kLongMetadata = VRL_L("The metadata are too long");

constexpr TFailure kNoStream{kConstructor, kFile, 1, VRL_L("There is no stream to write to")};
constexpr TFailure kUnknownSamples{kConstructor, kFile, 2, VRL_L("The sample format is unknown")};
constexpr TFailure kBadChannels{kConstructor, kFile, 3, VRL_L("The number of channels is impossible")};
constexpr TFailure kNoRate{kConstructor, kFile, 4, VRL_L("The rate is 0")};
constexpr TFailure kBadLength{kConstructor, kFile, 5, VRL_L("The file would be too long")};
constexpr TFailure kFirstBadId{kConstructor, kFile, 6, kBadId};
constexpr TFailure kFirstLongMetadata{kConstructor, kFile, 7, kLongMetadata};
constexpr TFailure kCannotGoBack{
    kConstructor, kFile, 8, VRL_L("The stream cannot go back to its header, and the length is not known")};
constexpr TFailure kWriteFinished{kWrite, kFile, 9, kIsFinished};
constexpr TFailure kWriteNull{kWrite, kFile, 10, VRL_L("buffer is NULL")};
constexpr TFailure kTooLong{kWrite, kFile, 11, VRL_L("The file would be longer than it can be")};
constexpr TFailure kTooMuch{kWrite, kFile, 12, VRL_L("More is written than was announced")};
constexpr TFailure kFlushFinished{kFlush, kFile, 13, kIsFinished};
constexpr TFailure kMetadataFinished{kSetMetadata, kFile, 14, kIsFinished};
constexpr TFailure kNewBadId{kSetMetadata, kFile, 15, kBadId};
constexpr TFailure kNewLongMetadata{kSetMetadata, kFile, 16, kLongMetadata};
constexpr TFailure kMetadataCannotGoBack{kSetMetadata, kFile, 17,
                                         VRL_L("The stream cannot go back to its header")};
constexpr TFailure kTooLittle{kFinish, kFile, 18, VRL_L("Less is written than was announced")};
constexpr TFailure kNoRoomBehind{kFinish, kFile, 19, VRL_L("The file would be longer than it can be")};
constexpr TFailure kIsLost{kFlush, kFile, 20, VRL_L("fwrite failed")};

/// How old the sizes in the header get while something is written.
constexpr std::chrono::seconds kMaxAge{1};
/// How many bytes go by between two looks at the clock, which costs as much as a small write: at most that,
/// and a hundredth of a second of sound.
constexpr std::uint64_t kMaxUnlooked = 4096;
/// Systems write blocks that begin at a multiple of their size in two thirds of the time.
constexpr std::uint64_t kAlignment = 64 * 1024;
constexpr std::uint32_t kMaxBlockSize = 0xFFFF;

void Check(const TWavWriterFormat& format, const TWavWriterOptions& options) {
    const std::uint32_t sample = wav::GetSampleSize(format.sampleFormat);
    if (sample == 0) Raise<CInvalidParameterException>(kUnknownSamples);
    const bool isPlain = format.description == WAV_DESCRIPTION_PLAIN;
    if ((format.channels == 0 && !isPlain) || format.channels > kMaxBlockSize / sample)
        Raise<CInvalidParameterException>(kBadChannels);
    if (format.samplesPerSec == 0 && !isPlain) Raise<CInvalidParameterException>(kNoRate);
    if (options.length.value_or(0) > wav::kMaxDataSize) Raise<CInvalidParameterException>(kBadLength);
    if (!wav::HasGoodIds(options.metadata)) Raise<CInvalidParameterException>(kFirstBadId);
    if (options.metadataRoom > kMaxWavMetadataChunk || wav::IsTooLong({options.metadata}))
        Raise<CInvalidParameterException>(kFirstLongMetadata);
}

/// Room that the metadata fill, or leave a whole free chunk of.
std::uint64_t GetRoom(const TBytes& chunks, std::uint32_t wanted) {
    const std::uint64_t room = std::max<std::uint64_t>(chunks.size(), wanted + wanted % 2);
    const std::uint64_t rest = room - chunks.size();
    return rest != 0 && rest < riff::kHeadSize ? chunks.size() + riff::kHeadSize : room;
}

} // namespace

struct CWavWriter::TState {
    TState(CRefPtr<IOutputStream> output, const TWavWriterFormat& format, const TWavWriterOptions& options,
           const TBytes& chunks, bool isSeekable)
        : stream(std::move(output)), canGoBack(isSeekable),
          hasRoom64(NeedsRoom(format, options, chunks, isSeekable)),
          header(format, hasRoom64, chunks, GetRoom(chunks, options.metadataRoom)), announced(options.length),
          unlookedLimit(
              std::min(kMaxUnlooked, std::uint64_t{format.samplesPerSec} * format.GetBlockSize() / 100)),
          // Resources take everything at once.
          canFlush(!EndOfChain(*stream).Query<IResourceOs>()) {}

    static bool NeedsRoom(const TWavWriterFormat& format, const TWavWriterOptions& options,
                          const TBytes& chunks, bool isSeekable) {
        const wav::CHeader small(format, false, chunks, GetRoom(chunks, options.metadataRoom));
        return (isSeekable && options.canGrow) || !small.CanHold(options.length.value_or(0), 0);
    }

    /// Whether writes go where the position is, as far as that is known before the first one.
    static bool CanGoBack(IOutputStream& stream) {
        constexpr std::uint32_t kNeeded = STREAM_CAPABILITY_SEEK | STREAM_CAPABILITY_TELL;
        return (stream.GetCapabilities() & kNeeded) == kNeeded && WritesAtPosition(stream) &&
               !EndOfChain(stream).Query<IAppendingRos>();
    }

    void Begin() {
        if (canGoBack) start = stream->Tell();
        const TBytes bytes = header.Make(canGoBack ? 0 : *announced, 0);
        stream->Write(bytes.data(), bytes.size());
        isAtEnd = true;
        FlushStream();
        if (canGoBack) CheckPositions(bytes);
        // A process that is killed before the first sound leaves an empty file that opens.
        FlushStream();
        refreshed = TClock::now();
    }

    /// What streams of others do with a position shows only when they are written.
    void CheckPositions(const TBytes& bytes) {
        const std::int64_t length = stream->GetLength();
        bool isRight = stream->Tell() == GetEnd();
        isAtEnd = false;
        stream->Seek(start);
        stream->Write(bytes.data(), 1);
        isRight = isRight && stream->Tell() == start + 1 && stream->GetLength() == length;
        if (!isRight) Raise<COperationNotSupportedException>(kCannotGoBack);
        GoToEnd();
    }

    std::int64_t GetEnd() const { return start + static_cast<std::int64_t>(header.GetSize() + size); }

    void GoToEnd() {
        if (isAtEnd || !canGoBack) return;
        stream->Seek(GetEnd());
        isAtEnd = true;
        isAligned = false;
    }

    void Append(const void* buffer, std::uint64_t count) {
        GoToEnd();
        isAtEnd = false;
        const std::uint64_t first = GetUnaligned(count);
        stream->Write(buffer, first);
        if (first < count) {
            // From here on, the blocks of the file's buffer are those of the system's cache.
            FlushStream();
            isAligned = true;
            stream->Write(static_cast<const std::uint8_t*>(buffer) + first, count - first);
        }
        isAtEnd = true;
    }

    /// How much of what is written comes before the next whole block of the file, when blocks began
    /// elsewhere.
    std::uint64_t GetUnaligned(std::uint64_t count) const {
        if (isAligned || !canGoBack) return count;
        return std::min(count, kAlignment - static_cast<std::uint64_t>(GetEnd()) % kAlignment);
    }

    /// Hands to the system what the stream has, where it can.
    void FlushStream() {
        if (canFlush) {
            try {
                stream->Flush();
            } catch (const COperationNotSupportedException&) {
                canFlush = false;
            }
        }
        if (GetWriteError(*stream) != 0) Raise<CIOException>(kIsLost);
    }

    /// Puts everything behind the sound, and then the header for it. The position is then anywhere.
    void Complete(const TBytes& behind) {
        GoToEnd();
        isAtEnd = false;
        const TBytes tail = riff::CFields().Zeros(static_cast<std::size_t>(size % 2)).Bytes(behind).Get();
        if (!tail.empty()) stream->Write(tail.data(), tail.size());
        FlushStream();
        if (!canGoBack) return;
        const TBytes bytes = header.Make(size, behind.size());
        stream->Seek(start);
        stream->Write(bytes.data(), bytes.size());
        FlushStream();
    }

    void Refresh() {
        refreshed = TClock::now();
        if (!canGoBack) return FlushStream();
        Complete({});
        GoToEnd();
    }

    /// \param written  bytes that have just been written
    void RefreshIfOld(std::uint64_t written) {
        unlooked += written;
        if (!canGoBack || unlooked < unlookedLimit) return;
        unlooked = 0;
        if (TClock::now() - refreshed >= kMaxAge) Refresh();
    }

    void Finish() {
        isFinished = true;
        if (!canGoBack && size < *announced) {
            FlushStream();
            Raise<CIOException>(kTooLittle);
        }
        TBytes behind;
        if (metadata && !header.Replace(*metadata)) behind = *metadata;
        const bool hasRoom = header.CanHold(size, behind.size());
        if (!hasRoom) behind.clear();
        // The header knows where the sound ends before something else begins there.
        if (canGoBack && !behind.empty()) Complete({});
        Complete(behind);
        if (canGoBack) stream->Seek(GetEnd() + static_cast<std::int64_t>(size % 2 + behind.size()));
        if (!hasRoom) Raise<CIOException>(kNoRoomBehind);
    }

    CRefPtr<IOutputStream> stream;
    const bool canGoBack;
    const bool hasRoom64;
    wav::CHeader header;
    /// Set where the stream cannot go back.
    const std::optional<std::uint64_t> announced;
    const std::uint64_t unlookedLimit;
    std::uint64_t unlooked = 0;
    bool canFlush;
    /// What replaces the metadata of the beginning.
    std::optional<TBytes> metadata;
    /// Where the file begins in the stream.
    std::int64_t start = 0;
    std::uint64_t size = 0;
    bool isAtEnd = false;
    /// The stream's buffer was empty at a multiple of `kAlignment`.
    bool isAligned = false;
    bool isFinished = false;
    bool isClosed = false;
    TClock::time_point refreshed;
};

CWavWriter::CWavWriter(const COutputStreamSelector& output, const TWavWriterFormat& format,
                       const TWavWriterOptions& options) {
    auto stream = CRefPtr<IOutputStream>::Adopt(output.GetOutputStream());
    if (!stream) Raise<CNullPtrException>(kNoStream);
    Check(format, options);
    const bool canGoBack = TState::CanGoBack(*stream);
    if (!canGoBack && !options.length) Raise<COperationNotSupportedException>(kCannotGoBack);
    state_ = std::make_unique<TState>(std::move(stream), format, options, wav::MakeChunks({options.metadata}),
                                      canGoBack);
    state_->Begin();
}

CWavWriter::~CWavWriter() {
    try {
        Finish();
    } catch (...) {
        // Who wants to know calls `Close`.
    }
    // Not left to the destructor, from which nothing can be raised.
    try {
        state_->stream.Reset();
    } catch (...) {
        // Streams may raise at their end.
    }
}

void CWavWriter::Write(const void* buffer, std::uint64_t size) {
    if (state_->isFinished) Raise<CInvalidStateException>(kWriteFinished);
    if (size == 0) return;
    if (!buffer) Raise<CNullPtrException>(kWriteNull);
    const bool isPossible = size <= wav::kMaxDataSize && state_->header.CanHold(state_->size + size, 0);
    if (!isPossible) Raise<CIOException>(kTooLong);
    if (!state_->canGoBack && state_->size + size > *state_->announced) Raise<CIOException>(kTooMuch);
    state_->Append(buffer, size);
    state_->size += size;
    state_->RefreshIfOld(size);
}

void CWavWriter::Flush() {
    if (state_->isFinished) Raise<CInvalidStateException>(kFlushFinished);
    state_->Refresh();
}

void CWavWriter::SetMetadata(const TWavMetadata& metadata) {
    if (state_->isFinished) Raise<CInvalidStateException>(kMetadataFinished);
    if (!wav::HasGoodIds(metadata)) Raise<CInvalidParameterException>(kNewBadId);
    if (wav::IsTooLong({metadata})) Raise<CInvalidParameterException>(kNewLongMetadata);
    if (!state_->canGoBack) Raise<COperationNotSupportedException>(kMetadataCannotGoBack);
    state_->metadata = wav::MakeChunks({metadata});
}

std::uint64_t CWavWriter::GetSize() const {
    return state_->size;
}

void CWavWriter::Finish() {
    if (!state_->isFinished) state_->Finish();
}

void CWavWriter::Close() {
    if (std::exchange(state_->isClosed, true)) return;
    try {
        Finish();
    } catch (...) {
        try {
            CloseOutput(*state_->stream);
        } catch (const CException&) {
            // The first failure is the one to tell.
        }
        throw;
    }
    CloseOutput(*state_->stream);
}

} // namespace vorlund
