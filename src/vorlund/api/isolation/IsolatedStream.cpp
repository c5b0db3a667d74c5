#include "vorlund/api/isolation/IsolatedStream.h"

#include <vorlund/Exception.h>

#include <algorithm>
#include <utility>

namespace vorlund::isolation {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/api/isolation/IsolatedStream");
constexpr const wchar* kRead = VRL_L("vorlund::isolation::CIsolatedStream::Read");

constexpr TFailure kNoLengthKnown{VRL_L("vorlund::isolation::CIsolatedStream::GetLength"), kFile, 1,
                                  VRL_L("The decoder has no length")};
constexpr TFailure kNoPositions{VRL_L("vorlund::isolation::CIsolatedStream::Seek"), kFile, 2,
                                VRL_L("The decoder has no positions")};
constexpr TFailure kBeforeBegin{VRL_L("vorlund::isolation::CIsolatedStream::Seek"), kFile, 3,
                                VRL_L("Position before the stream")};
/// By `TEnd`.
constexpr TFailure kEnds[] = {
    {kRead, kFile, 4, VRL_L("The process of the decoder died")},
    {kRead, kFile, 5, VRL_L("The process of the decoder does not answer")},
    {kRead, kFile, 6, VRL_L("The process of the decoder gave no proper answer")},
};
constexpr TFailure kFailed{kRead, kFile, 7, VRL_L("The decoder failed")};
constexpr TFailure kNotConnected{kRead, kFile, 8, VRL_L("Stream is not connected")};
constexpr TFailure kOtherSource{VRL_L("vorlund::isolation::CIsolatedStream::Connect"), kFile, 9,
                                VRL_L("An isolated decoder stays with its source")};

} // namespace

void CIsolatedStream::Begin(CRefPtr<IInputStream> source, std::shared_ptr<CConversation> conversation,
                            TFoundChain chain) {
    source_ = std::move(source);
    conversation_ = std::move(conversation);
    chain_ = std::move(chain);
}

std::int64_t CIsolatedStream::GetLength() {
    if (chain_.length == kNoLength) Raise<COperationNotSupportedException>(kNoLengthKnown);
    return chain_.length;
}

void CIsolatedStream::Seek(std::int64_t position) {
    if ((chain_.capabilities & STREAM_CAPABILITY_SEEK) == 0)
        Raise<COperationNotSupportedException>(kNoPositions);
    if (position < 0) Raise<CIOException>(kBeforeBegin);
    position_ = chain_.length == kNoLength ? position : std::min(position, chain_.length);
    isAtEnd_ = false;
}

bool CIsolatedStream::Eof() {
    return isAtEnd_ || (chain_.length != kNoLength && position_ >= chain_.length);
}

std::uint64_t CIsolatedStream::Read(void* buffer, std::uint64_t size) {
    if (!buffer) return TLayer::Read(buffer, size);
    if (!conversation_) Raise<CIOException>(kNotConnected);
    // The source may release this stream meanwhile.
    const auto self = CRefPtr<INamedLink>::Share(this);
    return block_.Read(position_, buffer, size, [this] { Fetch(); });
}

void CIsolatedStream::Fetch() {
    block_.Clear(position_);
    // The source that reads from here gets nothing, or it would wait for itself.
    if (isBusy_ || Eof() || !conversation_) return;
    // It may also disconnect this stream.
    const auto source = source_;
    const auto conversation = conversation_;
    isBusy_ = true;
    try {
        CMessage question(TKind::Read);
        conversation->Ask(question.Put(position_).Put(kMaxBlock));
        Receive(*source, *conversation);
    } catch (const TConversationEnded& ended) {
        isBusy_ = false;
        Raise<CIOException>(kEnds[static_cast<int>(ended.end)]);
    } catch (...) {
        isBusy_ = false;
        throw;
    }
    isBusy_ = false;
}

void CIsolatedStream::Receive(IInputStream& source, CConversation& conversation) {
    CReceived answer = conversation.Listen(source);
    if (answer.GetKind() == TKind::Failed) Raise<CIOException>(kFailed);
    const auto length = answer.Get<std::int64_t>();
    const std::span<const std::uint8_t> bytes = answer.GetRest();
    if (answer.GetKind() != TKind::Data || !answer.IsWhole() || bytes.size() > kMaxBlock ||
        length < kNoLength)
        conversation.EndGarbled();
    // Decoders may learn while they read that there is less than the file says.
    chain_.length = length;
    block_.Set(position_, bytes);
    isAtEnd_ = bytes.empty();
}

void CIsolatedStream::Skip(std::uint64_t count) {
    constexpr std::uint64_t kMax = INT64_MAX;
    const std::uint64_t to = std::min(static_cast<std::uint64_t>(position_) + std::min(count, kMax), kMax);
    Seek(static_cast<std::int64_t>(to));
}

void CIsolatedStream::Connect(IInputStream* stream) {
    if (stream) Raise<COperationNotSupportedException>(kOtherSource);
    Disconnect();
}

void CIsolatedStream::Disconnect() {
    conversation_.reset();
    source_.Reset();
}

} // namespace vorlund::isolation
