#include "SystemDecoder.h"

#include "FileCopy.h"

#include "../support/FileInput.h"

#include <vorlund/DecodeNotes.h>
#include <vorlund/DecoderSupport.h>
#include <vorlund/Exception.h>

#include <algorithm>
#include <string_view>
#include <vector>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/system-codecs/SystemDecoder");
constexpr const wchar* kConnect = VRL_L("CSystemDecoder::Connect");

constexpr TFailure kNoPositions{kConnect, kFile, 1, VRL_L("Stream has no positions")};
constexpr TFailure kDecoded{kConnect, kFile, 2, VRL_L("Stream is decoded already")};
constexpr TFailure kOtherFile{kConnect, kFile, 3, VRL_L("Not an M4A, MP4 or AAC file")};
constexpr TFailure kBeforeSound{VRL_L("CSystemDecoder::Seek"), kFile, 4, VRL_L("Position before the sound")};

constexpr std::size_t kBlock = 64 * 1024;

/// The kind of the file (ISO/IEC 14496-12, "ftyp"; ISO/IEC 13818-7, ADTS), or null.
const wchar* GetKind(std::string_view head) {
    if (head.substr(4).starts_with("ftypM4A")) return VRL_L("M4A");
    if (head.substr(4).starts_with("ftyp")) return VRL_L("MP4");
    if (head.starts_with("\xFF\xF1") || head.starts_with("\xFF\xF9")) return VRL_L("AAC");
    return nullptr;
}

} // namespace

CSystemDecoder::CSystemDecoder() = default;
CSystemDecoder::~CSystemDecoder() noexcept(false) = default;

void CSystemDecoder::Connect(IInputStream* stream) {
    auto next = BeginConnect(stream);
    if (!next) return;
    if (!HasPositions(*next)) Raise<CDataFormatException>(kNoPositions);
    if (IsDecoded(*next)) Raise<CDataFormatException>(kDecoded);
    const CFilterCalls::CCall call(calls_);
    char head[12] = {};
    next->Seek(0);
    ReadWhole(*next, head, sizeof(head));
    const wchar* const kind = GetKind({head, sizeof(head)});
    if (!kind) Raise<CDataFormatException>(kOtherFile);
    NoteContainer(kind);
    auto file = std::make_shared<const CFileCopy>(*next);
    // The stream may have connected or destroyed this decoder meanwhile; that holds.
    if (!call.IsUnchanged()) return;
    sound_ = ISystemSound::Open(file);
    stream_ = std::move(next);
    file_ = std::move(file);
    format_ = sound_->GetFormat();
    soundAt_ = position_ = 0;
    length_ = -1;
}

void CSystemDecoder::Disconnect() {
    sound_.reset();
    file_.reset();
    TLayer::Disconnect();
}

const TDataFormat& CSystemDecoder::GetFormat() {
    if (!file_) return GetEmptyFormat();
    return format_;
}

std::int64_t CSystemDecoder::GetLength() {
    if (!file_) return TLayer::GetLength();
    if (length_ >= 0) return length_;
    const auto sound = ISystemSound::Open(file_);
    std::vector<std::uint8_t> block(kBlock);
    std::int64_t length = 0;
    while (const std::uint64_t count = sound->Read(block.data(), block.size()))
        length += static_cast<std::int64_t>(count);
    length_ = length;
    return length_;
}

std::int64_t CSystemDecoder::Tell() {
    return file_ ? position_ : TLayer::Tell();
}

void CSystemDecoder::Seek(std::int64_t position) {
    if (!file_) return TLayer::Seek(position);
    if (position < 0) Raise<CIOException>(kBeforeSound);
    // On the way there the end may show.
    position_ = position <= soundAt_ || position == 0 ? position : std::min(position, GetLength());
}

bool CSystemDecoder::Eof() {
    return !file_ || position_ >= GetLength();
}

bool CSystemDecoder::GoToPosition() {
    if (position_ == soundAt_) return true;
    if (position_ < soundAt_) {
        // First the new one: without it, the former one goes on.
        sound_ = ISystemSound::Open(file_);
        soundAt_ = 0;
    }
    std::vector<std::uint8_t> block(kBlock);
    while (soundAt_ < position_) {
        const auto rest = static_cast<std::uint64_t>(position_ - soundAt_);
        const std::uint64_t count = sound_->Read(block.data(), std::min<std::uint64_t>(rest, block.size()));
        if (count == 0) return false;
        soundAt_ += static_cast<std::int64_t>(count);
    }
    return true;
}

std::uint64_t CSystemDecoder::Read(void* buffer, std::uint64_t size) {
    // The layer checks the buffer and the connection.
    if (!buffer || !file_) return TLayer::Read(buffer, size);
    if (!GoToPosition()) return 0;
    auto* const bytes = static_cast<std::uint8_t*>(buffer);
    std::uint64_t total = 0;
    while (total < size) {
        const std::uint64_t count = sound_->Read(bytes + total, size - total);
        if (count == 0) {
            length_ = soundAt_;
            break;
        }
        total += count;
        soundAt_ += static_cast<std::int64_t>(count);
        position_ = soundAt_;
    }
    return total;
}

void CSystemDecoder::Skip(std::uint64_t count) {
    if (!file_) return;
    const auto rest = static_cast<std::uint64_t>(std::max<std::int64_t>(GetLength() - position_, 0));
    Seek(position_ + static_cast<std::int64_t>(std::min(count, rest)));
}
