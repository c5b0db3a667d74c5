/// \file
/// Not for applications and plug-ins, which use `v` (Vorlund.h) and `CreateAs` (RefPtr.h) instead. It is
/// installed because the templates of ObjectImpl.h and RefPtr.h call it: what every object, list, file and
/// filter needs of the library object, the object counter and the stores. This is the one way up from the
/// lower floors.
#pragma once

#include <vorlund/Id.h>

namespace vorlund {

class CClassStore;
class CCodecClassStore;
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

/// Raises `CBugException` from `failure` unless `v`'s class store knows the class. Not exported: for the
/// library's own stores, whose records name classes.
void RequireClass(const CId& classId, const TFailure& failure);

} // namespace services
} // namespace vorlund
