// Events, asynchronous waits, timers and locks together, and what many of them leave behind.
#include <vorlund/BinaryLock.h>
#include <vorlund/Exception.h>
#include <vorlund/ReadWriteLock.h>
#include <vorlund/Timer.h>

#include "support/Latch.h"
#include "system/ProcessResources.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

using TData = CEvent::TAsyncCbData;

/// How many threads that are about to end the library lets there be.
constexpr int kMaxThreadsEnding = 32;

/// How many rounds of a test there are: all of them, or a part where threads are slow.
int RoundsOf(int all) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return all / 20;
#else
    return AreThreadsCheap() ? all : all / 20;
#endif
}

TEST(EventThreads, StartsAndStopsLeaveNothingBehind) {
    const int starts = RoundsOf(100000);
    CEvent never;
    CEvent always;
    always.SetState(true);
    const auto nothing = [](TData&) {};
    // What the first thread brings with it once.
    CEvent::StopAsync(never.WaitAsync(nothing, nullptr));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const int handles = CountHandles();
    const int threads = CountThreads();
    int most = 0;
    for (int start = 0; start < starts; ++start) {
        if (start % 500 == 0) most = std::max(most, CountThreads());
        switch (start % 4) {
        case 0:
            CEvent::StopAsync(never.WaitAsync(nothing, nullptr));
            break;
        case 1:
            CEvent::StopAsync(CEvent::WaitOneAsync(nothing, nullptr, 2, &never, &always));
            break;
        case 2:
            CEvent::StopAsync(CEvent::WaitAllAsync(nothing, nullptr, 2, &never, &always));
            break;
        default:
            CEvent event;
            CEvent::WaitOneAsync(nothing, nullptr, 2, &never, &event);
            break;
        }
    }
    // One wait at a time, and what has not ended yet.
    EXPECT_LE(most, threads + 1 + kMaxThreadsEnding + 3);
    EXPECT_TRUE(ThreadsComeDownTo(threads)) << CountThreads() << " threads, " << threads << " before";
    // Another part of the process may hold a few more meanwhile, but not one for each start.
    EXPECT_LT(CountHandles(), handles + 50);
}

/// Callbacks that stay until they may leave.
struct TStay {
    explicit TStay(int calls) : areInside(calls) {}
    CLatch areInside;
    CLatch mayLeave{1};
};

TEST(EventThreads, StoppingDoesNotWaitForStoppedWaitsInsideCallbacks) {
    constexpr int kInside = 2 * kMaxThreadsEnding;
    const int threads = CountThreads();
    TStay stay(kInside);
    CEvent always;
    always.SetState(true);
    for (int wait = 0; wait < kInside; ++wait) {
        always.WaitAsync(
            [](TData& data) {
                TStay& mine = *static_cast<TStay*>(data.userData);
                CEvent::StopAsync(data.handle);
                mine.areInside.CountDown();
                mine.mayLeave.Wait();
            },
            &stay);
    }
    stay.areInside.Wait();
    CEvent never;
    const auto nothing = [](TData&) {};
    const auto start = std::chrono::steady_clock::now();
    for (int stop = 0; stop < 500; ++stop) {
        CEvent::StopAsync(never.WaitAsync(nothing, nullptr));
        CEvent event;
        event.WaitAsync(nothing, nullptr);
    }
    // A millisecond each would be a wait already.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_LE(CountThreads(), threads + kInside + 1 + kMaxThreadsEnding + 3);
    stay.mayLeave.CountDown();
    EXPECT_TRUE(ThreadsComeDownTo(threads)) << CountThreads() << " threads, " << threads << " before";
}

TEST(EventThreads, AThreadThatLeavesServesTheNextWait) {
    // More waits than may end at once are stopped together, and as many are started: each is served.
    constexpr int kWaits = 4 * kMaxThreadsEnding;
    const int threads = CountThreads();
    CEvent never;
    std::vector<unsigned int> numbers;
    for (int round = 0; round < 20; ++round) {
        for (int wait = 0; wait < kWaits; ++wait) numbers.push_back(never.WaitAsync([](TData&) {}, nullptr));
        for (const unsigned int number : numbers) CEvent::StopAsync(number);
        numbers.clear();
        CLatch called(kWaits);
        CEvent now;
        now.SetState(true);
        for (int wait = 0; wait < kWaits; ++wait) {
            now.WaitAsync(
                [](TData& data) {
                    CEvent::StopAsync(data.handle);
                    static_cast<CLatch*>(data.userData)->CountDown();
                },
                &called);
        }
        called.Wait();
    }
    EXPECT_TRUE(ThreadsComeDownTo(threads)) << CountThreads() << " threads, " << threads << " before";
}

TEST(EventThreads, StoppedWaitsForClosedEventsEnd) {
    const auto nothing = [](TData&) {};
    const int threads = CountThreads();
    for (int round = 0; round < 50; ++round) {
        CEvent a;
        auto b = std::make_unique<CEvent>();
        a.WaitAsync(nothing, nullptr);
        CEvent::WaitAllAsync(nothing, nullptr, 2, &a, b.get());
        CEvent::StopAsync(CEvent::WaitOneAsync(nothing, nullptr, 1, b.get()));
        CEvent::StopAsync(CEvent::WaitOneAsync(nothing, nullptr, 0));
        b.reset();
    }
    EXPECT_TRUE(ThreadsComeDownTo(threads)) << CountThreads() << " threads, " << threads << " before";
}

/// What all threads of the mix share.
struct TMix {
    static constexpr int kEvents = 6;

    std::array<CEvent, kEvents> events;
    CTimer timer{0.001f};
    CReadWriteLock lock;
    CBinaryLock binary;
    long left = 0; ///< plain, guarded by the read/write lock, like `right`
    long right = 0;
    std::atomic<bool> isEnding{false};
    std::atomic<int> wrong{0};
    std::atomic<long> calls{0};

    CEvent& Any(std::minstd_rand& random) { return events[random() % kEvents]; }
};

void OnMixCall(TData& data) {
    TMix& mix = *static_cast<TMix*>(data.userData);
    ++mix.calls;
    if (!data.event) ++mix.wrong;
    data.event->SetState(false);
}

/// For events that may be gone when it runs.
void OnOwnCall(TData& data) {
    TMix& mix = *static_cast<TMix*>(data.userData);
    ++mix.calls;
    CEvent::StopAsync(data.handle);
}

/// A wait with a limit, which may come.
template <class TWait> void Try(TWait wait) {
    try {
        wait();
    } catch (const CTimeoutException&) {
    }
}

void DoOneThing(TMix& mix, std::minstd_rand& random) {
    CEvent& a = mix.Any(random);
    CEvent& b = mix.Any(random);
    switch (random() % 16) {
    case 0:
    case 1:
    case 2:
        a.SetState(true);
        break;
    case 3:
        a.SetState(false);
        break;
    case 4:
        Try([&] { a.Wait(0.001f); });
        break;
    case 5:
        Try([&] {
            if (CEvent::WaitOne(0.001f, 3, &a, &b, &mix.timer) > 2) ++mix.wrong;
        });
        break;
    case 6:
        if (&a != &b) Try([&] { CEvent::WaitAll(0.001f, 2, &a, &b); });
        break;
    case 7: {
        CEvent copy(a);
        CEvent own;
        own = b;
        copy.SetState(true);
        Try([&] { CEvent::WaitOne(0.0f, 2, &own, &copy); });
        break;
    }
    case 8: {
        CEvent own;
        CEvent copy(own);
        own.WaitAsync(&OnOwnCall, &mix);
        CEvent::WaitAllAsync(&OnOwnCall, &mix, 2, &own, &copy);
        copy.SetState(true);
        std::this_thread::yield();
        break;
    }
    case 9: {
        const unsigned int number = CEvent::WaitOneAsync(&OnMixCall, &mix, 2, &mix.timer, &a);
        std::this_thread::yield();
        CEvent::StopAsync(number);
        break;
    }
    case 10:
        mix.timer.Start();
        break;
    case 11:
        mix.timer.Stop();
        break;
    case 12: {
        CTimer own(0.001f);
        own.Start();
        Try([&] { CEvent::WaitOne(0.005f, 2, &own, &a); });
        break;
    }
    case 13: {
        const CReadWriteLockGuard guard(mix.lock, LOCK_MODE_WRITE);
        ++mix.left;
        a.SetState(true);
        ++mix.right;
        break;
    }
    case 14: {
        const CReadWriteLockGuard guard(mix.lock, LOCK_MODE_READ);
        if (mix.left != mix.right) ++mix.wrong;
        break;
    }
    default: {
        const CBinaryLockGuard guard(mix.binary);
        a.SetState(random() % 2);
        break;
    }
    }
}

/// VORLUND_STRESS_SECONDS sets how long; by default a second.
TEST(EventThreads, EverythingTogetherOnEightThreads) {
    constexpr int kThreads = 8;
    const char* const seconds = std::getenv("VORLUND_STRESS_SECONDS");
    const auto length = std::chrono::duration<double>(seconds ? std::atof(seconds) : 1.0);
    auto mix = std::make_unique<TMix>();
    CLatch start(kThreads + 1);
    std::vector<std::thread> threads;
    const int before = CountThreads();
    for (int number = 0; number < kThreads; ++number) {
        threads.emplace_back([&, number] {
            std::minstd_rand random(static_cast<unsigned int>(number) + 1);
            start.ArriveAndWait();
            while (!mix->isEnding) DoOneThing(*mix, random);
        });
    }
    start.ArriveAndWait();
    std::this_thread::sleep_for(length);
    mix->isEnding = true;
    for (std::thread& thread : threads) thread.join();
    mix->timer.Stop();
    EXPECT_TRUE(ThreadsComeDownTo(before));
    EXPECT_EQ(mix->wrong, 0);
    EXPECT_EQ(mix->left, mix->right);
    EXPECT_GT(mix->calls, 0);
}

} // namespace
} // namespace vorlund::test
