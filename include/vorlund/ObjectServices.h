/// \file
/// Not for applications and plug-ins, which use `v` (Vorlund.h) and `CreateAs` (RefPtr.h) instead. It is
/// installed because the templates of ObjectImpl.h and RefPtr.h call it: what every object, list, file and
/// filter needs of the library object, the object counter and the stores. This is the one way up from the
/// lower floors.
#pragma once

#include <vorlund/Id.h>

#include <atomic>

namespace vorlund {

class CClassStore;
class CCodecClassStore;
class CDeviceClassStore;
class IObject;
struct TFailure;

/// Not for applications and plug-ins; may change in any version.
namespace services {

/// Takes the next serial number. Raises `CBugException` "Not initialized" while the library is closed.
VRL_API int OnCreateObject(const CId& classId);

/// Reports a destruction. Raises `CBugException` "Not initialized" while the library is closed.
VRL_API void OnDestroyObject(const CId& classId);

/// Creates an object through `v`'s class store, with its results and failures.
VRL_API IObject* CreateObject(const CId& classId);

/// `v`'s class store.
VRL_API CClassStore& ClassStore();

/// `v`'s codec class store.
VRL_API CCodecClassStore& CodecClassStore();

/// Registers a class with `v`'s class store, as `CClassStore::RegisterClassVrl` does. Not exported, as the
/// next one: for the classes that plug-ins bring in tables.
void RegisterFactory(const CId& classId, const wchar* name, IObject* (*factory)());

/// `v`'s device class store.
CDeviceClassStore& DeviceClassStore();

/// The calling thread's number, which is 0 for no thread. Since version 0.1.
VRL_API unsigned int ThreadNumber();

/// For builds with `VORLUND_CHECK_THREADS`: the calling thread is about to count object `number` of that
/// class, which has so many `references`; `thread` is the one that counted it before. With one reference the
/// object may have been handed over, and changes its thread; with more it does so too, and a message to
/// `DEBUG_MESSAGE_OUTPUT` names the object and both threads. Any thread. Since version 0.1.
VRL_API void OnCount(std::atomic<unsigned int>& thread, int references, int number, const CId& classId);

/// The registered name of a class in `v`'s class store. Raises what `CClassStore::GetClassInfo` raises. Not
/// exported: for the library's own reports.
const wchar* FindClassName(const CId& classId);

/// `CClassStore::GiveBackLock` of `v`'s class store. Not exported: for operations of the library that go on
/// after an exception which a factory may have raised.
void GiveBackClassStoreLock() noexcept;

/// Raises `CBugException` from `failure` unless `v`'s class store knows the class. Not exported: for the
/// library's own stores, whose records name classes.
void RequireClass(const CId& classId, const TFailure& failure);

} // namespace services
} // namespace vorlund
