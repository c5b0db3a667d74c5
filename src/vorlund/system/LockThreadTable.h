// Which threads hold a read/write lock, and how often: the entries of TReadWriteLockData.
#pragma once

#include <vorlund/ReadWriteLock.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace vorlund {

/// Lets a moment pass, in which other threads may give back memory. Locks have no way to fail, so they ask
/// again.
void WaitForMemory();

/// What one thread holds of one lock. Only that thread looks at it.
///
/// The modes are a stack, kept as runs of equal modes: recursion as deep as the machine allows usually needs
/// one or two runs. Parameters are pushed too, but never popped, so the newest is the only one that can be
/// seen. Every lock contains one, so it is kept small.
class CLockThreadEntry {
public:
    CLockThreadEntry() = default;
    CLockThreadEntry(const CLockThreadEntry&) = delete;
    CLockThreadEntry& operator=(const CLockThreadEntry&) = delete;
    ~CLockThreadEntry();

    int writes = 0;         ///< write locks held
    unsigned int param = 0; ///< the parameter recorded last, 0 when none was

    /// Whether nothing is held.
    bool IsEmpty() const { return top_ < 0; }

    /// The innermost lock's mode. Not for an empty stack.
    TLockMode GetTop() const { return runs_[top_].mode; }

    /// `Push` for an empty entry, which needs no memory; a write lock counts.
    void PushFirst(TLockMode mode) {
        runs_[top_ = 0] = {mode, 1};
        writes = mode != LOCK_MODE_READ;
    }

    /// Whether one lock is held and no memory.
    bool HoldsJustOne() const { return top_ == 0 && runs_ == inlineRuns_ && inlineRuns_[0].length == 1; }

    /// `Clear` for an entry that holds just one.
    void PopLast() {
        writes = 0;
        param = 0;
        top_ = -1;
    }

    /// Makes `mode` the innermost. Waits when more memory is needed and there is none: a lock call has no way
    /// to fail, and another thread may give some back.
    void Push(TLockMode mode) {
        if (top_ >= 0 && runs_[top_].mode == mode) {
            ++runs_[top_].length;
            return;
        }
        if (top_ + 1 == capacity_) Grow();
        runs_[++top_] = {mode, 1};
    }

    /// Takes the innermost off and returns it.
    TLockMode Pop() {
        TRun& run = runs_[top_];
        if (--run.length == 0) --top_;
        return run.mode;
    }

    /// As new, for the next thread.
    void Clear() {
        PopLast();
        if (runs_ != inlineRuns_) GiveBackRuns();
    }

private:
    struct TRun {
        TLockMode mode;
        unsigned int length;
    };
    static constexpr int kInlineRuns = 2;

    void GiveBackRuns();

    void Grow();

    int top_ = -1;
    int capacity_ = kInlineRuns;
    TRun* runs_ = inlineRuns_;
    TRun inlineRuns_[kInlineRuns];
};

/// The entries by thread number.
///
/// Blocks of slots, each twice as large as the one before, are chained and stay as long as the table. A
/// thread takes a free slot with one atomic operation, at one of a few places that its number determines in
/// each block, and gives it back with a store; so looking for one's own entry needs neither a lock nor a long
/// search. Only a thread itself ever writes its number into a slot or takes it out, so what others do
/// at the same time cannot mislead the search.
class CLockThreadTable {
public:
    CLockThreadTable() : first_(kFirstSlotBits, firstOwners_, firstEntries_) {}
    CLockThreadTable(const CLockThreadTable&) = delete;
    CLockThreadTable& operator=(const CLockThreadTable&) = delete;
    ~CLockThreadTable();

    /// The entry of `thread`, which is the calling one, or null.
    CLockThreadEntry* Find(unsigned int thread) {
        for (TBlock* block = &first_; block; block = block->next.load(std::memory_order_acquire)) {
            for (std::uint32_t probe = 0; probe < kProbes; ++probe) {
                const std::uint32_t slot = block->SlotOf(thread, probe);
                if (block->owners[slot].load(std::memory_order_relaxed) == thread)
                    return &block->entries[slot];
            }
        }
        return nullptr;
    }

    /// Makes an empty entry for `thread`, which is the calling one and has none. Waits for memory like
    /// `Push`.
    CLockThreadEntry& Insert(unsigned int thread);

    /// Takes out the calling thread's entry. Release: what it wrote there is over when another thread gets
    /// the slot.
    void Remove(CLockThreadEntry& entry) {
        entry.Clear();
        static_cast<TListedEntry&>(entry).owner->store(kNobody, std::memory_order_release);
    }

private:
    struct TListedEntry : CLockThreadEntry {
        std::atomic<unsigned int>* owner = nullptr; ///< the slot with the number of this entry's thread
    };

    static constexpr unsigned int kNobody = 0;
    static constexpr std::uint32_t kFirstSlotBits = 3;
    static constexpr std::uint32_t kFirstSlots = 1u << kFirstSlotBits;
    static constexpr std::uint32_t kProbes = 4;

    struct TBlock {
        TBlock(std::uint32_t bits, std::atomic<unsigned int>* ownerArray, TListedEntry* entryArray)
            : slotBits(bits), owners(ownerArray), entries(entryArray) {
            for (std::uint32_t slot = 0; slot < GetSlotCount(); ++slot) entries[slot].owner = &owners[slot];
        }

        std::uint32_t GetSlotCount() const { return 1u << slotBits; }
        /// Fibonacci hashing: it spreads numbers that follow each other as well as numbers four apart.
        std::uint32_t SlotOf(unsigned int thread, std::uint32_t probe) const {
            return (((thread * 0x9E3779B9u) >> (32 - slotBits)) + probe) & (GetSlotCount() - 1);
        }

        const std::uint32_t slotBits;
        std::atomic<unsigned int>* const owners;
        TListedEntry* const entries;
        std::atomic<TBlock*> next{nullptr};
    };

    static TBlock* MakeBlock(std::uint32_t slotBits);
    static void DestroyBlock(TBlock* block);

    std::atomic<unsigned int> firstOwners_[kFirstSlots]{};
    TListedEntry firstEntries_[kFirstSlots];
    TBlock first_; // after the arrays, which it links
};

} // namespace vorlund
