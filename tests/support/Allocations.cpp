#include "support/Allocations.h"

#include <cstdlib>
#include <new>

namespace vorlund::test {
namespace {

/// What one thread has allocated and shall be refused. Plain data, so that it works in every phase of a
/// thread.
struct TThreadAllocations {
    std::size_t count;
    bool isArmed;
    bool hasFailed;
    std::size_t successesLeft;
};
thread_local TThreadAllocations allocations;

void* Allocate(std::size_t size) {
    TThreadAllocations& state = allocations;
    ++state.count;
    if (state.isArmed && state.successesLeft-- == 0) {
        state.isArmed = false;
        state.hasFailed = true;
        throw std::bad_alloc();
    }
    if (void* const memory = std::malloc(size ? size : 1)) return memory;
    throw std::bad_alloc();
}

} // namespace

CAllocationCount::CAllocationCount() : start_(allocations.count) {}
std::size_t CAllocationCount::Get() const {
    return allocations.count - start_;
}

CAllocationFailure::CAllocationFailure(std::size_t successes) {
    allocations.successesLeft = successes;
    allocations.hasFailed = false;
    allocations.isArmed = true;
}
CAllocationFailure::~CAllocationFailure() {
    allocations.isArmed = false;
}
bool CAllocationFailure::HasFailed() const {
    return allocations.hasFailed;
}

} // namespace vorlund::test

void* operator new(std::size_t size) {
    return vorlund::test::Allocate(size);
}
void* operator new[](std::size_t size) {
    return vorlund::test::Allocate(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
