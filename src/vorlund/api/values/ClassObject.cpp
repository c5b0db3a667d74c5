#include <vorlund/ClassObject.h>
#include <vorlund/Exception.h>

#include <cstdlib>

namespace vorlund {
namespace {

// Kept for callers who compare it: the doubled capital L, and no namespace.
constexpr TFailure kMallocFailed{VRL_L("CCLassObject::operator new"), VRL_L("src/vorlund/api/ClassObject"),
                                 24, VRL_L("malloc failed")};

} // namespace

void* CClassObject::operator new(std::size_t size) {
    void* const memory = std::malloc(size);
    if (!memory) Raise<COutOfMemoryException>(kMallocFailed);
    return memory;
}

void CClassObject::operator delete(void* memory) {
    std::free(memory);
}

CClassObject::~CClassObject() noexcept(false) = default;

} // namespace vorlund
