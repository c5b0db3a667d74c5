#include "vorlund/system/LockThreadTable.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <vector>

namespace vorlund::test {
namespace {

TEST(LockThreadTable, FindsWhatWasInsertedUntilItIsRemoved) {
    // Numbers as systems give them: following each other, four apart, far apart, the smallest and the
    // largest.
    for (const unsigned int step : {1u, 4u, 4096u, 0x01000193u}) {
        SCOPED_TRACE(step);
        CLockThreadTable table;
        std::map<unsigned int, CLockThreadEntry*> entries;
        for (unsigned int number = 1; number <= 500; ++number) {
            const unsigned int thread = number * step;
            ASSERT_EQ(table.Find(thread), nullptr);
            CLockThreadEntry& entry = table.Insert(thread);
            EXPECT_TRUE(entry.IsEmpty());
            entry.Push(LOCK_MODE_READ);
            entry.param = thread;
            entries[thread] = &entry;
        }
        std::set<const CLockThreadEntry*> distinct;
        for (const auto& [thread, entry] : entries) {
            ASSERT_EQ(table.Find(thread), entry);
            EXPECT_EQ(entry->param, thread);
            distinct.insert(entry);
        }
        EXPECT_EQ(distinct.size(), entries.size());
        for (const auto& [thread, entry] : entries) {
            table.Remove(*entry);
            ASSERT_EQ(table.Find(thread), nullptr);
        }
    }
}

TEST(LockThreadTable, GivesSlotsOutAgainAsNew) {
    CLockThreadTable table;
    CLockThreadEntry& entry = table.Insert(77);
    entry.writes = 2;
    entry.param = 9;
    for (int level = 0; level < 50; ++level) entry.Push(level % 2 ? LOCK_MODE_WRITE : LOCK_MODE_READ);
    table.Remove(entry);
    CLockThreadEntry& again = table.Insert(77);
    EXPECT_EQ(&again, &entry);
    EXPECT_TRUE(again.IsEmpty());
    EXPECT_EQ(again.param, 0u);
    again.Push(LOCK_MODE_WRITE);
    EXPECT_EQ(again.GetTop(), LOCK_MODE_WRITE);
    EXPECT_EQ(again.Pop(), LOCK_MODE_WRITE);
}

TEST(LockThreadTable, ModesComeOffInTheReverseOrder) {
    std::mt19937 random(7);
    for (const unsigned int change : {2u, 10u, 300u}) {
        SCOPED_TRACE(change);
        CLockThreadTable table;
        CLockThreadEntry& entry = table.Insert(1);
        std::vector<TLockMode> expected;
        TLockMode mode = LOCK_MODE_READ;
        for (int step = 0; step < 5000; ++step) {
            if (expected.empty() || random() % 5 < 3) {
                if (random() % change == 0) mode = static_cast<TLockMode>(random() % 3);
                entry.Push(mode);
                expected.push_back(mode);
            } else {
                ASSERT_EQ(entry.Pop(), expected.back());
                expected.pop_back();
            }
            if (expected.empty()) continue;
            ASSERT_EQ(entry.GetTop(), expected.back());
        }
    }
}

} // namespace
} // namespace vorlund::test
