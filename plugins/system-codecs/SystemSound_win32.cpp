// The decoders of Windows, by the source reader of Media Foundation.
#include "MediaThread.h"
#include "SystemSound.h"

#include <vorlund/DecodeNotes.h>
#include <vorlund/Exception.h>

#include <algorithm>
#include <cstring>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/system-codecs/SystemSound_win32");
constexpr const wchar* kOpen = VRL_L("ISystemSound::Open");
constexpr const wchar* kRead = VRL_L("ISystemSound::Read");

constexpr TFailure kNoSystem{kOpen, kFile, 1,
                             VRL_L("It is decoded by Media Foundation, which this Windows lacks")};
constexpr TFailure kNoDecoder{kOpen, kFile, 2, VRL_L("Windows has no decoder for it")};
constexpr TFailure kFailed{kRead, kFile, 3, VRL_L("Media Foundation failed")};
constexpr TFailure kSilent{kOpen, kFile, 4, VRL_L("Media Foundation does not answer")};
constexpr TFailure kSilentRead{kRead, kFile, 5, VRL_L("Media Foundation does not answer")};

class CMediaFoundationSound : public ISystemSound {
public:
    explicit CMediaFoundationSound(std::shared_ptr<const CFileCopy> file) : thread_(std::move(file)) {
        const CMediaThread::TAnswer* const answer = thread_.Ask();
        if (!answer) {
            NoteValue(VRL_L("seconds"), CMediaThread::kMaxMilliseconds / 1000);
            Raise<CDataFormatException>(kSilent);
        }
        if (const auto& failure = answer->failure) {
            if (failure->kind == TMediaFailure::TKind::NoSystem) Raise<CDataFormatException>(kNoSystem);
            // Tells which Windows objected to.
            NoteValue(VRL_L("HRESULT"), static_cast<std::uint32_t>(failure->result));
            Raise<CDataFormatException>(kNoDecoder);
        }
        format_ = answer->format;
    }

    const TDataFormat_AudioPcm& GetFormat() const override { return format_; }
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        while (given_ == rest_.size() && !isAtEnd_) Fetch();
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(size, rest_.size() - given_));
        std::memcpy(buffer, rest_.data() + given_, count);
        given_ += count;
        return count;
    }

private:
    /// The next piece, perhaps an empty one.
    void Fetch() {
        const CMediaThread::TAnswer* const answer = thread_.Ask();
        if (!answer) Raise<CIOException>(kSilentRead);
        if (answer->failure) Raise<CIOException>(kFailed);
        rest_ = answer->piece;
        given_ = 0;
        isAtEnd_ = answer->isAtEnd;
    }

    CMediaThread thread_;
    TDataFormat_AudioPcm format_;
    std::vector<std::uint8_t> rest_;
    std::size_t given_ = 0;
    bool isAtEnd_ = false;
};

} // namespace

std::unique_ptr<ISystemSound> ISystemSound::Open(std::shared_ptr<const CFileCopy> file) {
    return std::make_unique<CMediaFoundationSound>(std::move(file));
}
