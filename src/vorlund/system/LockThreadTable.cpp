#include "vorlund/system/LockThreadTable.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <new>
#include <thread>

namespace vorlund {

void WaitForMemory() {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

CLockThreadEntry::~CLockThreadEntry() {
    if (runs_ != inlineRuns_) ::operator delete(runs_);
}

void CLockThreadEntry::GiveBackRuns() {
    ::operator delete(runs_);
    runs_ = inlineRuns_;
    capacity_ = kInlineRuns;
}

void CLockThreadEntry::Grow() {
    const int capacity = capacity_ * 2;
    void* memory = nullptr;
    while (!(memory = ::operator new(static_cast<std::size_t>(capacity) * sizeof(TRun), std::nothrow)))
        WaitForMemory();
    TRun* const runs = static_cast<TRun*>(memory);
    std::copy_n(runs_, top_ + 1, runs);
    if (runs_ != inlineRuns_) ::operator delete(runs_);
    runs_ = runs;
    capacity_ = capacity;
}

CLockThreadTable::~CLockThreadTable() {
    TBlock* block = first_.next.load(std::memory_order_acquire);
    while (block) {
        TBlock* const next = block->next.load(std::memory_order_acquire);
        DestroyBlock(block);
        block = next;
    }
}

CLockThreadEntry& CLockThreadTable::Insert(unsigned int thread) {
    TBlock* block = &first_;
    for (;;) {
        for (std::uint32_t probe = 0; probe < kProbes; ++probe) {
            const std::uint32_t slot = block->SlotOf(thread, probe);
            unsigned int nobody = kNobody;
            // Acquire: the former owner has cleared the entry before it gave the slot back.
            if (block->owners[slot].load(std::memory_order_relaxed) == nobody &&
                block->owners[slot].compare_exchange_strong(nobody, thread, std::memory_order_acquire,
                                                            std::memory_order_relaxed))
                return block->entries[slot];
        }
        TBlock* next = block->next.load(std::memory_order_acquire);
        if (!next) {
            TBlock* const added = MakeBlock(block->slotBits + 1);
            if (!added) {
                // Other threads may give back slots in the meantime.
                WaitForMemory();
                block = &first_;
                continue;
            }
            if (block->next.compare_exchange_strong(next, added, std::memory_order_acq_rel,
                                                    std::memory_order_acquire))
                next = added;
            else
                DestroyBlock(added);
        }
        block = next;
    }
}

CLockThreadTable::TBlock* CLockThreadTable::MakeBlock(std::uint32_t slotBits) {
    const std::size_t count = std::size_t{1} << slotBits;
    const std::size_t entriesSize = count * sizeof(TListedEntry);
    const std::size_t size = sizeof(TBlock) + entriesSize + count * sizeof(std::atomic<unsigned int>);
    auto* const memory = static_cast<unsigned char*>(::operator new(size, std::nothrow));
    if (!memory) return nullptr;

    // In the order of falling alignment.
    static_assert(alignof(TBlock) >= alignof(TListedEntry) && sizeof(TBlock) % alignof(TListedEntry) == 0);
    void* const entriesMemory = memory + sizeof(TBlock);
    void* const ownersMemory = memory + sizeof(TBlock) + entriesSize;
    auto* const entries = static_cast<TListedEntry*>(entriesMemory);
    auto* const owners = static_cast<std::atomic<unsigned int>*>(ownersMemory);
    std::uninitialized_default_construct_n(entries, count);
    std::uninitialized_value_construct_n(owners, count);
    return new (memory) TBlock(slotBits, owners, entries);
}

void CLockThreadTable::DestroyBlock(TBlock* block) {
    std::destroy_n(block->entries, block->GetSlotCount());
    block->~TBlock();
    ::operator delete(block);
}

} // namespace vorlund
