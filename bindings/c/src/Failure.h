// What the functions of this interface refuse by themselves, and the record of each thread's last failure.
#pragma once

#include "vorlund_c/base.h"

#include <cstdint>
#include <string>
#include <utility>

namespace vorlund::capi {

/// A refusal of this interface, thrown inside it only.
class CFailure {
public:
    CFailure(std::int32_t code, const char* reason) : code_(code), reason_(reason) {}
    std::int32_t GetCode() const { return code_; }
    const char* GetReason() const { return reason_; }

private:
    std::int32_t code_;
    /// Has static storage.
    const char* reason_;
};

/// A read that ended because of the file below it: what the system said.
class CReadFailure {
public:
    explicit CReadFailure(std::uint32_t systemCode) : systemCode_(systemCode) {}
    std::uint32_t GetSystemCode() const { return systemCode_; }

private:
    std::uint32_t systemCode_;
};

/// A failure that is in the record of the thread already.
class CRecorded {};

/// Checks an argument of a function.
inline void Require(bool isRight, const char* reason) {
    if (!isRight) throw CFailure(VORLUND_ERROR_ARGUMENT, reason);
}

/// Checks a pointer that a result goes to, or that something comes from.
inline void RequirePointer(const void* pointer) {
    Require(pointer != nullptr, "A pointer is null");
}

/// Checks a buffer, which may be null where it has no room.
inline void RequireBuffer(const void* buffer, std::uint64_t room) {
    Require(buffer || room == 0, "A buffer of some room is null");
}

/// Fills the record of this thread from the exception that is being handled. Returns its code.
std::int32_t RecordFailure(const char* function) noexcept;

/// What a callback of the host returned that has failed.
void NoteCallbackCode(std::int32_t code) noexcept;
/// Forgets that, at the beginning of a function; gives what it was.
std::int32_t ExchangeCallbackCode(std::int32_t code) noexcept;

} // namespace vorlund::capi
