// The empty enumerator.
#pragma once

#include <vorlund/ClassIds.h>
#include <vorlund/ObjectEnumerator.h>
#include <vorlund/ObjectImpl.h>

namespace vorlund {

/// An enumerator that is always at its end.
class CObjectEnumerator : public CObjectImpl<IObjectEnumerator> {
public:
    static constexpr CId ClassId = classid::CObjectEnumerator;

    bool HasNext() override { return false; }
    IObject* GetNext() override { return nullptr; }
};

} // namespace vorlund
