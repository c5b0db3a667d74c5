// The two locks beside what an application would use instead: the standard library's, Qt's and GLib's
// recursive locks, and both kinds of Qt's read/write lock. One benchmark per use and lock.
// A time is that of one pair of lock and unlock. With two threads it is the wall time in which one of them
// makes a pair while the other does the same.
#include "BenchSupport.h"

#include <vorlund/BinaryLock.h>
#include <vorlund/ReadWriteLock.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <mutex>

#if defined(VORLUND_BENCH_QT)
#include <QMutex>
#include <QReadWriteLock>
#endif
#if defined(VORLUND_BENCH_GLIB)
#include <glib.h>
#endif

namespace {

// ---- recursive locks

struct TVorlund {
    static constexpr const char* kName = "vorlund";
    void Lock() { lock.Lock(); }
    void Unlock() { lock.Unlock(); }
    vorlund::CBinaryLock lock;
};

struct TStandard {
    static constexpr const char* kName = "std";
    void Lock() { lock.lock(); }
    void Unlock() { lock.unlock(); }
    std::recursive_mutex lock;
};

#if defined(VORLUND_BENCH_QT)
struct TQt {
    static constexpr const char* kName = "qt";
    void Lock() { lock.lock(); }
    void Unlock() { lock.unlock(); }
    QRecursiveMutex lock;
};
#endif

#if defined(VORLUND_BENCH_GLIB)
struct TGLib {
    static constexpr const char* kName = "glib";
    TGLib() { g_rec_mutex_init(&lock); }
    ~TGLib() { g_rec_mutex_clear(&lock); }
    void Lock() { g_rec_mutex_lock(&lock); }
    void Unlock() { g_rec_mutex_unlock(&lock); }
    GRecMutex lock;
};
#endif

/// What any lock costs at least: one atomic operation to take it, and a store to give it back.
struct TExchange {
    static constexpr const char* kName = "limit one atomic exchange";
    void Lock() {
        while (isTaken.exchange(true, std::memory_order_acquire)) {
        }
    }
    void Unlock() { isTaken.store(false, std::memory_order_release); }
    std::atomic<bool> isTaken{false};
};

/// The same for readers that are counted: an atomic operation each way.
struct TCount {
    static constexpr const char* kName = "limit two atomic additions";
    void LockRead() { readers.fetch_add(1, std::memory_order_acquire); }
    void Unlock() { readers.fetch_sub(1, std::memory_order_release); }
    std::atomic<int> readers{0};
};

// ---- read/write locks

struct TVorlundReadWrite {
    static constexpr const char* kName = "vorlund";
    void LockRead() { lock.Lock(vorlund::LOCK_MODE_READ, 0); }
    void LockWrite() { lock.Lock(vorlund::LOCK_MODE_WRITE, 0); }
    void Unlock() { lock.Unlock(); }
    vorlund::CReadWriteLock lock;
};

#if defined(VORLUND_BENCH_QT)
struct TQtReadWrite {
    static constexpr const char* kName = "qt";
    void LockRead() { lock.lockForRead(); }
    void LockWrite() { lock.lockForWrite(); }
    void Unlock() { lock.unlock(); }
    QReadWriteLock lock{QReadWriteLock::Recursive};
};

/// The kind that does not nest, and that the rows without nesting may use.
struct TQtPlainReadWrite {
    static constexpr const char* kName = "qt not recursive";
    void LockRead() { lock.lockForRead(); }
    void LockWrite() { lock.lockForWrite(); }
    void Unlock() { lock.unlock(); }
    QReadWriteLock lock{QReadWriteLock::NonRecursive};
};
#endif

// ---- uses

// What the locks guard. Its own lines, so that only the locks differ.
struct alignas(128) TGuarded {
    long value = 0;
    // Always equal under the lock.
    long left = 0;
    long right = 0;
};

template <class TLock> TLock& Shared() {
    alignas(128) static TLock lock;
    return lock;
}

template <class TLock> TGuarded& Guarded() {
    static TGuarded guarded;
    return guarded;
}

template <class TLock> void Plain(benchmark::State& state) {
    TLock& lock = Shared<TLock>();
    TGuarded& guarded = Guarded<TLock>();
    for (auto _ : state) {
        lock.Lock();
        benchmark::DoNotOptimize(++guarded.value);
        lock.Unlock();
    }
}

template <class TLock> void Nested(benchmark::State& state) {
    TLock& lock = Shared<TLock>();
    TGuarded& guarded = Guarded<TLock>();
    lock.Lock();
    for (auto _ : state) {
        lock.Lock();
        benchmark::DoNotOptimize(++guarded.value);
        lock.Unlock();
    }
    lock.Unlock();
}

template <class TLock> void Read(benchmark::State& state) {
    TLock& lock = Shared<TLock>();
    TGuarded& guarded = Guarded<TLock>();
    for (auto _ : state) {
        lock.LockRead();
        benchmark::DoNotOptimize(guarded.value);
        lock.Unlock();
    }
}

template <class TLock> void Write(benchmark::State& state) {
    TLock& lock = Shared<TLock>();
    TGuarded& guarded = Guarded<TLock>();
    for (auto _ : state) {
        lock.LockWrite();
        benchmark::DoNotOptimize(++guarded.value);
        lock.Unlock();
    }
}

template <class TLock> void NestedRead(benchmark::State& state) {
    TLock& lock = Shared<TLock>();
    TGuarded& guarded = Guarded<TLock>();
    lock.LockRead();
    for (auto _ : state) {
        lock.LockRead();
        benchmark::DoNotOptimize(guarded.value);
        lock.Unlock();
    }
    lock.Unlock();
}

template <class TLock> void NestedWrite(benchmark::State& state) {
    TLock& lock = Shared<TLock>();
    TGuarded& guarded = Guarded<TLock>();
    lock.LockWrite();
    for (auto _ : state) {
        lock.LockWrite();
        benchmark::DoNotOptimize(++guarded.value);
        lock.Unlock();
    }
    lock.Unlock();
}

// Nine reads to one write.
template <class TLock> void Mixed(benchmark::State& state) {
    TLock& lock = Shared<TLock>();
    TGuarded& guarded = Guarded<TLock>();
    unsigned int turn = static_cast<unsigned int>(state.thread_index()) * 5;
    for (auto _ : state) {
        if (++turn % 10 == 0) {
            lock.LockWrite();
            ++guarded.left;
            ++guarded.right;
            lock.Unlock();
        } else {
            lock.LockRead();
            if (guarded.left != guarded.right) state.SkipWithError("a reader saw half a write");
            lock.Unlock();
        }
    }
}

template <class TLock> std::string NameOf(const char* use) {
    return std::string(use) + "/" + TLock::kName;
}

template <class TLock> void RegisterLock() {
    benchmark::RegisterBenchmark(NameOf<TLock>("lock/plain").c_str(), Plain<TLock>);
    benchmark::RegisterBenchmark(NameOf<TLock>("lock/nested").c_str(), Nested<TLock>);
    benchmark::RegisterBenchmark(NameOf<TLock>("lock/two_threads").c_str(), Plain<TLock>)
        ->Threads(2)
        ->UseRealTime();
}

template <class TLock, bool kNests = true> void RegisterReadWriteLock() {
    benchmark::RegisterBenchmark(NameOf<TLock>("rw/read").c_str(), Read<TLock>);
    benchmark::RegisterBenchmark(NameOf<TLock>("rw/write").c_str(), Write<TLock>);
    if constexpr (kNests) {
        benchmark::RegisterBenchmark(NameOf<TLock>("rw/nested_read").c_str(), NestedRead<TLock>);
        benchmark::RegisterBenchmark(NameOf<TLock>("rw/nested_write").c_str(), NestedWrite<TLock>);
    }
    benchmark::RegisterBenchmark(NameOf<TLock>("rw/two_readers").c_str(), Read<TLock>)
        ->Threads(2)
        ->UseRealTime();
    benchmark::RegisterBenchmark(NameOf<TLock>("rw/mixed_90_10").c_str(), Mixed<TLock>);
    benchmark::RegisterBenchmark(NameOf<TLock>("rw/mixed_90_10_two_threads").c_str(), Mixed<TLock>)
        ->Threads(2)
        ->UseRealTime();
}

} // namespace

int main(int argc, char** argv) {
    RegisterLock<TVorlund>();
    benchmark::RegisterBenchmark(NameOf<TExchange>("lock/plain").c_str(), Plain<TExchange>);
    benchmark::RegisterBenchmark(NameOf<TCount>("rw/read").c_str(), Read<TCount>);
    RegisterLock<TStandard>();
    RegisterReadWriteLock<TVorlundReadWrite>();
#if defined(VORLUND_BENCH_QT)
    RegisterLock<TQt>();
    RegisterReadWriteLock<TQtReadWrite>();
    RegisterReadWriteLock<TQtPlainReadWrite, false>();
#else
    benchmark::AddCustomContext("qt", "not there when this was built, left out");
#endif
#if defined(VORLUND_BENCH_GLIB)
    RegisterLock<TGLib>();
#else
    benchmark::AddCustomContext("glib", "not there when this was built, left out");
#endif
    return vorlund::bench::RunRows(argc, argv);
}
