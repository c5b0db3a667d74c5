// The limit of time for Media Foundation: its thread with a reader that answers when a test lets it.
#include "system-codecs/MediaThread.h"

#include "support/Latch.h"

#include <gtest/gtest.h>

#include <atomic>

namespace vorlund::test {
namespace {

/// What the reader of this test waits for; none for nothing.
std::atomic<CLatch*> openLatch;
std::atomic<CLatch*> fetchLatch;

void WaitFor(const std::atomic<CLatch*>& latch) {
    if (CLatch* const gate = latch) gate->Wait();
}

class MediaThread : public testing::Test {
protected:
    MediaThread() { openLatch = fetchLatch = nullptr; }

    /// A file without content, whose end opens `freed_`.
    std::shared_ptr<const CFileCopy> MakeFile() {
        return {static_cast<const CFileCopy*>(nullptr), [this](const CFileCopy*) {
                    isFreed_ = true;
                    freed_.CountDown();
                }};
    }
    /// The limit is over, and the thread goes; what it uses stays until it is through.
    void ExpectSilence(std::unique_ptr<CMediaThread> thread, CLatch& gate) {
        EXPECT_EQ(thread->Ask(), nullptr);
        // From then on, whatever happens.
        EXPECT_EQ(thread->Ask(), nullptr);
        thread.reset();
        EXPECT_FALSE(isFreed_);
        gate.CountDown();
        freed_.Wait();
    }

    static constexpr DWORD kShort = 50;
    CLatch gate_{1};
    CLatch freed_{1};
    std::atomic<bool> isFreed_ = false;
};

TEST_F(MediaThread, GivesTheFormatAndThePieces) {
    auto thread = std::make_unique<CMediaThread>(MakeFile());
    const CMediaThread::TAnswer* answer = thread->Ask();
    ASSERT_NE(answer, nullptr);
    EXPECT_FALSE(answer->failure);
    EXPECT_EQ(answer->format.channels, 3U);
    answer = thread->Ask();
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer->piece, (std::vector<std::uint8_t>{1, 2}));
    EXPECT_TRUE(answer->isAtEnd);
    thread.reset();
    EXPECT_TRUE(isFreed_);
}

TEST_F(MediaThread, OpeningHasALimit) {
    openLatch = &gate_;
    ExpectSilence(std::make_unique<CMediaThread>(MakeFile(), kShort), gate_);
}

TEST_F(MediaThread, ReadingHasALimit) {
    fetchLatch = &gate_;
    auto thread = std::make_unique<CMediaThread>(MakeFile(), kShort);
    // It may be slow, and then that is the silence.
    static_cast<void>(thread->Ask());
    ExpectSilence(std::move(thread), gate_);
}

} // namespace
} // namespace vorlund::test

CMediaFoundation::CMediaFoundation() = default;
CMediaFoundation::~CMediaFoundation() = default;

CMediaReader::CMediaReader(std::shared_ptr<const CFileCopy> file)
    : file_(std::move(file)), format_(vorlund::SAMPLE_FORMAT_16BIT, 3, 8000) {
    vorlund::test::WaitFor(vorlund::test::openLatch);
}

bool CMediaReader::Fetch(std::vector<std::uint8_t>& piece) {
    vorlund::test::WaitFor(vorlund::test::fetchLatch);
    piece = {1, 2};
    return false;
}
