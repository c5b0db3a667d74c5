#include <vorlund/ClassIds.h>
#include <vorlund/ObjectCounter.h>

#include "support/DebugRecorder.h"
#include "support/Failures.h"
#include "support/KnownFailures.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>

namespace vorlund::test {
namespace {

using namespace counterfailures;

struct TFailureRow {
    const char* name;
    TFailure failure;
    std::function<void()> call;
};

class ObjectCounterFailures : public testing::TestWithParam<TFailureRow> {};

TEST_P(ObjectCounterFailures, Raises) {
    ExpectRaises<CBugException>(GetParam().failure, GetParam().call);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ObjectCounterFailures,
    testing::Values(TFailureRow{"CreateOnNewCounter", kCreateClosed,
                                [] { CObjectCounter().OnCreateObject(classid::CObject); }},
                    TFailureRow{"CreateOnClosedCounter", kCreateClosed,
                                [] {
                                    CObjectCounter counter;
                                    counter.Init();
                                    counter.Close();
                                    counter.OnCreateObject(classid::CObject);
                                }},
                    TFailureRow{"DestroyOnNewCounter", kDestroyClosed,
                                [] { CObjectCounter().OnDestroyObject(classid::CObject); }},
                    TFailureRow{"DestroyOnClosedCounter", kDestroyClosed,
                                [] {
                                    CObjectCounter counter;
                                    counter.Init();
                                    counter.Close();
                                    counter.OnDestroyObject(classid::CObject);
                                }},
                    TFailureRow{"EndWhileOpen", counterfailures::kNotClosed,
                                [] {
                                    CObjectCounter counter;
                                    counter.Init();
                                }},
                    TFailureRow{"EndOfADeletedCounterWhileOpen", counterfailures::kNotClosed,
                                [] {
                                    auto* const counter = new CObjectCounter;
                                    counter->Init();
                                    delete counter;
                                }}),
    [](const auto& row) { return row.param.name; });

/// A counter that is open for the length of a test.
class ObjectCounter : public testing::Test {
protected:
    ~ObjectCounter() noexcept override {}
    void SetUp() override { counter_.Init(); }
    void TearDown() override { counter_.Close(); }

    int Next() { return counter_.OnCreateObject(classid::CObject); }

    CObjectCounter counter_;
};

TEST_F(ObjectCounter, CountsFromOne) {
    for (int number = 1; number <= 1000; ++number) ASSERT_EQ(Next(), number);
}

TEST_F(ObjectCounter, ClassesShareOneSequence) {
    EXPECT_EQ(counter_.OnCreateObject(classid::CObject), 1);
    EXPECT_EQ(counter_.OnCreateObject(classid::CFile), 2);
    EXPECT_EQ(counter_.OnCreateObject(CId::Null()), 3);
    EXPECT_EQ(counter_.OnCreateObject(classid::CObject), 4);
}

TEST_F(ObjectCounter, DestructionsAreNotCounted) {
    EXPECT_EQ(Next(), 1);
    counter_.OnDestroyObject(classid::CObject);
    counter_.OnDestroyObject(classid::CFile);
    counter_.OnDestroyObject(CId::Null());
    EXPECT_EQ(Next(), 2);
}

TEST_F(ObjectCounter, InitStartsOverWithoutAClose) {
    EXPECT_EQ(Next(), 1);
    EXPECT_EQ(Next(), 2);
    counter_.Init();
    EXPECT_EQ(Next(), 1);
}

TEST_F(ObjectCounter, InitAfterCloseStartsOver) {
    EXPECT_EQ(Next(), 1);
    counter_.Close();
    counter_.Init();
    EXPECT_EQ(Next(), 1);
}

TEST_F(ObjectCounter, ClosingTwiceIsNoError) {
    const CDebugRecorder recorder;
    counter_.Close();
    counter_.Close();
    EXPECT_TRUE(recorder.GetEntries().empty());
    ExpectRaises<CBugException>(kCreateClosed, [&] { Next(); });
}

TEST(ObjectCounterEnd, ClosedCountersEndQuietly) {
    const CDebugRecorder recorder;
    {
        CObjectCounter unused;
        unused.Close();
        CObjectCounter used;
        used.Init();
        used.Close();
    }
    EXPECT_TRUE(recorder.GetEntries().empty());
}

} // namespace
} // namespace vorlund::test
