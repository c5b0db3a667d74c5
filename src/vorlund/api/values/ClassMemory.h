/// \file
/// The memory of the records behind the service classes.
#pragma once

#include <vorlund/ClassObject.h>

namespace vorlund {

/// Base of records that are allocated like a `CClassObject`, on the C heap and raising
/// `COutOfMemoryException` "malloc failed", but have no virtual destructor.
struct TClassMemory {
    static void* operator new(std::size_t size) { return CClassObject::operator new(size); }
    static void operator delete(void* memory) { CClassObject::operator delete(memory); }
};

} // namespace vorlund
