// The form that most functions have: one operation on the object of a handle.
#pragma once

#include "Guard.h"
#include "Handles.h"

#include <cstdint>

namespace vorlund::capi {

/// Calls `work` with the object of a handle.
template <class TObject, class TWork>
std::int32_t On(const char* function, const void* handle, TWork&& work) noexcept {
    return Guarded(function, [&] {
        const CUse<TObject> object(handle);
        work(*object);
    });
}

/// The same for a result, which `work` returns.
template <class TObject, class TResult, class TWork>
std::int32_t Ask(const char* function, const void* handle, TResult* result, TWork&& work) noexcept {
    return Guarded(function, [&] {
        RequirePointer(result);
        const CUse<TObject> object(handle);
        *result = static_cast<TResult>(work(*object));
    });
}

} // namespace vorlund::capi
