#include "vorlund/util/ObjectList.h"

#include "vorlund/api/objects/CreateOrRaise.h"

#include <vorlund/Exception.h>

#include <algorithm>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/util/ObjectList");
constexpr const wchar* kRemoveObject = VRL_L("vorlund::CObjectList::RemoveObject");
constexpr const wchar* kCannotFindObject = VRL_L("Cannot find object");
constexpr const wchar* kIndexOutOfBounds = VRL_L("Index out of bounds");

constexpr TFailure kRemoveNotFound{kRemoveObject, kFile, 67, kCannotFindObject};
constexpr TFailure kRemoveBadIndex{kRemoveObject, kFile, 75, kIndexOutOfBounds};
constexpr TFailure kNoEnumerator{VRL_L("vorlund::CObjectList::EnumerateObjects"), kFile, 96,
                                 VRL_L("Cannot create enumerator")};
constexpr TFailure kGetBadIndex{VRL_L("vorlund::CObjectList::GetObject"), kFile, 126, kIndexOutOfBounds};
constexpr TFailure kFindNotFound{VRL_L("vorlund::CObjectList::FindObject"), kFile, 140, kCannotFindObject};

} // namespace

void CObjectList::AddObject(IObject* object) {
    objects_.Share(object);
}

void CObjectList::RemoveObject(unsigned int index) {
    if (index >= objects_.GetCount()) Raise<CBadIndexException>(kRemoveBadIndex);
    objects_.Remove(index);
}

void CObjectList::RemoveObject(IObject* object) {
    objects_.Remove(Find(object, kRemoveNotFound));
}

void CObjectList::RemoveAllObjects() {
    objects_.Clear();
}

IObjectEnumerator* CObjectList::EnumerateObjects() {
    return EnumerateObjects(IObject::InterfaceId);
}

IObjectEnumerator* CObjectList::EnumerateObjects(CId interfaceId) {
    auto enumerator = CreateOrRaise<IPushObjectEnumerator>(classid::CPushObjectEnumerator, kNoEnumerator);
    enumerator->Reserve(GetObjectCount());
    for (IObject* const object : objects_) {
        // Every object is an IObject, so a list of all members need not ask.
        if (interfaceId != IObject::InterfaceId) {
            IObject* const answer = object->QueryInterface(interfaceId);
            if (!answer) continue;
            answer->Release();
        }
        enumerator->Push(object);
    }
    return enumerator.Detach();
}

unsigned int CObjectList::GetObjectCount() {
    return static_cast<unsigned int>(objects_.GetCount());
}

IObject* CObjectList::GetObject(unsigned int index) {
    if (index >= objects_.GetCount()) Raise<CBadIndexException>(kGetBadIndex);
    objects_[index]->AddRef();
    return objects_[index];
}

int CObjectList::FindObject(IObject* object) {
    return static_cast<int>(Find(object, kFindNotFound));
}

std::size_t CObjectList::Find(IObject* object, const TFailure& failure) const {
    const auto found = std::find(objects_.begin(), objects_.end(), object);
    if (found == objects_.end()) Raise<CObjectNotFoundException>(failure);
    return static_cast<std::size_t>(found - objects_.begin());
}

} // namespace vorlund
