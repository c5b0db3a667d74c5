// The way into and out of the library: every function is one `Guarded`, every call of the host one
// `CallHost`.
#pragma once

#include "Failure.h"
#include "FloatState.h"
#include "Handles.h"

#include <cstdint>
#include <utility>

namespace vorlund::capi {

/// The arithmetic of the library: no float operation traps. Programs of some languages unmask traps, and get
/// theirs back at the end.
class CArithmetic {
public:
    CArithmetic() noexcept { CFloatState::MaskTraps(); }
    CArithmetic(const CArithmetic&) = delete;
    CArithmetic& operator=(const CArithmetic&) = delete;
    ~CArithmetic() { host_.Restore(); }

private:
    const CFloatState host_;
};

/// A function that is under way. While one is, the library stays open.
class CEntry {
public:
    /// Raises `CFailure` with VORLUND_ERROR_NOT_OPEN while the library is closed.
    CEntry();
    CEntry(const CEntry&) = delete;
    CEntry& operator=(const CEntry&) = delete;
    ~CEntry();
};

/// Where a thread is: how many functions of this interface, and how many calls of the host that the library
/// has made on a thread of its own.
struct TThreadState {
    int functions = 0;
    int callsOnOwnThread = 0;
};
TThreadState& ThreadState() noexcept;

/// Ends what a raising factory has left locked.
void GiveBackLocks() noexcept;

/// What every function is that works also while the library is closed: a code for whatever comes out of
/// `work`.
template <class TWork> std::int32_t GuardedAlways(const char* function, TWork&& work) noexcept {
    const CArithmetic arithmetic;
    const std::int32_t outerCode = ExchangeCallbackCode(0);
    TThreadState& state = ThreadState();
    if (state.functions++ == 0 && state.callsOnOwnThread == 0) DropPostponed();
    std::int32_t code = VORLUND_OK;
    try {
        std::forward<TWork>(work)();
    } catch (...) {
        code = RecordFailure(function);
    }
    --state.functions;
    ExchangeCallbackCode(outerCode);
    return code;
}

/// What every other function is.
template <class TWork> std::int32_t Guarded(const char* function, TWork&& work) noexcept {
    return GuardedAlways(function, [&] {
        const CEntry entry;
        try {
            work();
        } catch (...) {
            GiveBackLocks();
            throw;
        }
    });
}

/// Calls a function of the host and returns its code; what it does to the arithmetic of the thread is undone.
/// What it throws, where host and library have the same exceptions, counts as VORLUND_ERROR_UNKNOWN.
template <class TCall> std::int32_t CallHost(TCall&& call) noexcept {
    const CFloatState library;
    TThreadState& state = ThreadState();
    const int ownThread = state.functions == 0 ? 1 : 0;
    state.callsOnOwnThread += ownThread;
    std::int32_t code = VORLUND_ERROR_UNKNOWN;
    try {
        code = std::forward<TCall>(call)();
    } catch (...) {
        // The code says so.
    }
    library.Restore();
    state.callsOnOwnThread -= ownThread;
    if (code != VORLUND_OK) NoteCallbackCode(code);
    return code;
}

} // namespace vorlund::capi
