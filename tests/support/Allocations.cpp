#include "support/Allocations.h"

#include "support/BlockSize.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

namespace vorlund::test {
namespace {

/// What one thread has allocated, what it shall be refused, and what it does in between. Plain data, so that
/// it works in every phase of a thread.
struct TThreadAllocations {
    std::size_t count;
    bool isArmed;
    bool hasFailed;
    std::size_t successesLeft;
    const std::function<void()>* step;
    std::ptrdiff_t liveBlocks;
    std::ptrdiff_t liveBytes;
    std::ptrdiff_t peakBytes;
};
thread_local TThreadAllocations allocations;

void* Allocate(std::size_t size) {
    TThreadAllocations& state = allocations;
    ++state.count;
    if (const auto* const step = std::exchange(state.step, nullptr)) (*step)();
    if (state.isArmed && state.successesLeft-- == 0) {
        state.isArmed = false;
        state.hasFailed = true;
        throw std::bad_alloc();
    }
    void* const memory = std::malloc(size ? size : 1);
    if (!memory) throw std::bad_alloc();
    ++state.liveBlocks;
    state.liveBytes += static_cast<std::ptrdiff_t>(BlockSize(memory));
    state.peakBytes = std::max(state.peakBytes, state.liveBytes);
    return memory;
}

void Free(void* memory) {
    if (!memory) return;
    --allocations.liveBlocks;
    allocations.liveBytes -= static_cast<std::ptrdiff_t>(BlockSize(memory));
    std::free(memory);
}

} // namespace

CAllocationCount::CAllocationCount() : start_(allocations.count) {}
std::size_t CAllocationCount::Get() const {
    return allocations.count - start_;
}

CMemoryWatch::CMemoryWatch() : startBlocks_(allocations.liveBlocks), startBytes_(allocations.liveBytes) {
    allocations.peakBytes = allocations.liveBytes;
}
std::ptrdiff_t CMemoryWatch::GetLiveBlocks() const {
    return allocations.liveBlocks - startBlocks_;
}
std::size_t CMemoryWatch::GetPeakBytes() const {
    return static_cast<std::size_t>(allocations.peakBytes - startBytes_);
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

CAllocationStep::CAllocationStep(std::function<void()> step) : step_(std::move(step)) {
    allocations.step = &step_;
}
CAllocationStep::~CAllocationStep() {
    allocations.step = nullptr;
}

} // namespace vorlund::test

void* operator new(std::size_t size) {
    return vorlund::test::Allocate(size);
}
void* operator new[](std::size_t size) {
    return vorlund::test::Allocate(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return vorlund::test::Allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
}
void operator delete(void* memory) noexcept {
    vorlund::test::Free(memory);
}
void operator delete[](void* memory) noexcept {
    vorlund::test::Free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    vorlund::test::Free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    vorlund::test::Free(memory);
}
