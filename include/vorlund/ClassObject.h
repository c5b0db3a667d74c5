/// \file
/// `CClassObject`, the base of the service classes that are no `IObject`s.
#pragma once

#include <vorlund/Platform.h>

#include <cstddef>

namespace vorlund {

/// Base of the library's service classes that are not reference counted (locks, readers, writers): a virtual
/// destructor, and allocation that reports exhaustion by an exception of the library.
class VRL_API CClassObject {
public:
    /// Allocates `size` bytes with the C heap. Raises `COutOfMemoryException` "malloc failed".
    static void* operator new(std::size_t size);

    /// Frees with the C heap; null is allowed.
    static void operator delete(void* memory);

    CClassObject() = default;
    CClassObject(const CClassObject&) = default;
    CClassObject& operator=(const CClassObject&) = default;

    /// Destructors of derived classes may raise.
    virtual ~CClassObject() noexcept(false);
};

} // namespace vorlund
