#include "Handles.h"

#include "Guard.h"

#include <atomic>
#include <deque>

namespace vorlund::capi {

namespace {

// A handle is 32 bits on every system: the place and 1 in the lower 20, its use in the upper 12.
constexpr unsigned int kPlaceBits = 20;
constexpr std::uint32_t kPlaceMask = (1U << kPlaceBits) - 1;
constexpr std::uint32_t kLastUse = (1U << (32 - kPlaceBits)) - 1;

struct TPlace {
    std::shared_ptr<CHandleObject> object;
    std::uint32_t use = 1;
};

struct TTable {
    std::mutex mutex;
    std::vector<TPlace> places;
    /// The place that was left first is taken first, so that a freed handle is known as such for long.
    std::deque<std::uint32_t> free;
    std::uint32_t count = 0;

    TPlace* At(const void* handle) {
        const auto value = reinterpret_cast<std::uintptr_t>(handle);
        const auto place = static_cast<std::uint32_t>(value & kPlaceMask);
        if (place == 0 || place > places.size() || value > 0xFFFFFFFFU) return nullptr;
        TPlace& found = places[place - 1];
        if (!found.object || found.use != static_cast<std::uint32_t>(value >> kPlaceBits)) return nullptr;
        return &found;
    }
};

/// Never destroyed: other static objects may still free handles.
TTable& Table() {
    static TTable& table = *new TTable;
    return table;
}

[[noreturn]] void RaiseBadHandle(const void* handle) {
    throw CFailure(VORLUND_ERROR_HANDLE, handle ? "The handle was freed, or is none" : "The handle is null");
}

} // namespace

bool CChain::Begin() noexcept {
    const std::lock_guard lock(mutex_);
    return !std::exchange(isBusy_, true);
}

void CChain::End() noexcept {
    while (true) {
        std::shared_ptr<CHandleObject> dropped;
        {
            const std::lock_guard lock(mutex_);
            dropped = std::move(dropped_);
            if (!dropped) {
                isBusy_ = false;
                return;
            }
            dropped_ = std::move(dropped->nextDropped_);
            dropped->isDropped_ = false;
        }
    }
}

void CChain::Drop(std::shared_ptr<CHandleObject> object) noexcept {
    {
        const std::lock_guard lock(mutex_);
        if (isBusy_) {
            // One that waits already is held by the list.
            if (object->isDropped_) return object.reset();
            object->isDropped_ = true;
            object->nextDropped_ = std::move(dropped_);
            dropped_ = std::move(object);
            return;
        }
        isBusy_ = true;
    }
    object.reset();
    End();
}

void* NewHandle(std::shared_ptr<CHandleObject> object) {
    TTable& table = Table();
    const std::lock_guard lock(table.mutex);
    if (table.free.empty()) {
        if (table.places.size() >= kPlaceMask) throw std::bad_alloc();
        // Room for the way back first: freeing must not fail.
        table.places.emplace_back();
        table.free.push_back(static_cast<std::uint32_t>(table.places.size()));
    }
    const std::uint32_t place = table.free.front();
    table.free.pop_front();
    TPlace& taken = table.places[place - 1];
    taken.object = std::move(object);
    ++table.count;
    return reinterpret_cast<void*>(static_cast<std::uintptr_t>(taken.use << kPlaceBits | place));
}

std::shared_ptr<CHandleObject> FindHandle(const void* handle, TKind kind) {
    TTable& table = Table();
    const std::lock_guard lock(table.mutex);
    const TPlace* const place = table.At(handle);
    if (!place) RaiseBadHandle(handle);
    if (place->object->GetKind() != kind)
        throw CFailure(VORLUND_ERROR_HANDLE, "The handle is of another kind");
    return place->object;
}

std::shared_ptr<CHandleObject> TakeHandle(const void* handle) {
    TTable& table = Table();
    const std::lock_guard lock(table.mutex);
    TPlace* const place = table.At(handle);
    if (!place) RaiseBadHandle(handle);
    table.free.push_back(static_cast<std::uint32_t>(place - table.places.data() + 1));
    place->use = place->use == kLastUse ? 1 : place->use + 1;
    --table.count;
    return std::move(place->object);
}

void ForgetHandle(const void* handle) noexcept {
    try {
        Drop(TakeHandle(handle));
    } catch (...) {
        // Freed before.
    }
}

void FreeAllHandles() noexcept {
    DropPostponed();
    TTable& table = Table();
    std::vector<std::shared_ptr<CHandleObject>> objects;
    std::size_t next = 0;
    {
        const std::lock_guard lock(table.mutex);
        next = table.places.size();
    }
    // One by one, because what is destroyed calls callbacks, which may free others.
    while (next > 0) {
        std::shared_ptr<CHandleObject> object;
        {
            const std::lock_guard lock(table.mutex);
            TPlace& place = table.places[--next];
            if (!place.object) continue;
            object = std::move(place.object);
            place.use = place.use == kLastUse ? 1 : place.use + 1;
            --table.count;
        }
        try {
            const std::lock_guard lock(table.mutex);
            table.free.push_back(static_cast<std::uint32_t>(next + 1));
        } catch (const std::bad_alloc&) {
            // The place is not used again.
        }
        Drop(std::move(object));
    }
}

std::uint32_t CountHandles() {
    TTable& table = Table();
    const std::lock_guard lock(table.mutex);
    return table.count;
}

/// What must be destroyed by another thread.
class CPostponed {
public:
    static void Add(std::shared_ptr<CHandleObject> object) {
        const std::lock_guard lock(mutex_);
        // One that waits already is held by the list.
        if (object->isDropped_) return object.reset();
        object->isDropped_ = true;
        object->nextDropped_ = std::move(first_);
        first_ = std::move(object);
        isThere_ = true;
    }
    static void Drop() {
        while (isThere_) {
            // Destroyed behind the lock.
            std::shared_ptr<CHandleObject> object;
            const std::lock_guard lock(mutex_);
            object.swap(first_);
            if (object) {
                first_ = std::move(object->nextDropped_);
                object->isDropped_ = false;
            }
            isThere_ = first_ != nullptr;
        }
    }

private:
    inline static std::mutex mutex_;
    inline static std::atomic<bool> isThere_ = false;
    inline static std::shared_ptr<CHandleObject> first_;
};

void Drop(std::shared_ptr<CHandleObject> object) noexcept {
    if (!object) return;
    if (const std::shared_ptr<CChain> chain = object->GetChain()) return chain->Drop(std::move(object));
    if (ThreadState().callsOnOwnThread > 0) CPostponed::Add(std::move(object));
}

void DropPostponed() noexcept {
    CPostponed::Drop();
}

void RaiseBusy() {
    throw CFailure(VORLUND_ERROR_BUSY, "The object is inside another operation");
}

} // namespace vorlund::capi
