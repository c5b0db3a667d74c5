#include "vorlund/data/base/QuietCall.h"

#include <utility>

namespace vorlund::refusals {
namespace {

/// The innermost call that nobody has taken.
constinit thread_local CQuietCall* waiting = nullptr;

} // namespace

CQuietCall::CQuietCall(const IObject& object) noexcept
    : object_(&object), outer_(std::exchange(waiting, this)) {}

CQuietCall::~CQuietCall() {
    waiting = outer_;
}

CQuietCall* CQuietCall::Take(const IObject& object) noexcept {
    CQuietCall* const call = waiting;
    if (!call || call->object_ != &object) return nullptr;
    waiting = nullptr;
    return call;
}

void CQuietCall::PassTo(const IObject& object) noexcept {
    object_ = &object;
    waiting = this;
}

void CQuietCall::EndPass() noexcept {
    if (waiting == this) waiting = nullptr;
}

CQuietCall* Take(const IInputStreamFilter& filter) noexcept {
    return CQuietCall::Take(filter);
}

void Give(CQuietCall& call, const CException& refusal) noexcept {
    call.Give(refusal);
}

} // namespace vorlund::refusals
