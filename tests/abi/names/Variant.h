// One order of <windows.h> and the headers of the library, and all that a program does with the methods whose
// names are macros there. The including file defines VARIANT, the function's name, and one macro each of
// VARIANT_{BEFORE,AFTER,BETWEEN}, VARIANT_{LEAN,FULL} and VARIANT_{ANSI,UNICODE}. The macros stay on
// throughout.

#ifdef VARIANT_LEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifdef VARIANT_UNICODE
#define UNICODE
#define NAMED(name) name "W"
#else
#define NAMED(name) name "A"
#endif

#ifdef VARIANT_BEFORE
#include <windows.h>
#endif
#include <vorlund/ClassStore.h>
#include <vorlund/ObjectImpl.h>
#ifdef VARIANT_BETWEEN
#include <windows.h>
#endif
#include <vorlund/ClassIds.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Vorlund.h>
#ifdef VARIANT_AFTER
#include <windows.h>
#endif

#include "Checks.h"

#include <string_view>

#define TEXT_OF(name) TEXT_OF_EXPANDED(name)
#define TEXT_OF_EXPANDED(name) #name

namespace vorlund::test {
namespace {

static_assert(std::string_view(TEXT_OF(GetObject)) == NAMED("GetObject"), "the user's macro is as before");
static_assert(std::string_view(TEXT_OF(GetClassInfo)) == NAMED("GetClassInfo"),
              "the user's macro is as before");

#include <vorlund/NamesBegin.h>
static_assert(std::string_view(TEXT_OF(GetObject)) == "GetObject", "put aside");

/// A list with room for two, which nobody finds anything in.
class CPair : public CObjectImpl<IObjectList> {
public:
    static constexpr CId ClassId{0x6A1F0C52, 0x4C0E92D7, 0x9B3D11E8, 0x27C5F0A4};

    void AddObject(IObject* object) override { members_[count_++] = object; }
    void RemoveObject(unsigned int) override { --count_; }
    void RemoveObject(IObject*) override { --count_; }
    void RemoveAllObjects() override { count_ = 0; }
    IObjectEnumerator* EnumerateObjects() override { return nullptr; }
    IObjectEnumerator* EnumerateObjects(CId) override { return nullptr; }
    unsigned int GetObjectCount() override { return count_; }
    IObject* GetObject(unsigned int index) override;
    int FindObject(IObject*) override { return -1; }

private:
    IObject* members_[2] = {};
    unsigned int count_ = 0;
};

IObject* CPair::GetObject(unsigned int index) {
    members_[index]->AddRef();
    return members_[index];
}
#include <vorlund/NamesEnd.h>

static_assert(std::string_view(TEXT_OF(GetObject)) == NAMED("GetObject"), "the user's macro is back");

/// Every way of calling `GetObject`, of an own list and of one of the library.
void CheckList(IObjectList& list, const char* where) {
    const auto member = CreateAs<IObject>(classid::CObject);
    list.AddObject(member.Get());
    // The second reference that a call gives is taken back at once.
    const auto isMember = [&](IObject* object) {
        return CRefPtr<IObject>::Adopt(object).Get() == member.Get();
    };
    Check(isMember(list.GetObject(0)), where, "GetObject");
    Check(isMember(list.GetObjectA(0)), where, "GetObjectA");
    Check(isMember(list.GetObjectW(0)), where, "GetObjectW");
#include <vorlund/NamesBegin.h>
    Check(isMember(list.GetObject(0)), where, "GetObject between the brackets");
#include <vorlund/NamesEnd.h>
    IObject* (IObjectList::*const method)(unsigned int) = &IObjectList::GetObject;
    Check(isMember((list.*method)(0)), where, "GetObject by its address");
    list.RemoveAllObjects();
}

void CheckClassStore(const char* where) {
    const CClassStore& store = v.GetClassStore();
    const TClassInfo* const info = store.GetClassInfo(classid::CObject);
    Check(info && info->id == classid::CObject, where, "GetClassInfo by identifier");
    Check(store.GetClassInfo(VRL_L("vorlund::CObject")) == info, where, "GetClassInfo by name");
    Check(store.GetClassInfoA(classid::CObject) == info, where, "GetClassInfoA by identifier");
    Check(store.GetClassInfoA(VRL_L("vorlund::CObject")) == info, where, "GetClassInfoA by name");
    Check(store.GetClassInfoW(classid::CObject) == info, where, "GetClassInfoW by identifier");
    Check(store.GetClassInfoW(VRL_L("vorlund::CObject")) == info, where, "GetClassInfoW by name");
}

} // namespace

void VARIANT() {
    const char* const where = TEXT_OF(VARIANT);
    const auto own = CRefPtr<IObject>::Adopt(NewObject<CPair>()).Query<IObjectList>();
    const auto builtin = CreateAs<IObjectList>(classid::CObjectList);
    for (IObjectList* const list : {own.Get(), builtin.Get()}) {
        CheckList(*list, where);
        CheckSlots(*list, where);
    }
    CheckClassStore(where);
}

} // namespace vorlund::test
