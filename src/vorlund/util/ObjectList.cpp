#include "vorlund/util/ObjectList.h"

#include "vorlund/api/objects/CreateOrRaise.h"

#include <vorlund/Exception.h>

#include <algorithm>
#include <utility>

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

/// Keeps a list while it works.
CRefPtr<IObjectList> Hold(IObjectList* list) {
    return CRefPtr<IObjectList>::Share(list);
}

/// Releases `object`, and keeps the exception if it is the first.
void ReleaseKeeping(IObject* object, std::exception_ptr& first) {
    try {
        object->Release();
    } catch (...) {
        if (!first) first = std::current_exception();
    }
}

bool Has(IObject& object, const CId& interfaceId) {
    IObject* const answer = object.QueryInterface(interfaceId);
    if (answer) answer->Release();
    return answer != nullptr;
}

} // namespace

CObjectList::~CObjectList() noexcept(false) {
    isEnding_ = true;
    std::exception_ptr raised;
    TakeOut(raised);
    // Otherwise it would end the process; it has been reported when it was built.
    if (raised && std::uncaught_exceptions() == 0) std::rethrow_exception(raised);
}

void CObjectList::AddObject(IObject* object) {
    if (isEnding_) return;
    const auto held = Hold(this);
    object->AddRef();
    try {
        members_.push_back({object, false});
    } catch (...) {
        object->Release();
        throw;
    }
}

void CObjectList::RemoveObject(unsigned int index) {
    if (index >= members_.size()) Raise<CBadIndexException>(kRemoveBadIndex);
    ReleaseAndRemove(index);
}

void CObjectList::RemoveObject(IObject* object) {
    ReleaseAndRemove(Find(object, kRemoveNotFound));
}

void CObjectList::ReleaseAndRemove(std::size_t index) {
    const auto remove = [this](std::size_t position) {
        if (position < members_.size())
            members_.erase(members_.begin() + static_cast<std::ptrdiff_t>(position));
    };
    TMember& member = members_[index];
    // Somebody is about to remove it, and has been called back.
    if (member.isReleased) return remove(index);
    const auto held = Hold(this);
    IObject* const object = member.object;
    member.isReleased = true;
    // It may be elsewhere meanwhile, or gone. Of several released positions of one object each may go first.
    try {
        object->Release();
    } catch (...) {
        remove(ReleasedPosition(object, index));
        throw;
    }
    remove(ReleasedPosition(object, index));
}

void CObjectList::RemoveAllObjects() {
    const auto held = Hold(this);
    if (const std::exception_ptr raised = ReleaseAll()) std::rethrow_exception(raised);
}

std::exception_ptr CObjectList::ReleaseAll() {
    std::exception_ptr first;
    // Members see a full list. Those that they add have no turn and are released below; one that removes
    // itself makes room for the next.
    std::size_t turns = members_.size();
    for (std::size_t i = 0; i < members_.size() && turns > 0; --turns) {
        if (std::exchange(members_[i].isReleased, true)) {
            ++i;
            continue;
        }
        IObject* const object = members_[i].object;
        ReleaseKeeping(object, first);
        const std::size_t position = ReleasedPosition(object, i);
        if (position == members_.size()) continue;
        // It may not exist any more.
        members_[position].object = nullptr;
        i = position + 1;
    }
    TakeOut(first);
    return first;
}

void CObjectList::TakeOut(std::exception_ptr& first) {
    for (const TMember& member : std::exchange(members_, {})) {
        if (!member.isReleased) ReleaseKeeping(member.object, first);
    }
}

IObjectEnumerator* CObjectList::EnumerateObjects() {
    return Enumerate(nullptr);
}

IObjectEnumerator* CObjectList::EnumerateObjects(CId interfaceId) {
    return Enumerate(&interfaceId);
}

IObjectEnumerator* CObjectList::Enumerate(const CId* interfaceId) {
    auto held = Hold(this);
    auto enumerator = CreateOrRaise<IPushObjectEnumerator>(classid::CPushObjectEnumerator, kNoEnumerator);
    enumerator->Reserve(GetObjectCount());
    // Members added meanwhile have no turn; one that leaves makes room for the next.
    std::size_t turns = members_.size();
    for (std::size_t i = 0; i < members_.size() && turns > 0; --turns) {
        IObject* const object = members_[i].object;
        // A member that has left may not exist any more.
        if (object && (!interfaceId || Has(*object, *interfaceId)) && IsAt(i, object))
            enumerator->Push(object);
        if (IsAt(i, object)) ++i;
    }
    // This may be the list's end, which raises what members raise: the enumerator still has an owner.
    held.Reset();
    return enumerator.Detach();
}

unsigned int CObjectList::GetObjectCount() {
    return static_cast<unsigned int>(members_.size());
}

IObject* CObjectList::GetObject(unsigned int index) {
    // A position without an object is there only while the list is being emptied.
    if (index >= members_.size() || !members_[index].object) Raise<CBadIndexException>(kGetBadIndex);
    IObject* const object = members_[index].object;
    object->AddRef();
    return object;
}

int CObjectList::FindObject(IObject* object) {
    return static_cast<int>(Find(object, kFindNotFound));
}

std::size_t CObjectList::Find(IObject* object, const TFailure& failure) const {
    const auto found = std::find_if(members_.begin(), members_.end(),
                                    [object](const TMember& member) { return member.object == object; });
    if (!object || found == members_.end()) Raise<CObjectNotFoundException>(failure);
    return static_cast<std::size_t>(found - members_.begin());
}

bool CObjectList::IsAt(std::size_t index, IObject* object) const {
    return index < members_.size() && members_[index].object == object;
}

std::size_t CObjectList::ReleasedPosition(IObject* object, std::size_t likely) const {
    const auto isMarked = [object](const TMember& member) {
        return member.object == object && member.isReleased;
    };
    if (likely < members_.size() && isMarked(members_[likely])) return likely;
    const auto found = std::find_if(members_.begin(), members_.end(), isMarked);
    return static_cast<std::size_t>(found - members_.begin());
}

} // namespace vorlund
