// The snapshot enumerator: filled, then frozen, then read once.
#pragma once

#include <vorlund/ClassIds.h>
#include <vorlund/ObjectEnumerator.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/RefPtr.h>

namespace vorlund {

/// Every collection that the library hands out is one of these.
class CPushObjectEnumerator : public CObjectImpl<IPushObjectEnumerator> {
public:
    static constexpr CId ClassId = classid::CPushObjectEnumerator;

    bool HasNext() override;
    IObject* GetNext() override;
    void Push(IObject* object) override;
    void Reserve(unsigned int count) override;

private:
    bool started_ = false;
    CReferenceList<IObject> objects_;
    std::size_t position_ = 0;
};

} // namespace vorlund
