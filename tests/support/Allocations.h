/// \file
/// Sees, refuses and interrupts what the calling thread allocates with `operator new`. Only in
/// vorlund_internal_tests, whose library is linked into the program: it replaces the allocation functions of
/// the program.
#pragma once

#include <cstddef>
#include <functional>

namespace vorlund::test {

/// Counts the allocations of the calling thread from its construction on.
class CAllocationCount {
public:
    CAllocationCount();

    /// Allocations since the construction.
    std::size_t Get() const;

private:
    std::size_t start_;
};

/// Watches what the calling thread holds of `operator new`'s memory from its construction on. One at a time
/// per thread.
class CMemoryWatch {
public:
    CMemoryWatch();

    /// Blocks allocated and not freed since the construction; below 0 when older ones were freed.
    std::ptrdiff_t GetLiveBlocks() const;
    /// The most bytes held at once, above those that were held at the construction.
    std::size_t GetPeakBytes() const;

private:
    std::ptrdiff_t startBlocks_;
    std::ptrdiff_t startBytes_;
};

/// Makes one allocation of the calling thread raise `std::bad_alloc`: the one after `successes` successful
/// ones. One at a time per thread; the destructor takes a refusal that did not come back.
class CAllocationFailure {
public:
    explicit CAllocationFailure(std::size_t successes);
    CAllocationFailure(const CAllocationFailure&) = delete;
    CAllocationFailure& operator=(const CAllocationFailure&) = delete;
    ~CAllocationFailure();

    /// True once the allocation was refused.
    bool HasFailed() const;
};

/// Does something in the middle of an operation: right before the next allocation of the calling thread,
/// once. One at a time per thread.
class CAllocationStep {
public:
    explicit CAllocationStep(std::function<void()> step);
    CAllocationStep(const CAllocationStep&) = delete;
    CAllocationStep& operator=(const CAllocationStep&) = delete;
    ~CAllocationStep();

private:
    const std::function<void()> step_;
};

} // namespace vorlund::test
