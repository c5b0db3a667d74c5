/// \file
/// What a thread can find out about a read/write lock.
#pragma once

#include <vorlund/ReadWriteLock.h>

#include "support/Actor.h"
#include "support/DebugRecorder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vorlund::test {

using TTexts = std::vector<std::string>;

inline constexpr const char* kNotLocked = "[vorlund::TReadWriteLockData::GetLockMode] Not locked!";

/// What the calling thread holds: "R5" is a read lock with 5 as the parameter, "-" nothing.
inline std::string Look(CReadWriteLock& lock) {
    const CDebugRecorder recorder;
    const TLockMode mode = lock.GetLockMode();
    const unsigned int param = lock.GetParam();
    const TTexts texts = recorder.GetTexts(DEBUG_MESSAGE_BOX);
    EXPECT_EQ(recorder.GetEntries().size(), texts.size()) << "messages elsewhere";
    if (texts.empty()) return (mode == LOCK_MODE_READ ? "R" : "W") + std::to_string(param);
    EXPECT_EQ(texts, (TTexts{kNotLocked, kNotLocked}));
    EXPECT_EQ(mode, LOCK_MODE_READ);
    EXPECT_EQ(param, 0u);
    return "-";
}

/// Expects that nobody holds the lock or waits for it.
inline void ExpectFree(CReadWriteLock& lock) {
    CActor other;
    other.Do([&] {
        lock.Lock(LOCK_MODE_WRITE, 0);
        lock.Unlock();
    });
}

} // namespace vorlund::test
