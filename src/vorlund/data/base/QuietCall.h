// Calls whose caller takes a refusal instead of an exception: the other side of <vorlund/DecoderRefusal.h>.
//
// The caller says which object it calls and puts itself where that object finds it, in a variable of the
// thread. The object takes it there, first of all, and only when it is the one that is meant: so calls from
// inside that call, whoever makes them, raise as ever.
#pragma once

#include <vorlund/DecoderRefusal.h>
#include <vorlund/Object.h>

#include <cstdint>
#include <optional>

namespace vorlund {
namespace refusals {

/// One call, for the length of a block: make it right before, and ask it right afterwards.
class CQuietCall {
public:
    explicit CQuietCall(const IObject& object) noexcept;
    CQuietCall(const CQuietCall&) = delete;
    CQuietCall& operator=(const CQuietCall&) = delete;
    ~CQuietCall();

    /// The refusal; null when the object has not refused in this way.
    const CException* GetRefusal() const { return refusal_ ? &*refusal_ : nullptr; }

    /// Called by the object: the call of it that has just begun, or null.
    static CQuietCall* Take(const IObject& object) noexcept;
    /// Called by the object that took it.
    void Give(const CException& refusal) noexcept { refusal_.emplace(refusal); }

    /// The call of which that is the refusal, or null.
    static CQuietCall* Of(const CRefusal& refusal) noexcept { return refusal.call_; }

    /// Where the stream that is connected ends, when the caller has just learned that from the system.
    static std::optional<std::uint64_t> GetEnd(const CRefusal& refusal) noexcept {
        return refusal.call_ ? refusal.call_->end_ : std::nullopt;
    }
    void SetEnd(std::optional<std::uint64_t> end) noexcept { end_ = end; }

    /// Waits for that object instead, until it has been called.
    void PassTo(const IObject& object) noexcept;
    void EndPass() noexcept;

private:
    const IObject* object_;
    CQuietCall* const outer_;
    std::optional<CException> refusal_;
    std::optional<std::uint64_t> end_;
};

} // namespace refusals

/// Has the caller of an object wait for the refusal of another one, which the object calls next; for the
/// length of a block.
class CPassedRefusal {
public:
    CPassedRefusal(const CRefusal& refusal, const IObject& object) noexcept
        : call_(refusals::CQuietCall::Of(refusal)) {
        if (call_) call_->PassTo(object);
    }
    CPassedRefusal(const CPassedRefusal&) = delete;
    CPassedRefusal& operator=(const CPassedRefusal&) = delete;
    ~CPassedRefusal() {
        if (call_) call_->EndPass();
    }

    /// True when that object has refused.
    bool IsRefused() const { return call_ && call_->GetRefusal(); }

private:
    refusals::CQuietCall* const call_;
};

} // namespace vorlund
