// The records of a store as pointer objects, which is how every store hands them out.
#pragma once

#include "vorlund/api/objects/CreateOrRaise.h"

#include <vorlund/ClassIds.h>
#include <vorlund/ObjectList.h>

#include <cstddef>
#include <memory>

namespace vorlund {

/// Calls `take` with a new `IPtrObject` for each of `records`, in their order: it points at the record, or at
/// what a record that is a pointer points at. The caller keeps the records in place. Raises `CBugException`
/// from `noItem` when the class of pointer objects yields none.
template <class TRecords, class TTake>
void TakePtrObjects(TRecords& records, const TFailure& noItem, TTake take) {
    // By index, because the factory of the items may register further records.
    for (std::size_t i = 0; i < records.size(); ++i) {
        const auto item = CreateOrRaise<IPtrObject>(classid::CPtrObject, noItem);
        if constexpr (requires { *records[i]; }) {
            item->SetPtr(records[i]);
        } else {
            item->SetPtr(std::addressof(records[i]));
        }
        take(item.Get());
    }
}

} // namespace vorlund
