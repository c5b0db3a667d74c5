// The table of chunks against a plain list, and what it takes for one.
#include "support/Allocations.h"
#include "support/Text.h"

#include "vorlund/data/filters/WavChunkTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

struct TChunk {
    std::string id;
    std::int64_t dataOffset;
    std::uint32_t size;
};

void AppendTo(CWavChunkTable& table, const TChunk& chunk) {
    std::uint8_t id[4];
    std::memcpy(id, chunk.id.data(), sizeof id);
    table.Append(id, chunk.dataOffset, chunk.size);
}

void ExpectChunk(const std::optional<TWavChunkInfo>& info, const TChunk& chunk) {
    ASSERT_TRUE(info.has_value());
    EXPECT_EQ(Narrow(info->id.GetBuffer()), chunk.id);
    EXPECT_EQ(info->dataOffset, static_cast<std::int32_t>(chunk.dataOffset));
    EXPECT_EQ(info->size, chunk.size);
}

void ExpectChunks(const CWavChunkTable& table, const std::vector<TChunk>& chunks) {
    CWavChunkTable::CReader reader(table);
    for (const TChunk& chunk : chunks) {
        ExpectChunk(reader.GetNext(), chunk);
        if (testing::Test::HasFatalFailure()) return;
    }
    EXPECT_FALSE(reader.GetNext().has_value());
}

TEST(WavChunkTable, SameAsAPlainList) {
    std::mt19937 random(20);
    const auto pick = [&](std::uint32_t count) { return static_cast<std::uint32_t>(random() % count); };
    for (int round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        CWavChunkTable table;
        std::vector<TChunk> chunks;
        std::int64_t offset = pick(2) ? 20 : 0x7FFFFFF0;
        for (std::uint32_t runs = pick(60); runs > 0; --runs) {
            TChunk chunk{std::string(1, static_cast<char>('a' + pick(3))) + "bcd", 0,
                         pick(4) == 0 ? 0xFFFFFFF0u : pick(3)};
            for (std::uint32_t i = 0; i <= pick(5); ++i) {
                // Now and then a stream says where it is not.
                if (pick(20) == 0) offset += pick(100);
                chunk.dataOffset = offset;
                chunks.push_back(chunk);
                AppendTo(table, chunk);
                offset += 8 + std::int64_t{chunk.size};
            }
        }
        ExpectChunks(table, chunks);
        for (const wchar* const id : {VRL_L("ABCD"), VRL_L("bbcd"), VRL_L("cbcd"), VRL_L("dbcd")}) {
            const auto first = std::find_if(chunks.begin(), chunks.end(), [&](const TChunk& chunk) {
                return chunk.id[0] == (id[0] | 0x20);
            });
            const auto found = table.Find(id);
            if (first == chunks.end()) {
                EXPECT_FALSE(found.has_value());
            } else {
                ExpectChunk(found, *first);
            }
        }
        table.Clear();
        ExpectChunks(table, {});
        AppendTo(table, {"last", 20, 1});
        ExpectChunks(table, {{"last", 20, 1}});
    }
}

TEST(WavChunkTable, EqualChunksTakeNothing) {
    const CMemoryWatch watch;
    CWavChunkTable table;
    constexpr std::uint8_t kZeros[4] = {};
    // As many as 256 MiB hold.
    constexpr std::int64_t kCount = (256 << 20) / 8;
    for (std::int64_t i = 0; i < kCount; ++i) table.Append(kZeros, 20 + 8 * i, 0);
    EXPECT_LE(watch.GetPeakBytes(), 2048u);
    CWavChunkTable::CReader reader(table);
    EXPECT_EQ(reader.GetNextRun()->repetitions, kCount - 1);
    EXPECT_EQ(reader.GetNextRun(), nullptr);
}

TEST(WavChunkTable, LongRunsAreDivided) {
    CWavChunkTable table;
    constexpr std::uint8_t kZeros[4] = {};
    // One more than fits into a run.
    constexpr std::int64_t kCount = std::int64_t{CWavChunkTable::kMaxRepetitions} + 2;
    for (std::int64_t i = 0; i < kCount; ++i) table.Append(kZeros, 20 + 8 * i, 0);
    CWavChunkTable::CReader reader(table);
    EXPECT_EQ(reader.GetNextRun()->repetitions, CWavChunkTable::kMaxRepetitions);
    const auto* const last = reader.GetNextRun();
    ASSERT_NE(last, nullptr);
    EXPECT_EQ(last->repetitions, 0u);
    EXPECT_EQ(last->dataOffset, static_cast<std::uint32_t>(20 + 8 * (kCount - 1)));
    EXPECT_EQ(reader.GetNextRun(), nullptr);
}

// Nothing lies before the first chunk, whatever it is like.
TEST(WavChunkTable, AFirstChunkOfZerosAtPositionZero) {
    const std::vector<TChunk> chunks{{std::string(4, '\0'), 0, 0}, {std::string(4, '\0'), 8, 0}};
    CWavChunkTable table;
    for (const TChunk& chunk : chunks) AppendTo(table, chunk);
    CWavChunkTable::CReader reader(table);
    EXPECT_EQ(reader.GetNextRun()->repetitions, 1u);
    CWavChunkTable::CReader each(table);
    for (const TChunk& chunk : chunks) {
        const auto info = each.GetNext();
        ASSERT_TRUE(info.has_value());
        EXPECT_EQ(info->dataOffset, chunk.dataOffset);
        EXPECT_EQ(info->size, chunk.size);
    }
    EXPECT_FALSE(each.GetNext().has_value());
}

TEST(WavChunkTable, UnequalChunksTakeLessThanTwelveBytes) {
    // All alone, in twos, in threes.
    for (const std::uint32_t length : {1u, 2u, 3u}) {
        constexpr std::uint32_t kCount = 1 << 20;
        const CMemoryWatch watch;
        CWavChunkTable table;
        for (std::uint32_t i = 0; i < kCount; ++i) {
            const std::uint32_t id = i / length;
            table.Append(reinterpret_cast<const std::uint8_t*>(&id), 20 + 8 * std::int64_t{i}, 0);
        }
        EXPECT_LE(watch.GetPeakBytes(), 12u * kCount);
        std::printf("runs of %u: %.2f bytes a chunk\n", length,
                    static_cast<double>(watch.GetPeakBytes()) / kCount);
    }
}

} // namespace
} // namespace vorlund::test
