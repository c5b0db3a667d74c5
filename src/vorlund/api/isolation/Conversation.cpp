#include "vorlund/api/isolation/Conversation.h"

#include <algorithm>

namespace vorlund::isolation {

CConversation::CConversation(const wchar* helper, const std::vector<wstring>& arguments, unsigned int seconds)
    : process_(helper, arguments), limit_(seconds) {}

void CConversation::End(TEnd end) {
    isEnded_ = true;
    end_ = {end, end == TEnd::Died ? process_.GetEnd() : 0};
    throw end_;
}

void CConversation::Ask(CMessage& message) {
    if (isEnded_) throw end_;
    deadline_ = TClock::now() + limit_;
    Send(message);
}

void CConversation::Send(CMessage& message) {
    const std::span<const std::uint8_t> bytes = message.Finish();
    if (process_.Write(bytes.data(), bytes.size(), deadline_)) return;
    // Who does not read has ended, or is about to, or has something else in mind.
    while (!process_.HasEnded() && TClock::now() < deadline_) process_.Wait();
    End(process_.HasEnded() ? TEnd::Died : TEnd::Silent);
}

void CConversation::Fill(std::size_t size) {
    while (bytes_.size() < messageSize_ + size) {
        const std::size_t filled = bytes_.size();
        // Asked first: what was written before the end is there when the end is.
        const bool hasEnded = process_.HasEnded();
        bytes_.resize(messageSize_ + size);
        bytes_.resize(filled + process_.Read(bytes_.data() + filled, bytes_.size() - filled));
        if (bytes_.size() > filled) continue;
        if (hasEnded) End(TEnd::Died);
        if (TClock::now() >= deadline_) End(TEnd::Silent);
        process_.Wait();
    }
}

CReceived CConversation::Listen(IInputStream& source) {
    for (;;) {
        if (isEnded_) throw end_;
        bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(messageSize_));
        messageSize_ = 0;
        Fill(sizeof(THeader));
        THeader header;
        std::memcpy(&header, bytes_.data(), sizeof(header));
        if (header.mark != kMark || header.size > kMaxMessage) EndGarbled();
        Fill(sizeof(header) + header.size);
        messageSize_ = sizeof(header) + header.size;
        CReceived message(header.kind, std::span(bytes_).subspan(sizeof(header), header.size));
        if (header.kind != TKind::SourceRead) return message;
        DeliverSource(source, message);
    }
}

void CConversation::DeliverSource(IInputStream& source, CReceived& question) {
    const auto position = question.Get<std::int64_t>();
    const auto count = question.Get<std::uint32_t>();
    if (!question.IsWhole() || position < 0 || count > kMaxBlock) EndGarbled();
    const TClock::time_point begin = TClock::now();
    std::vector<std::uint8_t> bytes(count);
    std::size_t filled = 0;
    // Whatever is raised, and whoever comes back from there, finds the end.
    isEnded_ = true;
    end_ = {TEnd::Died, 0};
    if ((source.GetCapabilities() & STREAM_CAPABILITY_SEEK) != 0 && source.Tell() != position)
        source.Seek(position);
    while (filled < count) {
        const std::uint64_t got = source.Read(bytes.data() + filled, count - filled);
        if (got == 0 || got > count - filled) break;
        filled += static_cast<std::size_t>(got);
    }
    isEnded_ = false;
    deadline_ += TClock::now() - begin;
    CMessage answer(TKind::Source);
    Send(answer.PutBytes(bytes.data(), filled));
}

} // namespace vorlund::isolation
