#include "CallbackStream.h"

#include "Guard.h"
#include "HostUser.h"
#include "Records.h"
#include "StreamObject.h"

#include <vorlund/Exception.h>
#include <vorlund/MakeObject.h>
#include <vorlund/StreamImpl.h>

#include <algorithm>

namespace vorlund::capi {

namespace {

constexpr const wchar* kFile = VRL_L("bindings/c/src/CallbackStream");
constexpr const wchar* kReason = VRL_L("A callback failed");
constexpr TFailure kReadFailed{VRL_L("vorlund::capi::CCallbackStream::Read"), kFile, 1, kReason};
constexpr TFailure kReadTooMuch{VRL_L("vorlund::capi::CCallbackStream::Read"), kFile, 2,
                                VRL_L("A callback gave more than was asked for")};
constexpr TFailure kSeekFailed{VRL_L("vorlund::capi::CCallbackStream::Seek"), kFile, 3, kReason};
constexpr TFailure kNegative{VRL_L("vorlund::capi::CCallbackStream::Seek"), kFile, 4,
                             VRL_L("Position is negative")};
constexpr TFailure kNoPositions{VRL_L("vorlund::capi::CCallbackStream::Seek"), kFile, 5,
                                VRL_L("The stream has no positions")};
constexpr TFailure kLengthFailed{VRL_L("vorlund::capi::CCallbackStream::GetLength"), kFile, 6, kReason};
constexpr TFailure kNoLength{VRL_L("vorlund::capi::CCallbackStream::GetLength"), kFile, 7,
                             VRL_L("The length is not known")};

class CCallbackStream : public CInputStreamImpl<IInputStream> {
public:
    static constexpr CId ClassId{0x6C1D83E2, 0x9A0F4B57, 0x83C6D7E4, 0x2F5B7A18};

    std::uint32_t GetCapabilities() override {
        return STREAM_CAPABILITY_READ | STREAM_CAPABILITY_TELL |
               (callbacks_.seek ? STREAM_CAPABILITY_SEEK : 0U);
    }
    std::int64_t GetLength() override {
        if (!callbacks_.length) Raise<COperationNotSupportedException>(kNoLength);
        std::int64_t length = 0;
        if (CallHost([&] { return callbacks_.length(user_.Get(), &length); }) != VORLUND_OK || length < 0)
            Raise<CIOException>(kLengthFailed);
        return length;
    }
    void Seek(std::int64_t position) override {
        if (!callbacks_.seek) Raise<COperationNotSupportedException>(kNoPositions);
        if (position < 0) Raise<CIOException>(kNegative);
        if (CallHost([&] { return callbacks_.seek(user_.Get(), &position); }) != VORLUND_OK)
            Raise<CIOException>(kSeekFailed);
        position_ = position;
        isAtEnd_ = false;
    }
    std::int64_t Tell() override { return position_; }
    bool Eof() override {
        // Where the length is known, the end is there before a read has found it.
        return isAtEnd_ || (callbacks_.length && position_ >= GetLength());
    }
    const TDataFormat& GetFormat() override { return isPcm_ ? format_ : GetEmptyFormat(); }
    using CInputStreamImpl::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        if (!buffer) return CInputStreamImpl::Read(buffer, size);
        const auto wanted = static_cast<std::uint32_t>(std::min<std::uint64_t>(size, kMostAtOnce));
        if (wanted == 0) return 0;
        std::uint32_t count = 0;
        if (CallHost([&] { return callbacks_.read(user_.Get(), buffer, wanted, &count); }) != VORLUND_OK)
            Raise<CIOException>(kReadFailed);
        if (count > wanted) Raise<CIOException>(kReadTooMuch);
        isAtEnd_ = count == 0;
        position_ += count;
        return count;
    }
    void Skip(std::uint64_t count) override {
        Seek(position_ + static_cast<std::int64_t>(std::min<std::uint64_t>(count, INT64_MAX - position_)));
    }

    /// From now on the host is told of the end.
    void Arm() { user_.Arm(); }

protected:
    CCallbackStream(const vorlund_stream_callbacks& callbacks, void* user, const vorlund_audio_format* format)
        : callbacks_(callbacks), user_(user, callbacks.release), isPcm_(format != nullptr) {
        if (format) format_ = TakeFormat(format);
    }
    ~CCallbackStream() = default;

private:
    const vorlund_stream_callbacks callbacks_;
    CHostUser user_;
    const bool isPcm_;
    TDataFormat_AudioPcm format_;
    std::int64_t position_ = 0;
    bool isAtEnd_ = false;
};

} // namespace

void MakeCallbackStream(const vorlund_stream_callbacks* callbacks, void* user,
                        const vorlund_audio_format* format, vorlund_stream* result) {
    const auto taken = TakeRecord(callbacks, sizeof(vorlund_stream_callbacks));
    RequirePointer(reinterpret_cast<const void*>(taken.read));
    const auto stream = MakeObject<CCallbackStream>(taken, user, format);
    MakeHandle<CStreamObject>(result, CRefPtr<IInputStream>(stream));
    stream->Arm();
}

} // namespace vorlund::capi
