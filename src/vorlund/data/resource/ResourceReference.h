// The reference from a stream to the resource that it is bound to.
#pragma once

#include <vorlund/RefPtr.h>
#include <vorlund/Resource.h>

#include <utility>

namespace vorlund {

/// Makes `reference` hold `resource`, null for none, with a reference of its own. Between the release of the
/// former resource and the end it holds none.
inline void Rebind(CRefPtr<IResource>& reference, IResource* resource) {
    // The new reference comes first: the former resource may be the same.
    auto next = CRefPtr<IResource>::Share(resource);
    reference.Reset();
    reference = std::move(next);
}

} // namespace vorlund
