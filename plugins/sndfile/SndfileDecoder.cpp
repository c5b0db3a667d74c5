#include "SndfileDecoder.h"

#include "SoundFile.h"

#include "../support/FileInput.h"

#include <vorlund/DecoderRefusal.h>
#include <vorlund/Exception.h>
#include <vorlund/Path.h>

#include <algorithm>
#include <cstring>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/sndfile/SndfileDecoder");
constexpr const wchar* kConnect = VRL_L("CSndfileDecoder::Connect");

constexpr TFailure kNoPositions{kConnect, kFile, 1, VRL_L("Stream has no positions")};
constexpr TFailure kDecoded{kConnect, kFile, 2, VRL_L("Stream is decoded already")};
constexpr TFailure kBeforeSound{VRL_L("CSndfileDecoder::Seek"), kFile, 3, VRL_L("Position before the sound")};

} // namespace

CSndfileDecoder::CSndfileDecoder() = default;
CSndfileDecoder::~CSndfileDecoder() noexcept(false) = default;

void CSndfileDecoder::Connect(IInputStream* stream) {
    const CRefusal refusal(*this);
    auto next = BeginConnect(stream);
    if (!next) return;
    if (!HasPositions(*next)) return refusal.Raise<CDataFormatException>(kNoPositions);
    if (IsDecoded(*next)) return refusal.Raise<CDataFormatException>(kDecoded);
    const CFilterCalls::CCall call(calls_);
    auto file = std::make_shared<CSoundFile>(*next, refusal);
    // The stream may have connected or destroyed this decoder meanwhile; that holds.
    if (!file->IsOpen() || !call.IsUnchanged()) return;
    stream_ = std::move(next);
    file_ = std::move(file);
    position_ = 0;
    partAt_ = -1;
}

void CSndfileDecoder::Disconnect() {
    file_.reset();
    TLayer::Disconnect();
}

const TDataFormat& CSndfileDecoder::GetFormat() {
    if (!file_) return GetEmptyFormat();
    return file_->GetFormat();
}

std::int64_t CSndfileDecoder::GetLength() {
    return file_ ? file_->GetFrames() * file_->GetFormat().GetBlockSize() : TLayer::GetLength();
}

std::int64_t CSndfileDecoder::Tell() {
    return file_ ? position_ : TLayer::Tell();
}

void CSndfileDecoder::Seek(std::int64_t position) {
    if (!file_) return TLayer::Seek(position);
    if (position < 0) Raise<CIOException>(kBeforeSound);
    position_ = std::min(position, GetLength());
}

bool CSndfileDecoder::Eof() {
    return !file_ || position_ >= GetLength();
}

std::uint64_t CSndfileDecoder::Read(void* buffer, std::uint64_t size) {
    // The layer checks the buffer and the connection.
    if (!buffer || !file_) return TLayer::Read(buffer, size);
    // The stream may use this decoder inside each call.
    const auto stream = stream_;
    const auto file = file_;
    const CFilterCalls::CCall call(calls_);
    auto* const bytes = static_cast<std::uint8_t*>(buffer);
    const std::uint64_t wanted =
        std::min(size, static_cast<std::uint64_t>(std::max<std::int64_t>(GetLength() - position_, 0)));
    const std::uint64_t block = file->GetFormat().GetBlockSize();
    const bool isAligned = reinterpret_cast<std::uintptr_t>(buffer) % file->GetFormat().GetSampleSize() == 0;
    std::uint64_t total = 0;
    while (total < wanted) {
        std::uint64_t count = 0;
        const std::uint64_t frames = (wanted - total) / block;
        if (position_ % static_cast<std::int64_t>(block) == 0 && frames > 0 && isAligned) {
            count = block *
                    static_cast<std::uint64_t>(file->Read(position_ / static_cast<std::int64_t>(block),
                                                          bytes + total, static_cast<std::int64_t>(frames)));
        } else {
            count = ReadPart(*file, bytes + total, wanted - total);
        }
        if (!call.IsUnchanged() || count == 0) break;
        total += count;
        position_ += static_cast<std::int64_t>(count);
    }
    return total;
}

std::uint64_t CSndfileDecoder::ReadPart(CSoundFile& file, std::uint8_t* buffer, std::uint64_t size) {
    const std::int64_t block = file.GetFormat().GetBlockSize();
    const std::int64_t frame = position_ / block;
    if (partAt_ != frame) {
        // Not into the member: the stream may destroy it.
        std::vector<std::uint8_t> part(static_cast<std::size_t>(block));
        const CFilterCalls::CCall call(calls_);
        const std::int64_t got = file.Read(frame, part.data(), 1);
        if (!call.IsUnchanged() || got < 1) return 0;
        part_ = std::move(part);
        partAt_ = frame;
    }
    const std::int64_t inside = position_ % block;
    const std::uint64_t count = std::min(size, static_cast<std::uint64_t>(block - inside));
    std::memcpy(buffer, part_.data() + inside, static_cast<std::size_t>(count));
    return count;
}

void CSndfileDecoder::Skip(std::uint64_t count) {
    if (!file_) return;
    const auto rest = static_cast<std::uint64_t>(std::max<std::int64_t>(GetLength() - position_, 0));
    Seek(position_ + static_cast<std::int64_t>(std::min(count, rest)));
}

const wchar* CSndfileDecoder::GetTag(TSoundTag tag) {
    const char* const text = file_ ? file_->GetText(tag) : nullptr;
    if (!text) return nullptr;
    tag_ = PathFromUtf8(text);
    // What a path's text may not hold, a tag's may.
    std::replace(tag_.begin(), tag_.end(), wchar{0xDC5C}, wchar{'\\'});
    return tag_.c_str();
}
