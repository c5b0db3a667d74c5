// A list of objects that carry their own links, in the order in which they were appended.
#pragma once

#include <atomic>

namespace vorlund {

/// `TItem` has the members `TItem* previous` and `TItem* next`, which belong to the list while the object is
/// in it. The list owns nothing, and whoever has one guards it; only `IsEmpty` and `GetFirst` may be called
/// without that guard, and then tell what was true a moment ago. Constant-initialised, and its destruction
/// does nothing.
template <class TItem> class CIntrusiveList {
public:
    constexpr CIntrusiveList() = default;
    CIntrusiveList(const CIntrusiveList&) = delete;
    CIntrusiveList& operator=(const CIntrusiveList&) = delete;

    bool IsEmpty() const { return !GetFirst(); }
    bool HasOne() const { return GetFirst() && GetFirst() == last_; }
    /// The first object, from which `next` leads on, or null.
    TItem* GetFirst() const { return first_.load(std::memory_order_relaxed); }

    /// Adds an object that is in no list.
    void Append(TItem& item) {
        item.previous = last_;
        item.next = nullptr;
        if (last_)
            last_->next = &item;
        else
            first_.store(&item, std::memory_order_relaxed);
        last_ = &item;
    }

    /// Takes out an object of this list.
    void Remove(TItem& item) {
        if (item.previous)
            item.previous->next = item.next;
        else
            first_.store(item.next, std::memory_order_relaxed);
        (item.next ? item.next->previous : last_) = item.previous;
    }

private:
    std::atomic<TItem*> first_{nullptr};
    TItem* last_ = nullptr;
};

} // namespace vorlund
