/// \file
/// `MakeObject`, which makes objects of classes that a program knows by type.
#pragma once

#include <vorlund/ObjectImpl.h>
#include <vorlund/RefPtr.h>

#include <utility>

namespace vorlund {

/// A new object of `TClass`, which derives from `CObjectImpl` and has a `ClassId`; the arguments go to its
/// constructor. The class needs no registration. Raises `std::bad_alloc`, what the constructor raises, and
/// `CBugException` "Not initialized" while the library is closed. Since version 0.1.
template <class TClass, class... TArguments> CRefPtr<TClass> MakeObject(TArguments&&... arguments) {
    return CRefPtr<TClass>::Adopt(new CFinalObject<TClass>(std::forward<TArguments>(arguments)...));
}

} // namespace vorlund
