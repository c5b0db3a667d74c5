// What the streams, sinks and decoders of callbacks have in common.
#pragma once

#include "Guard.h"

#include "vorlund_c/stream.h"

#include <cstdint>

namespace vorlund::capi {

/// The most bytes of one call. Fits into a signed number, which is all that some languages have.
inline constexpr std::uint64_t kMostAtOnce = 1U << 30;

/// What the host gets with each call of its callbacks. Once armed, the host is told of the end.
class CHostUser {
public:
    /// \param release  may be null
    CHostUser(void* user, vorlund_release_callback release) : user_(user), release_(release) {}
    CHostUser(const CHostUser&) = delete;
    CHostUser& operator=(const CHostUser&) = delete;
    ~CHostUser() {
        if (!isArmed_ || !release_) return;
        CallHost([&] {
            release_(user_);
            return VORLUND_OK;
        });
    }

    void* Get() const { return user_; }
    void Arm() { isArmed_ = true; }

private:
    void* const user_;
    const vorlund_release_callback release_;
    bool isArmed_ = false;
};

} // namespace vorlund::capi
