// The way up from the lower floors to the stores of `v`; see the header.
#include <vorlund/Exception.h>
#include <vorlund/ObjectServices.h>
#include <vorlund/Vorlund.h>

namespace vorlund::services {

int OnCreateObject(const CId& classId) {
    return v.GetObjectCounter().OnCreateObject(classId);
}
void OnDestroyObject(const CId& classId) {
    v.GetObjectCounter().OnDestroyObject(classId);
}
IObject* CreateObject(const CId& classId) {
    return v.GetClassStore().CreateObject(classId);
}
CClassStore& ClassStore() {
    return v.GetClassStore();
}
CCodecClassStore& CodecClassStore() {
    return v.GetCodecClassStore();
}

void RegisterFactory(const CId& classId, const wchar* name, IObject* (*factory)()) {
    v.GetClassStore().RegisterClassVrl({classId, name, factory});
}
CDeviceClassStore& DeviceClassStore() {
    return v.GetDeviceClassStore();
}

const wchar* FindClassName(const CId& classId) {
    return v.GetClassStore().GetClassInfo(classId)->name;
}

void GiveBackClassStoreLock() noexcept {
    v.GetClassStore().GiveBackLock();
}

void RequireClass(const CId& classId, const TFailure& failure) {
    try {
        v.GetClassStore().GetClassInfo(classId);
    } catch (const CClassNotFoundException&) {
        Raise<CBugException>(failure);
    }
}

} // namespace vorlund::services
