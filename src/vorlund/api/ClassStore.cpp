// The class store: registrations in order, and an index of the first ones.
//
// One recursive lock guards the registrations (StoreLock.h tells how it outlives the closing). It is held
// while a factory runs; a factory may still create further objects through the store, because the lock is
// recursive. Of the library's locks that are held while foreign code runs it is the last in the order.
#include "vorlund/api/ClassIndex.h"
#include "vorlund/api/objects/CreateOrRaise.h"
#include "vorlund/api/objects/Registrations.h"
#include "vorlund/api/values/DebugOutput.h"
#include "vorlund/system/StoreLock.h"
#include "vorlund/util/PtrObjects.h"

#include <vorlund/ClassIds.h>
#include <vorlund/ClassStore.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectEnumerator.h>
#include <vorlund/PtrObject.h>
#include <vorlund/RefPtr.h>

#include <deque>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/api/ClassStore");
constexpr const wchar* kCreateObject = VRL_L("vorlund::CClassStore::CreateObject");
constexpr const wchar* kGetClassInfo = VRL_L("vorlund::CClassStore::GetClassInfo");
// Kept for callers who compare them: when nothing is found, GetClassInfo's failures name GetClass, and only
// CreateObject by identifier gives a reason.
constexpr const wchar* kGetClass = VRL_L("vorlund::CClassStore::GetClass");
constexpr const wchar* kEnumerateClasses = VRL_L("vorlund::CClassStore::EnumerateClasses");
constexpr const wchar* kNotInitialized = VRL_L("Not initialized");

constexpr TFailure kNotClosed{VRL_L("vorlund::CClassStore::~CClassStore"), kFile, 28, VRL_L("Not closed")};
constexpr TFailure kRegisterNotInitialized{VRL_L("vorlund::CClassStore::RegisterClassVrl"), kFile, 148,
                                           kNotInitialized};
constexpr TFailure kNoEnumerator{kEnumerateClasses, kFile, 160, VRL_L("Cannot create enumerator")};
constexpr TFailure kNoItem{kEnumerateClasses, kFile, 171, VRL_L("Cannot create pointer object")};

/// What an operation raises for one kind of key.
struct TLookupFailures {
    TFailure notInitialized;
    TFailure notFound;
};
constexpr TLookupFailures kCreateById{{kCreateObject, kFile, 60, kNotInitialized},
                                      {kCreateObject, kFile, 68, VRL_L("Cannot find class")}};
constexpr TLookupFailures kCreateByName{{kCreateObject, kFile, 77, kNotInitialized},
                                        {kCreateObject, kFile, 85, VRL_L("")}};
constexpr TLookupFailures kGetById{{kGetClassInfo, kFile, 112, kNotInitialized},
                                   {kGetClass, kFile, 125, VRL_L("")}};
constexpr TLookupFailures kGetByName{{kGetClassInfo, kFile, 130, kNotInitialized},
                                     {kGetClass, kFile, 143, VRL_L("")}};

} // namespace

struct CClassStore::TData {
    mutable CStoreLock lock;
    /// A deque, because lookups hand out the addresses of its members.
    std::deque<TClassInfo> classes;
    CClassIndex index;

    using CAccess = CStoreAccess<TData>;

    /// Registers a copy of `info`, or nothing at all when memory runs out.
    void Add(const TClassInfo& info) {
        classes.push_back(info);
        try {
            index.Add(classes.back());
        } catch (...) {
            classes.pop_back();
            throw;
        }
    }

    void Clear() {
        index.Clear();
        classes.clear();
    }

    template <class TKey>
    static const TClassInfo* Get(TData* const& store, const TKey& key, const TLookupFailures& failures) {
        CAccess data(store, TStoreUse::Exclusive);
        if (!data) Raise<CBugException>(failures.notInitialized);
        const TClassInfo* const info = data->index.Find(key);
        // The failure is reported without the lock.
        data.Leave();
        if (!info) Raise<CClassNotFoundException>(failures.notFound);
        return info;
    }

    template <class TKey>
    static IObject* Create(TData* const& store, const TKey& key, const TLookupFailures& failures) {
        CAccess data(store, TStoreUse::Exclusive);
        if (!data) Raise<CBugException>(failures.notInitialized);
        const TClassInfo* const info = data->index.Find(key);
        // A class without a factory is there for lookups only.
        if (!info || !info->factory) {
            data.Leave();
            Raise<CClassNotFoundException>(failures.notFound);
        }
        // Kept for existing applications: when the factory raises, the lock stays with this thread, which can
        // go on using the store, and other threads wait until it gives the lock back or closes the store.
        data.KeepLock(true);
        IObject* const object = info->factory();
        data.KeepLock(false);
        return object;
    }
};

CClassStore::~CClassStore() noexcept(false) {
    if (data_) Raise<CBugException>(kNotClosed);
}

void CClassStore::Init() {
    OpenStore(data_);
}

void CClassStore::Close() {
    if (CloseStore(data_)) RaiseStillLocked();
}

int CClassStore::GiveBackLock() const noexcept {
    return GiveBackStore(data_);
}

void CClassStore::Clear() {
    const TData::CAccess data(data_, TStoreUse::Exclusive);
    if (data) data->Clear();
}

void CClassStore::RegisterClassVrl(const TClassInfo& info) {
    const TData::CAccess data(data_, TStoreUse::Exclusive);
    if (!data) Raise<CBugException>(kRegisterNotInitialized);
    // Kept for existing plug-ins: no check for duplicates; the first registration wins.
    data->Add(info);
    registrations::Note(registrations::TKind::Class, info.id, info.name);
}

const TClassInfo* CClassStore::GetClassInfo(const CId& id) const {
    return TData::Get(data_, id, kGetById);
}

const TClassInfo* CClassStore::GetClassInfo(const wchar* name) const {
    return TData::Get(data_, name, kGetByName);
}

IObject* CClassStore::CreateObject(const CId& id) const {
    return TData::Create(data_, id, kCreateById);
}

IObject* CClassStore::CreateObject(const wchar* name) const {
    return TData::Create(data_, name, kCreateByName);
}

IObjectEnumerator* CClassStore::EnumerateClasses() const {
    // Before this store's own state is looked at: on the library's closed store this call raises.
    auto enumerator = CreateOrRaise<IPushObjectEnumerator>(classid::CPushObjectEnumerator, kNoEnumerator);
    const TData::CAccess data(data_, TStoreUse::Exclusive);
    if (data) TakePtrObjects(data->classes, kNoItem, [&](IPtrObject* item) { enumerator->Push(item); });
    return enumerator.Detach();
}

void CClassStore::Dump() const {
    const TData::CAccess data(data_, TStoreUse::Exclusive);
    if (!data) {
        EmitDebugText(DEBUG_MESSAGE_STDOUT, VRL_L("Class dump - not initialized!"));
        return;
    }
    EmitDebugText(DEBUG_MESSAGE_STDOUT, VRL_L("Class dump"));
    for (const TClassInfo& info : data->classes) {
        wstring line = VRL_L(" * ") + info.id.ToString() + VRL_L(" - ");
        if (info.name) line += info.name;
        EmitDebugText(DEBUG_MESSAGE_STDOUT, line.c_str());
    }
    EmitDebugText(DEBUG_MESSAGE_STDOUT, VRL_L("---"));
}

} // namespace vorlund
