// What the library offers to authors of decoders.
#include <vorlund/DecoderSupport.h>

#include "support/Failures.h"
#include "support/LibraryScope.h"
#include "support/Streams.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace vorlund::test {
namespace {

class DecoderSupport : public testing::Test {
protected:
    ~DecoderSupport() noexcept override {}
    DecoderSupport() {
        stream_->bytes = {1, 2, 3, 4, 5, 6, 7};
        stream_->log = &log_;
    }
    bool Read(std::uint64_t size) { return ReadWhole(*stream_, buffer_, size); }
    TBytes Got(std::size_t size) const { return {buffer_, buffer_ + size}; }

    CLibraryScope library_;
    CRefPtr<CFaultyInputStream> stream_ = Make<CFaultyInputStream>();
    TCallLog log_;
    std::uint8_t buffer_[8] = {};
};

TEST_F(DecoderSupport, ReadsARecordAtOnce) {
    EXPECT_TRUE(Read(7));
    EXPECT_EQ(Got(8), (TBytes{1, 2, 3, 4, 5, 6, 7, 0}));
    EXPECT_EQ(log_, TCallLog{"Read 7"});
}

TEST_F(DecoderSupport, GoesOnAfterShortReads) {
    stream_->maximumRead = 3;
    EXPECT_TRUE(Read(7));
    EXPECT_EQ(Got(7), (TBytes{1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(log_, (TCallLog{"Read 3", "Read 3", "Read 1"}));
}

TEST_F(DecoderSupport, NothingIsReadForNothing) {
    EXPECT_TRUE(ReadWhole(*stream_, nullptr, 0));
    EXPECT_TRUE(log_.empty());
}

TEST_F(DecoderSupport, TheEndIsToldAndKeepsWhatCame) {
    EXPECT_FALSE(Read(8));
    EXPECT_EQ(Got(8), (TBytes{1, 2, 3, 4, 5, 6, 7, 0}));
    EXPECT_EQ(stream_->position, 7);
    EXPECT_FALSE(Read(1));
}

TEST_F(DecoderSupport, AStreamThatClaimsTooMuchIsNotBelieved) {
    stream_->exaggeration = 1;
    EXPECT_FALSE(Read(4));
}

TEST_F(DecoderSupport, WhatTheStreamRaisesPassesOn) {
    stream_->failAt = 2;
    ExpectRaises<CIOException>(streamfailures::kCannotRead, [this] { Read(4); });
    EXPECT_EQ(Got(2), (TBytes{1, 2}));
}

TEST(DecoderSupportLittleEndian, TheLowByteComesFirst) {
    constexpr std::uint8_t bytes[] = {0x01, 0x82, 0x03, 0xF4};
    static_assert(LoadLittleEndian16(bytes) == 0x8201);
    static_assert(LoadLittleEndian32(bytes) == 0xF4038201);
    // At any alignment.
    EXPECT_EQ(LoadLittleEndian16(bytes + 1), 0x0382);
    EXPECT_EQ(LoadLittleEndian16(bytes + 2), 0xF403);
}

} // namespace
} // namespace vorlund::test
