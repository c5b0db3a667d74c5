#include "faults/FaultPoints.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <set>

namespace vorlund::faults {
namespace {

std::atomic<bool> isCounting = false;
std::atomic<bool> isArmed = false;
std::atomic<bool> hasFailed = false;
TFaultKind armedKind;
unsigned int armedCall;
TSpan armedSpan;
std::array<std::atomic<unsigned int>, kKindCount> counts;
std::atomic<const void*> failedCaller = nullptr;

/// More than zero while this thread is inside a caught call or in this program's own code: an allocation of
/// the standard library's operator new is not counted twice.
thread_local int depth = 0;

/// Every block by its address, in a table that never allocates.
class CBlockTable {
public:
    struct TBlock {
        void* address;
        std::size_t size;
        std::size_t number;
        const void* caller;
    };

    void Insert(const TBlock& block) {
        const CGuard guard(lock_);
        std::size_t index = IndexOf(block.address);
        if (!blocks_[index].address) ++count_;
        // Far from full, so that an empty place is always near.
        if (count_ > kSize / 2) __builtin_trap();
        blocks_[index] = block;
        blocks_[index].number = next_++;
    }

    void Remove(void* address) {
        const CGuard guard(lock_);
        std::size_t hole = IndexOf(address);
        if (!blocks_[hole].address) return;
        --count_;
        // What lies behind moves up, unless it would come before its own place.
        for (std::size_t next = (hole + 1) % kSize; blocks_[next].address; next = (next + 1) % kSize) {
            const std::size_t home = HomeOf(blocks_[next].address);
            if ((next + kSize - home) % kSize < (next + kSize - hole) % kSize) continue;
            blocks_[hole] = blocks_[next];
            hole = next;
        }
        blocks_[hole] = {};
    }

    std::size_t GetCount() {
        const CGuard guard(lock_);
        return count_;
    }
    std::size_t GetNext() {
        const CGuard guard(lock_);
        return next_;
    }
    template <class TAct> void ForEach(TAct act) {
        const CGuard guard(lock_);
        for (const TBlock& block : blocks_)
            if (block.address) act(block);
    }

private:
    static constexpr std::size_t kSize = std::size_t{1} << 16;

    class CGuard {
    public:
        explicit CGuard(std::atomic_flag& flag) : flag_(flag) {
            while (flag_.test_and_set(std::memory_order_acquire)) {
            }
        }
        ~CGuard() { flag_.clear(std::memory_order_release); }

    private:
        std::atomic_flag& flag_;
    };

    static std::size_t HomeOf(const void* address) {
        return (reinterpret_cast<std::uintptr_t>(address) >> 3) * 2654435761u % kSize;
    }
    std::size_t IndexOf(const void* address) const {
        std::size_t index = HomeOf(address);
        while (blocks_[index].address && blocks_[index].address != address) index = (index + 1) % kSize;
        return index;
    }

    std::atomic_flag lock_;
    std::size_t count_ = 0;
    std::size_t next_ = 0;
    std::array<TBlock, kSize> blocks_{};
};
CBlockTable blockTable;

void Start() {
    for (auto& count : counts) count = 0;
    hasFailed = false;
    failedCaller = nullptr;
    isCounting = true;
}

} // namespace

void InstallHooks() {
    const CPause pause;
    PatchModules();
}

std::vector<std::string> FindUnknownImports() {
    std::set<std::string> known;
    for (const THook& hook : GetHooks()) known.insert(hook.name);
    std::vector<std::string> unknown;
    for (const std::string& import : GetLibraryImports())
        if (known.count(import) == 0 && !CannotFail(import)) unknown.push_back(import);
    return unknown;
}

void StartCounting() {
    isArmed = false;
    Start();
}

void Arm(TFaultKind kind, unsigned int n, TSpan span) {
    armedKind = kind;
    armedCall = n;
    armedSpan = span;
    isArmed = true;
    Start();
}

void Disarm() {
    isCounting = false;
    isArmed = false;
}

bool IsArmed() {
    return isArmed;
}

TFaultKind GetArmedKind() {
    return armedKind;
}

bool HasFailed() {
    return hasFailed;
}

unsigned int GetCount(TFaultKind kind) {
    return counts[static_cast<std::size_t>(kind)];
}

std::string DescribeFault() {
    return DescribeAddress(failedCaller);
}

std::size_t CountBlocks() {
    return blockTable.GetCount();
}

std::size_t GetNextBlock() {
    return blockTable.GetNext();
}

std::vector<std::string> DescribeBlocksSince(std::size_t first) {
    std::vector<CBlockTable::TBlock> blocks;
    // Room for all of them before: growing would free memory, and so wait for the table.
    blocks.reserve(blockTable.GetCount() + 1000);
    blockTable.ForEach([&](const CBlockTable::TBlock& block) {
        if (block.number >= first && blocks.size() < blocks.capacity()) blocks.push_back(block);
    });
    std::sort(blocks.begin(), blocks.end(),
              [](const auto& left, const auto& right) { return left.number < right.number; });
    std::vector<std::string> lines;
    for (const auto& block : blocks)
        lines.push_back(std::to_string(block.size) + " bytes from " + DescribeAddress(block.caller));
    return lines;
}

CPause::CPause() {
    ++depth;
}
CPause::~CPause() {
    --depth;
}

bool MustFail(TFaultKind kind, const void* caller) {
    if (depth > 0 || !isCounting) return false;
    const unsigned int call = ++counts[static_cast<std::size_t>(kind)];
    if (!isArmed || kind != armedKind) return false;
    if (call != armedCall && (armedSpan == TSpan::Once || call < armedCall)) return false;
    const void* none = nullptr;
    failedCaller.compare_exchange_strong(none, caller);
    hasFailed = true;
    return true;
}

void NoteBlock(void* address, std::size_t size, const void* caller) {
    if (depth == 0 && address) blockTable.Insert({address, size, 0, caller});
}

void ForgetBlock(void* address) {
    if (address) blockTable.Remove(address);
}

} // namespace vorlund::faults
