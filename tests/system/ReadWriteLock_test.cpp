#include <vorlund/ReadWriteLock.h>

#include "support/Actor.h"
#include "support/DebugRecorder.h"
#include "system/LockViews.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace vorlund::test {
namespace {

constexpr const char* kNotLockedInUnlock = "[vorlund::TReadWriteLockData::Unlock] Not locked!";

static_assert(LOCK_MODE_READ == 0 && LOCK_MODE_WRITE == 1 && sizeof(TLockMode) == 4);
static_assert(!std::is_copy_constructible_v<CReadWriteLock>);

/// Does the steps of `script` one after the other ("r5" takes a read lock with parameter 5, "w5" a write
/// lock, "u" gives back) and says what the thread holds after each; "!" follows where the step printed a
/// message.
std::string Play(CReadWriteLock& lock, const std::string& script) {
    std::istringstream steps(script);
    std::string seen;
    for (std::string step; steps >> step;) {
        const CDebugRecorder recorder;
        const unsigned int param =
            step.size() > 1 ? static_cast<unsigned int>(std::stoul(step.substr(1))) : 0;
        if (step[0] == 'u')
            lock.Unlock();
        else
            lock.Lock(step[0] == 'r' ? LOCK_MODE_READ : LOCK_MODE_WRITE, param);
        const TTexts texts = recorder.GetTexts(DEBUG_MESSAGE_BOX);
        if (!seen.empty()) seen += ' ';
        seen += Look(lock);
        if (texts.empty()) continue;
        EXPECT_EQ(texts, TTexts{kNotLockedInUnlock});
        seen += '!';
    }
    return seen;
}

struct THistoryRow {
    const char* name;
    const char* script;
    const char* seen;
};

constexpr THistoryRow kHistoryRows[] = {
    {"AFirstReadLockRecordsNoParameter", "r5 u", "R0 -"},
    {"AFirstWriteLockRecordsNoParameter", "w7 u", "W0 -"},
    {"ANestedReadLockRecordsItsParameter", "r5 r6 u u", "R0 R6 R6 -"},
    {"ANestedWriteLockRecordsItsParameter", "w5 w6 u u", "W0 W6 W6 -"},
    {"ParametersStayWhenLocksAreGivenBack", "r1 r2 r3 u u r4 u u", "R0 R2 R3 R3 R3 R4 R4 -"},
    {"TheLargestParameter", "r0 r4294967295 u u", "R0 R4294967295 R4294967295 -"},
    {"ANestedParameterOfZeroCountsToo", "r1 r2 r0 u u u", "R0 R2 R0 R0 R0 -"},
    {"ParametersGoWithTheLastLock", "r1 r2 u u r3 u", "R0 R2 R2 - R0 -"},
    {"AWriterTakesFurtherLocksOfBothModes", "w1 r2 w3 r4 u u u u", "W0 R2 W3 R4 W4 R4 W4 -"},
    {"AnUpgradeAndBack", "r1 w2 u u", "R0 W2 R2 -"},
    {"AnUpgradeOfNestedReadLocks", "r1 r2 w3 u u u", "R0 R2 W3 R3 R3 -"},
    {"AnUpgradeTwice", "r1 w2 u w3 u u", "R0 W2 R2 W3 R3 -"},
    {"ReadLocksInAnUpgrade", "r1 w2 r3 w4 u u u u", "R0 W2 R3 W4 R4 W4 R4 -"},
    {"AnUpgradeInAWriteLockIsNone", "w1 r2 w3 u u u", "W0 R2 W3 R3 W3 -"},
    {"UnlockWithoutALock", "u", "-!"},
    {"OneUnlockTooMany", "r1 u u", "R0 - -!"},
    {"OneUnlockTooManyAfterAWriteLock", "w1 w2 u u u r3 u", "W0 W2 W2 - -! R0 -"},
};

class ReadWriteLockHistory : public testing::TestWithParam<THistoryRow> {};

TEST_P(ReadWriteLockHistory, IsAsWritten) {
    CReadWriteLock lock;
    EXPECT_EQ(Play(lock, GetParam().script), GetParam().seen);
    ExpectFree(lock);
}

INSTANTIATE_TEST_SUITE_P(Rows, ReadWriteLockHistory, testing::ValuesIn(kHistoryRows),
                         [](const auto& row) { return std::string(row.param.name); });

/// What a thread alone with a lock holds, told in the plainest way.
class CHistoryModel {
public:
    void Lock(TLockMode mode, unsigned int param) {
        if (!modes_.empty()) params_.push_back(param);
        modes_.push_back(mode);
    }
    bool Unlock() {
        if (modes_.empty()) return false;
        modes_.pop_back();
        if (modes_.empty()) params_.clear();
        return true;
    }
    bool IsHeld() const { return !modes_.empty(); }
    TLockMode GetLockMode() const { return modes_.back(); }
    unsigned int GetParam() const { return params_.empty() ? 0 : params_.back(); }

private:
    std::vector<TLockMode> modes_;
    std::vector<unsigned int> params_;
};

TEST(ReadWriteLock, LongHistoriesAreAsTheModelSays) {
    std::mt19937 random(2024);
    for (int history = 0; history < 100; ++history) {
        CReadWriteLock lock;
        CHistoryModel model;
        // Some histories climb to many levels, some stay low; long runs of one mode and changes at every
        // level.
        const unsigned int up = 40 + random() % 40;
        const unsigned int change = 1 + random() % 100;
        TLockMode mode = LOCK_MODE_READ;
        for (int step = 0; step < 600; ++step) {
            if (random() % 100 < up) {
                if (random() % 100 < change) mode = mode == LOCK_MODE_READ ? LOCK_MODE_WRITE : LOCK_MODE_READ;
                const unsigned int param = static_cast<unsigned int>(random());
                lock.Lock(mode, param);
                model.Lock(mode, param);
            } else {
                const CDebugRecorder recorder;
                lock.Unlock();
                ASSERT_EQ(recorder.GetEntries().empty(), model.Unlock());
            }
            if (!model.IsHeld()) continue;
            ASSERT_EQ(lock.GetLockMode(), model.GetLockMode()) << history << '/' << step;
            ASSERT_EQ(lock.GetParam(), model.GetParam()) << history << '/' << step;
        }
        while (model.Unlock()) lock.Unlock();
        EXPECT_EQ(Look(lock), "-");
        ExpectFree(lock);
    }
}

TEST(ReadWriteLock, NestingMayGoDeep) {
    CReadWriteLock lock;
    constexpr unsigned int kDepth = 5000;
    for (unsigned int level = 0; level < kDepth; ++level)
        lock.Lock(level / 7 % 2 ? LOCK_MODE_WRITE : LOCK_MODE_READ, level);
    for (unsigned int level = kDepth; level-- > 0;) {
        ASSERT_EQ(lock.GetLockMode(), level / 7 % 2 ? LOCK_MODE_WRITE : LOCK_MODE_READ);
        ASSERT_EQ(lock.GetParam(), kDepth - 1);
        lock.Unlock();
    }
    EXPECT_EQ(Look(lock), "-");
    ExpectFree(lock);
}

TEST(ReadWriteLock, EveryNonZeroModeActsAsWrite) {
    for (const int value : {2, 7, -1}) {
        CReadWriteLock lock;
        CActor reader;
        lock.Lock(static_cast<TLockMode>(value), 0);
        EXPECT_EQ(lock.GetLockMode(), value);
        lock.Lock(static_cast<TLockMode>(value), 0);
        reader.Start([&] {
            lock.Lock(LOCK_MODE_READ, 0);
            lock.Unlock();
        });
        EXPECT_TRUE(reader.StaysBusy());
        lock.Unlock();
        EXPECT_TRUE(reader.StaysBusy());
        lock.Unlock();
        EXPECT_TRUE(reader.Finishes());
    }
}

TEST(ReadWriteLock, MessagesGoToTheBoxOnly) {
    CReadWriteLock lock;
    const CDebugRecorder recorder;
    lock.Unlock();
    EXPECT_EQ(lock.GetLockMode(), LOCK_MODE_READ);
    EXPECT_EQ(lock.GetParam(), 0u);
    EXPECT_EQ(recorder.GetTexts(DEBUG_MESSAGE_BOX), (TTexts{kNotLockedInUnlock, kNotLocked, kNotLocked}));
    EXPECT_EQ(recorder.GetEntries().size(), 3u);
}

TEST(ReadWriteLock, TheLockCanBeUsedWhileABoxIsShown) {
    struct TBox {
        CReadWriteLock lock;
        CActor other;
        int shown = 0;
    } box;
    CDebug::SetHandler(
        DEBUG_MESSAGE_BOX,
        [](TDebugMessageType, const wchar*, void* user) {
            TBox& shownBox = *static_cast<TBox*>(user);
            ++shownBox.shown;
            const auto use = [&] {
                shownBox.lock.Lock(LOCK_MODE_WRITE, 1);
                shownBox.lock.Unlock();
            };
            shownBox.other.Do(use);
            use();
        },
        &box);
    box.lock.Unlock();
    static_cast<void>(box.lock.GetLockMode());
    static_cast<void>(box.lock.GetParam());
    SetDebugTarget(debugTarget);
    EXPECT_EQ(box.shown, 3);
}

TEST(ReadWriteLock, MayGoWhileHeld) {
    for (const THistoryRow& row :
         {THistoryRow{"", "r1", "R0"}, THistoryRow{"", "w1", "W0"}, THistoryRow{"", "r1 w2", "R0 W2"},
          THistoryRow{"", "w1 r2 w3 r4 w5 r6", "W0 R2 W3 R4 W5 R6"}}) {
        const CDebugRecorder recorder;
        {
            CReadWriteLock lock;
            EXPECT_EQ(Play(lock, row.script), row.seen);
        }
        EXPECT_TRUE(recorder.GetEntries().empty()) << "reported by the end of a lock with " << row.script;
        // What the thread held is forgotten: no lock that comes to the same place finds it.
        CReadWriteLock next;
        EXPECT_EQ(Look(next), "-");
        ExpectFree(next);
    }
}

TEST(ReadWriteLockGuard, HoldsUntilItsEnd) {
    CReadWriteLock lock;
    {
        const CReadWriteLockGuard outer(lock, LOCK_MODE_READ);
        EXPECT_EQ(Look(lock), "R0");
        const CReadWriteLockGuard inner(lock, LOCK_MODE_WRITE);
        EXPECT_EQ(Look(lock), "W0");
    }
    EXPECT_EQ(Look(lock), "-");
}

} // namespace
} // namespace vorlund::test
