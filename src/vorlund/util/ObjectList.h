// The list of objects.
#pragma once

#include <vorlund/ClassIds.h>
#include <vorlund/ObjectEnumerator.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>

namespace vorlund {

/// Holds one reference per position; a failed call leaves it unchanged.
class CObjectList : public CObjectImpl<IObjectList> {
public:
    static constexpr CId ClassId = classid::CObjectList;

    void AddObject(IObject* object) override;
    void RemoveObject(unsigned int index) override;
    void RemoveObject(IObject* object) override;
    void RemoveAllObjects() override;
    IObjectEnumerator* EnumerateObjects() override;
    IObjectEnumerator* EnumerateObjects(CId interfaceId) override;
    unsigned int GetObjectCount() override;
    IObject* GetObject(unsigned int index) override;
    int FindObject(IObject* object) override;

private:
    /// The first position of `object`. Raises `failure` when there is none.
    std::size_t Find(IObject* object, const struct TFailure& failure) const;

    CReferenceList<IObject> objects_;
};

} // namespace vorlund
