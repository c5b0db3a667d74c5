#include "CallbackSink.h"

#include "Guard.h"
#include "HostUser.h"
#include "Records.h"
#include "SinkObject.h"

#include <vorlund/Exception.h>
#include <vorlund/MakeObject.h>
#include <vorlund/StreamImpl.h>

#include <algorithm>
#include <cstddef>

namespace vorlund::capi {

namespace {

constexpr const wchar* kFile = VRL_L("bindings/c/src/CallbackSink");
constexpr const wchar* kReason = VRL_L("A callback failed");
constexpr TFailure kWriteFailed{VRL_L("vorlund::capi::CCallbackSink::Write"), kFile, 1, kReason};
constexpr TFailure kNoBuffer{VRL_L("vorlund::capi::CCallbackSink::Write"), kFile, 2, VRL_L("buffer is NULL")};
constexpr TFailure kSeekFailed{VRL_L("vorlund::capi::CCallbackSink::Seek"), kFile, 3, kReason};
constexpr TFailure kNegative{VRL_L("vorlund::capi::CCallbackSink::Seek"), kFile, 4,
                             VRL_L("Position is negative")};
constexpr TFailure kNoPositions{VRL_L("vorlund::capi::CCallbackSink::Seek"), kFile, 5,
                                VRL_L("The stream has no positions")};
constexpr TFailure kFlushFailed{VRL_L("vorlund::capi::CCallbackSink::Flush"), kFile, 6, kReason};

class CCallbackSink : public COutputStreamImpl<IOutputStream> {
public:
    static constexpr CId ClassId{0x6C1D83E3, 0x9A0F4B57, 0x83C6D7E4, 0x2F5B7A18};

    void Close() override { Flush(); }
    std::uint32_t GetCapabilities() override {
        return STREAM_CAPABILITY_WRITE | STREAM_CAPABILITY_TELL |
               (callbacks_.seek ? STREAM_CAPABILITY_SEEK : 0U);
    }
    std::int64_t GetLength() override { return length_; }
    void Flush() override {
        if (callbacks_.flush && CallHost([&] { return callbacks_.flush(user_.Get()); }) != VORLUND_OK)
            Raise<CIOException>(kFlushFailed);
    }
    void Seek(std::int64_t position) override {
        if (!callbacks_.seek) Raise<COperationNotSupportedException>(kNoPositions);
        if (position < 0) Raise<CIOException>(kNegative);
        if (CallHost([&] { return callbacks_.seek(user_.Get(), &position); }) != VORLUND_OK)
            Raise<CIOException>(kSeekFailed);
        position_ = position;
    }
    std::int64_t Tell() override { return position_; }
    void Write(const void* buffer, std::uint64_t size) override {
        if (!buffer && size > 0) Raise<CNullPtrException>(kNoBuffer);
        const std::byte* next = static_cast<const std::byte*>(buffer);
        while (size > 0) {
            const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>(size, kMostAtOnce));
            if (CallHost([&] { return callbacks_.write(user_.Get(), next, count); }) != VORLUND_OK)
                Raise<CIOException>(kWriteFailed);
            next += count;
            size -= count;
            position_ += count;
            length_ = std::max(length_, position_);
        }
    }

    /// From now on the host is told of the end.
    void Arm() { user_.Arm(); }

protected:
    CCallbackSink(const vorlund_sink_callbacks& callbacks, void* user)
        : callbacks_(callbacks), user_(user, callbacks.release) {}
    ~CCallbackSink() = default;

private:
    const vorlund_sink_callbacks callbacks_;
    CHostUser user_;
    std::int64_t position_ = 0;
    std::int64_t length_ = 0;
};

} // namespace

void MakeCallbackSink(const vorlund_sink_callbacks* callbacks, void* user, vorlund_sink* result) {
    const auto taken = TakeRecord(callbacks, sizeof(vorlund_sink_callbacks));
    RequirePointer(reinterpret_cast<const void*>(taken.write));
    const auto sink = MakeObject<CCallbackSink>(taken, user);
    MakeHandle<CSinkObject>(result, CRefPtr<IOutputStream>(sink));
    sink->Arm();
}

} // namespace vorlund::capi
