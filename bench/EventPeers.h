// What an application would use instead of CEvent: a condition variable, the waits of C++20 atomics, the
// system's bare futex, and GLib. Each is a set of up to 64 manual-reset events; `kCount` of 1 is a single
// one.
#pragma once

#include <vorlund/Event.h>

#include <array>
#include <atomic>
#include <bit>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <utility>

#if defined(VORLUND_BENCH_FUTEX)
#include <climits>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif
#if defined(VORLUND_BENCH_GLIB)
#include <glib.h>
#endif

namespace vorlund::bench {

template <int kCount> struct TVorlundEvents {
    static constexpr const char* kName = "vorlund";
    void Set(int index) { events[static_cast<std::size_t>(index)].SetState(true); }
    void Reset(int index) { events[static_cast<std::size_t>(index)].SetState(false); }
    void Wait() { events[0].Wait(); }
    unsigned int WaitOne() {
        return [this]<std::size_t... kIndex>(std::index_sequence<kIndex...>) {
            return CEvent::WaitOne(kCount, &events[kIndex]...);
        }
        (std::make_index_sequence<kCount>());
    }
    void WaitAll() {
        [this]<std::size_t... kIndex>(std::index_sequence<kIndex...>) {
            CEvent::WaitAll(kCount, &events[kIndex]...);
        }
        (std::make_index_sequence<kCount>());
    }
    std::array<CEvent, kCount> events;
};

constexpr std::uint64_t Bit(int index) {
    return std::uint64_t{1} << index;
}
template <int kCount>
constexpr std::uint64_t kAllBits = kCount == 64 ? ~std::uint64_t{0} : Bit(kCount % 64) - 1;

/// Events that are objects of their own, as ours are, in a list; one mutex and one condition for all of them.
struct TFlag {
    bool isSet = false;
};

template <int kCount> class TFlags {
public:
    TFlags() {
        for (int index = 0; index < kCount; ++index) flags_[index] = new TFlag;
    }
    TFlags(const TFlags&) = delete;
    TFlags& operator=(const TFlags&) = delete;
    ~TFlags() {
        for (TFlag* const flag : flags_) delete flag;
    }

    TFlag& operator[](int index) { return *flags_[index]; }
    /// The position of the first that is in that state, or `kCount`.
    int Find(bool state) const {
        int index = 0;
        while (index < kCount && flags_[index]->isSet != state) ++index;
        return index;
    }

private:
    TFlag* flags_[kCount];
};

template <int kCount> struct TConditionEvents {
    static constexpr const char* kName = "condition";
    void Set(int index) {
        {
            const std::lock_guard guard(mutex);
            flags[index].isSet = true;
        }
        condition.notify_all();
    }
    void Reset(int index) {
        const std::lock_guard guard(mutex);
        flags[index].isSet = false;
    }
    void Wait() { WaitOne(); }
    unsigned int WaitOne() {
        std::unique_lock lock(mutex);
        int found = kCount;
        condition.wait(lock, [&] { return (found = flags.Find(true)) < kCount; });
        return static_cast<unsigned int>(found);
    }
    void WaitAll() {
        std::unique_lock lock(mutex);
        condition.wait(lock, [&] { return flags.Find(false) == kCount; });
    }
    std::mutex mutex;
    std::condition_variable condition;
    TFlags<kCount> flags;
};

template <int kCount> struct TAtomicEvents {
    static constexpr const char* kName = "atomic";
    void Set(int index) {
        bits.fetch_or(Bit(index));
        bits.notify_all();
    }
    void Reset(int index) { bits.fetch_and(~Bit(index)); }
    void Wait() { WaitOne(); }
    unsigned int WaitOne() {
        return static_cast<unsigned int>(std::countr_zero(WaitFor([](auto seen) { return seen != 0; })));
    }
    void WaitAll() {
        WaitFor([](auto seen) { return seen == kAllBits<kCount>; });
    }
    template <class TCondition> std::uint64_t WaitFor(TCondition isMet) {
        for (;;) {
            const std::uint64_t seen = bits.load();
            if (isMet(seen)) return seen;
            bits.wait(seen);
        }
    }
    std::atomic<std::uint64_t> bits{0};
};

#if defined(VORLUND_BENCH_FUTEX)
/// Beside the bits, a word that changes with them, on which threads sleep; sleepers are counted, so that
/// setting an event makes no call when there are none.
template <int kCount> struct TFutexEvents {
    static constexpr const char* kName = "futex";
    void Set(int index) {
        bits.fetch_or(Bit(index));
        if (sleepers.load() == 0) return;
        changes.fetch_add(1);
        syscall(SYS_futex, &changes, FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
    }
    void Reset(int index) { bits.fetch_and(~Bit(index)); }
    void Wait() { WaitOne(); }
    unsigned int WaitOne() {
        return static_cast<unsigned int>(std::countr_zero(WaitFor([](auto seen) { return seen != 0; })));
    }
    void WaitAll() {
        WaitFor([](auto seen) { return seen == kAllBits<kCount>; });
    }
    template <class TCondition> std::uint64_t WaitFor(TCondition isMet) {
        if (const std::uint64_t seen = bits.load(); isMet(seen)) return seen;
        sleepers.fetch_add(1);
        std::uint64_t seen = 0;
        for (;;) {
            const std::uint32_t change = changes.load();
            seen = bits.load();
            if (isMet(seen)) break;
            syscall(SYS_futex, &changes, FUTEX_WAIT_PRIVATE, change, nullptr, nullptr, 0);
        }
        sleepers.fetch_sub(1);
        return seen;
    }
    std::atomic<std::uint64_t> bits{0};
    std::atomic<std::uint32_t> changes{0};
    std::atomic<std::uint32_t> sleepers{0};
};
#endif

#if defined(VORLUND_BENCH_GLIB)
template <int kCount> struct TGLibEvents {
    static constexpr const char* kName = "glib";
    TGLibEvents() {
        g_mutex_init(&mutex);
        g_cond_init(&condition);
    }
    ~TGLibEvents() {
        g_cond_clear(&condition);
        g_mutex_clear(&mutex);
    }
    void Set(int index) {
        g_mutex_lock(&mutex);
        flags[index].isSet = true;
        g_cond_broadcast(&condition);
        g_mutex_unlock(&mutex);
    }
    void Reset(int index) {
        g_mutex_lock(&mutex);
        flags[index].isSet = false;
        g_mutex_unlock(&mutex);
    }
    void Wait() { WaitOne(); }
    unsigned int WaitOne() {
        g_mutex_lock(&mutex);
        int found = kCount;
        while ((found = flags.Find(true)) == kCount) g_cond_wait(&condition, &mutex);
        g_mutex_unlock(&mutex);
        return static_cast<unsigned int>(found);
    }
    void WaitAll() {
        g_mutex_lock(&mutex);
        while (flags.Find(false) < kCount) g_cond_wait(&condition, &mutex);
        g_mutex_unlock(&mutex);
    }
    GMutex mutex;
    GCond condition;
    TFlags<kCount> flags;
};
#endif

} // namespace vorlund::bench
