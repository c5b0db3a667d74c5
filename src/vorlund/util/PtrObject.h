// The wrapper of a pointer.
#pragma once

#include <vorlund/ClassIds.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/PtrObject.h>

namespace vorlund {

/// Carries a pointer through an enumerator.
class CPtrObject : public CObjectImpl<IPtrObject> {
public:
    static constexpr CId ClassId = classid::CPtrObject;

    void* GetPtr() override { return pointer_; }
    void SetPtr(void* pointer) override { pointer_ = pointer; }

private:
    void* pointer_ = nullptr;
};

} // namespace vorlund
