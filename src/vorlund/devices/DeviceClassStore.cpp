// The device class store: device classes in the order of registration.
//
// One recursive lock guards the list. Creation and enumeration hold it while they create objects, so the
// class store's lock comes after this one; a registration asks the class store first.
#include "vorlund/api/objects/CreateOrRaise.h"
#include "vorlund/util/PtrObjects.h"

#include <vorlund/BinaryLock.h>
#include <vorlund/ClassIds.h>
#include <vorlund/Device.h>
#include <vorlund/DeviceClassStore.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectList.h>
#include <vorlund/ObjectServices.h>
#include <vorlund/PtrObject.h>

#include <algorithm>
#include <deque>
#include <utility>

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
    CBinaryLock lock;
    /// A deque, because enumerations hand out the addresses of its members.
    std::deque<TDeviceClassInfo> classes;
};

CDeviceClassStore::~CDeviceClassStore() noexcept(false) {
    if (data_) Raise<CBugException>(kNotClosed);
}

void CDeviceClassStore::Init() {
    if (!data_) data_ = new TData;
}

void CDeviceClassStore::Close() {
    if (!data_) return;
    TData* const data = std::exchange(data_, nullptr);
    // A creation that found no class has left the lock with its thread. When that is another thread, it may
    // never give it back, so nobody waits for it: the lock raises in its destruction, after everything else
    // is freed.
    while (data->lock.GetHoldCount() > 0) data->lock.Unlock();
    delete data;
}

void CDeviceClassStore::RegisterDevice(const TDeviceClassInfo& info) {
    if (!data_) Raise<CBugException>(kRegisterNotInitialized);
    services::RequireClass(info.classId, kClassMissing);
    const CBinaryLockGuard guard(data_->lock);
    // Kept for existing plug-ins: no check for duplicates; the first class of a type wins.
    data_->classes.push_back(info);
}

IDevice* CDeviceClassStore::CreateDevice(TDeviceType type) const {
    if (!data_) Raise<CBugException>(kCreateNotInitialized);
    CBinaryLockGuard guard(data_->lock);
    const auto& classes = data_->classes;
    const auto found = std::find_if(classes.begin(), classes.end(),
                                    [type](const TDeviceClassInfo& info) { return info.deviceType == type; });
    if (found == classes.end()) {
        // Kept for existing callers: here, and only here, the lock stays with this thread. The caller can go
        // on, as the lock is recursive; `Close` gives it back.
        guard.Leave();
        Raise<CClassNotFoundException>(kNoClass);
    }
    auto object = CRefPtr<IObject>::Adopt(services::CreateObject(found->classId));
    if (!object) {
        guard.Unlock();
        Raise<CBugException>(kNoObject);
    }
    auto device = object.Query<IDevice>();
    object.Reset();
    if (!device) {
        guard.Unlock();
        Raise<CBugException>(kNoInterface);
    }
    return device.Detach();
}

IObjectList* CDeviceClassStore::EnumerateDevices() const {
    auto list = CreateOrRaise<IObjectList>(classid::CObjectList, kNoList);
    if (data_) {
        const CBinaryLockGuard guard(data_->lock);
        TakePtrObjects(data_->classes, kNoItem, [&](IPtrObject* item) { list->AddObject(item); });
    }
    return list.Detach();
}

} // namespace vorlund
