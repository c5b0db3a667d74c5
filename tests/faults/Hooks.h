/// \file
/// Replacements of imported functions.
#pragma once

#include "faults/FaultPoints.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <new>

namespace vorlund::faults {

/// The name of a function as an argument of a template: each name has a replacement of its own.
template <std::size_t kSize> struct TImportName {
    // NOLINTNEXTLINE(google-explicit-constructor): a literal is given.
    constexpr TImportName(const char (&text)[kSize]) { std::copy_n(text, kSize, characters); }
    char characters[kSize];
};

/// What a call does that must fail.
enum class TFailing { Instead, AfterAll };

/// Sets what the system's last error is; 0 leaves it.
void SetLastFault(int error);

template <TImportName kName, class TFunction> class CFailingCall;

template <TImportName kName, class TResult, class... TArguments> struct TFailingCallData {
    static inline TFaultKind kind;
    static inline TResult failed;
    static inline int error;
    static inline TFailing way;
    static inline void* real;
};

/// The body of a replacement, the same for every calling convention.
template <class TData, class TReal, class... TArguments>
auto CallOrFail(const void* caller, TArguments... arguments) {
    const auto real = reinterpret_cast<TReal>(TData::real);
    if (!MustFail(TData::kind, caller)) {
        const CPause pause;
        return real(arguments...);
    }
    if (TData::way == TFailing::AfterAll) {
        const CPause pause;
        real(arguments...);
    }
    SetLastFault(TData::error);
    return TData::failed;
}

template <TImportName kName, class TResult, class... TArguments, bool kNoexcept>
class CFailingCall<kName, TResult (*)(TArguments...) noexcept(kNoexcept)> {
public:
    using TData = TFailingCallData<kName, TResult, TArguments...>;
    static TResult Call(TArguments... arguments) {
        return CallOrFail<TData, TResult (*)(TArguments...)>(__builtin_return_address(0), arguments...);
    }
};

#if defined(_WIN32) && defined(__i386__)
template <TImportName kName, class TResult, class... TArguments>
class CFailingCall<kName, TResult(__stdcall*)(TArguments...)> {
public:
    using TData = TFailingCallData<kName, TResult, TArguments...>;
    static TResult __stdcall Call(TArguments... arguments) {
        return CallOrFail<TData, TResult(__stdcall*)(TArguments...)>(__builtin_return_address(0),
                                                                     arguments...);
    }
};
#endif

/// A call that fails with `failed` and the error number `error`.
template <TImportName kName, class TFunction, class TResult>
THook Failing(TFaultKind kind, TResult failed, int error, TFailing way = TFailing::Instead) {
    using TCall = CFailingCall<kName, TFunction>;
    using TData = typename TCall::TData;
    TData::kind = kind;
    TData::failed = failed;
    TData::error = error;
    TData::way = way;
    return {kName.characters, reinterpret_cast<void*>(&TCall::Call), &TData::real};
}

/// The allocation functions of C and C++, with what follows which block.
std::vector<THook> GetMemoryHooks();

/// Those of them that this program's own imports are given: what it frees may be the library's.
std::vector<THook> GetOwnHooks();

} // namespace vorlund::faults
