// The device class store: device classes in the order of registration.
//
// One recursive lock guards the list (StoreLock.h tells how it outlives the closing). Creation and
// enumeration hold it while they create objects, so the class store's lock comes after this one; a
// registration asks the class store first.
#include "vorlund/api/objects/CreateOrRaise.h"
#include "vorlund/api/objects/Registrations.h"
#include "vorlund/system/StoreLock.h"
#include "vorlund/util/PtrObjects.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Device.h>
#include <vorlund/DeviceClassStore.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectList.h>
#include <vorlund/ObjectServices.h>
#include <vorlund/PtrObject.h>

#include <algorithm>
#include <deque>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/devices/DeviceClassStore");
constexpr const wchar* kCreateDevice = VRL_L("vorlund::CDeviceClassStore::CreateDevice");
constexpr const wchar* kEnumerateDevices = VRL_L("vorlund::CDeviceClassStore::EnumerateDevices");
constexpr const wchar* kRegisterDevice = VRL_L("vorlund::CDeviceClassStore::RegisterDevice");
constexpr const wchar* kNotInitialized = VRL_L("Not initialized");

constexpr TFailure kNotClosed{VRL_L("vorlund::CDeviceClassStore::~CDeviceClassStore"), kFile, 29,
                              VRL_L("Not closed")};
constexpr TFailure kCreateNotInitialized{kCreateDevice, kFile, 52, kNotInitialized};
constexpr TFailure kNoObject{kCreateDevice, kFile, 63, VRL_L("Device class not found")};
constexpr TFailure kNoInterface{kCreateDevice, kFile, 69, VRL_L("Device interface not found")};
constexpr TFailure kNoClass{kCreateDevice, kFile, 75, VRL_L("")};
constexpr TFailure kNoList{kEnumerateDevices, kFile, 81, VRL_L("Cannot create object list")};
constexpr TFailure kNoItem{kEnumerateDevices, kFile, 89, VRL_L("Cannot create pointer object")};
constexpr TFailure kRegisterNotInitialized{kRegisterDevice, kFile, 100, kNotInitialized};
constexpr TFailure kClassMissing{kRegisterDevice, kFile, 104, VRL_L("Class must be registered first")};

} // namespace

struct CDeviceClassStore::TData {
    mutable CStoreLock lock;
    /// A deque, because enumerations hand out the addresses of its members.
    std::deque<TDeviceClassInfo> classes;

    using CAccess = CStoreAccess<TData>;
};

CDeviceClassStore::~CDeviceClassStore() noexcept(false) {
    if (data_) Raise<CBugException>(kNotClosed);
}

void CDeviceClassStore::Init() {
    OpenStore(data_);
}

void CDeviceClassStore::Close() {
    if (CloseStore(data_)) RaiseStillLocked();
}

int CDeviceClassStore::GiveBackLock() const noexcept {
    return GiveBackStore(data_);
}

void CDeviceClassStore::RegisterDevice(const TDeviceClassInfo& info) {
    if (!TData::CAccess(data_, TStoreUse::Pinned)) Raise<CBugException>(kRegisterNotInitialized);
    services::RequireClass(info.classId, kClassMissing);
    const TData::CAccess data(data_, TStoreUse::Exclusive);
    // Another thread may have closed the store in between.
    if (!data) Raise<CBugException>(kRegisterNotInitialized);
    // Kept for existing plug-ins: no check for duplicates; the first class of a type wins.
    data->classes.push_back(info);
    registrations::Note(registrations::TKind::Device, info.classId);
}

IDevice* CDeviceClassStore::CreateDevice(TDeviceType type) const {
    TData::CAccess data(data_, TStoreUse::Exclusive);
    if (!data) Raise<CBugException>(kCreateNotInitialized);
    const auto& classes = data->classes;
    const auto found = std::find_if(classes.begin(), classes.end(),
                                    [type](const TDeviceClassInfo& info) { return info.deviceType == type; });
    if (found == classes.end()) {
        // Kept for existing callers: here, and only here, the lock stays with this thread. The caller can go
        // on, as the lock is recursive; `GiveBackLock` and `Close` give it back.
        data.KeepLock(true);
        Raise<CClassNotFoundException>(kNoClass);
    }
    auto object = CRefPtr<IObject>::Adopt(services::CreateObject(found->classId));
    if (!object) {
        data.Leave();
        Raise<CBugException>(kNoObject);
    }
    auto device = object.Query<IDevice>();
    object.Reset();
    if (!device) {
        data.Leave();
        Raise<CBugException>(kNoInterface);
    }
    return device.Detach();
}

IObjectList* CDeviceClassStore::EnumerateDevices() const {
    auto list = CreateOrRaise<IObjectList>(classid::CObjectList, kNoList);
    const TData::CAccess data(data_, TStoreUse::Exclusive);
    if (data) TakePtrObjects(data->classes, kNoItem, [&](IPtrObject* item) { list->AddObject(item); });
    return list.Detach();
}

} // namespace vorlund
