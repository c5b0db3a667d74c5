// What the handles of audio outputs and inputs stand for.
#pragma once

#include "StreamObject.h"

#include <vorlund/AudioSystem.h>

#include <deque>
#include <mutex>

namespace vorlund::capi {

/// An output with the streams that it plays, which are its own until they have ended.
class COutputObject final : public CHandleObject {
public:
    static constexpr TKind Kind = TKind::Output;

    explicit COutputObject(CRefPtr<IAudioOutput> output) : CHandleObject(Kind), output_(std::move(output)) {}
    ~COutputObject() override;

    IAudioOutput& Get() const { return *output_; }

    /// Takes the stream of a handle over.
    void Play(const void* handle);
    /// Destroys the streams that have ended, and gives how many have not.
    std::uint32_t FreeEnded();

private:
    void Start(const std::shared_ptr<CStreamObject>& stream);

    std::mutex mutex_;
    std::deque<std::shared_ptr<CStreamObject>> playing_;
    /// The last of them is being handed to the output, without the lock: that may call the host.
    bool isStarting_ = false;
    CSafeRefPtr<IAudioOutput> output_;
};

class CInputObject final : public CHandleObject {
public:
    static constexpr TKind Kind = TKind::Input;

    explicit CInputObject(CRefPtr<IAudioInput> input) : CHandleObject(Kind), input_(std::move(input)) {}
    ~CInputObject() override;

    IAudioInput& Get() const { return *input_; }

    /// The stream that is recorded.
    CRefPtr<IInputStream> GetStream() const { return CRefPtr<IInputStream>::Adopt(input_->GetStream()); }

private:
    CSafeRefPtr<IAudioInput> input_;
};

} // namespace vorlund::capi
