/// \file
/// What every object, list, file and filter needs of the library object: the object counter and the stores.
/// This is the one way up from the lower layers; applications use `v` (Vorlund.h) instead.
#pragma once

#include <vorlund/Id.h>

namespace vorlund {

class CClassStore;
class CCodecClassStore;
class IObject;

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

} // namespace services
} // namespace vorlund
