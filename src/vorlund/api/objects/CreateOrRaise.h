// Creation of the library's own service objects.
#pragma once

#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>

namespace vorlund {

/// `CreateAs` for a class that is always registered. The class may have been replaced by one that yields
/// nothing, or something else: this raises `CBugException` from `failure`.
template <class TInterface> CRefPtr<TInterface> CreateOrRaise(const CId& classId, const TFailure& failure) {
    CRefPtr<TInterface> object = CreateAs<TInterface>(classId);
    if (!object) Raise<CBugException>(failure);
    return object;
}

} // namespace vorlund
