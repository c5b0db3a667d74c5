#include "AudioObject.h"

#include "Guard.h"

#include <exception>

namespace vorlund::capi {

namespace {

/// Ends a stream that was taken over: it goes, and then its chain is free.
void End(std::shared_ptr<CStreamObject> stream) {
    const std::shared_ptr<CChain> chain = stream->GetChain();
    chain->Drop(std::move(stream));
    chain->End();
}

} // namespace

COutputObject::~COutputObject() {
    try {
        output_->Close();
    } catch (...) {
        // The file of an output cannot be written; there is nobody left to tell.
    }
    for (auto& stream : std::exchange(playing_, {})) End(std::move(stream));
}

void COutputObject::Play(const void* handle) {
    FreeEnded();
    auto stream = Find<CStreamObject>(handle);
    if (!stream->GetChain()->Begin()) RaiseBusy();
    try {
        Start(stream);
    } catch (...) {
        End(std::move(stream));
        throw;
    }
    // Another thread may have freed the handle meanwhile.
    ForgetHandle(handle);
}

void COutputObject::Start(const std::shared_ptr<CStreamObject>& stream) {
    {
        const std::lock_guard lock(mutex_);
        if (isStarting_) RaiseBusy();
        playing_.push_back(stream);
        isStarting_ = true;
    }
    std::exception_ptr failure;
    try {
        output_->Play(&stream->Get());
    } catch (...) {
        failure = std::current_exception();
    }
    const std::lock_guard lock(mutex_);
    isStarting_ = false;
    if (!failure) return;
    playing_.pop_back();
    std::rethrow_exception(failure);
}

std::uint32_t COutputObject::FreeEnded() {
    std::deque<std::shared_ptr<CStreamObject>> ended;
    std::uint32_t count = 0;
    {
        const std::lock_guard lock(mutex_);
        if (output_->GetState() != AUDIO_STATE_CLOSED) count = output_->GetPlayingStreams();
        const std::size_t kept = std::size_t{count} + (isStarting_ ? 1 : 0);
        while (playing_.size() > kept) {
            ended.push_back(std::move(playing_.front()));
            playing_.pop_front();
        }
    }
    for (auto& stream : ended) End(std::move(stream));
    return count;
}

CInputObject::~CInputObject() {
    try {
        input_->Close();
    } catch (...) {
        // There is nobody left to tell.
    }
}

} // namespace vorlund::capi
