// What decoding costs in memory, and that nothing stays behind.
#include "data/file/TemporaryFolder.h"
#include "support/Allocations.h"
#include "support/Failures.h"
#include "support/NothingLeft.h"
#include "support/Outcome.h"
#include "support/Probes.h"
#include "support/Streams.h"
#include "support/WavBuilder.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>
#include <vorlund/WavDecoder.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace vorlund::test {
namespace {

class WavDecoderMemory : public CFileTest {
protected:
    ~WavDecoderMemory() noexcept override = default;

    /// Decodes what the stream holds in every way, whether it works or not.
    void DecodeAll() {
        std::uint8_t block[256];
        Outcome([&] {
            const auto decoder = CreateAs<IWavDecoder>(classid::CWavDecoder);
            decoder->Connect(stream_.Get());
            while (decoder->Read(block, sizeof block) > 0) {
            }
        });
        Outcome([&] {
            const auto decoder = CreateAs<IWavDecoder>(classid::CWavDecoder);
            Outcome([&] { decoder->Connect(stream_.Get()); });
            // A second connection on top of the first, and the end without a disconnection.
            decoder->Connect(stream_.Get());
        });
        for (const CId& wanted : {TDataFormat_AudioPcm::FormatId, CId::Null()}) {
            Outcome([&] {
                const auto decoded =
                    CRefPtr<IInputStream>::Adopt(v.GetCodecClassStore().DecodeStream(stream_.Get(), wanted));
                decoded->Read(block, sizeof block);
            });
        }
        Outcome([&] {
            const auto decoder = CreateAs<IWavChunkDecoder>(classid::CWavChunkDecoder);
            decoder->Connect(stream_.Get());
            CRefPtr<IObjectList>::Adopt(decoder->EnumerateChunks());
        });
    }
    /// Expects that decoding leaves no object and no memory behind.
    void ExpectNothingLeftOf(const TBytes& file) {
        stream_->bytes = file;
        ExpectNothingLeftAgain([&] { DecodeAll(); });
        EXPECT_EQ(ReferencesOf(stream_.Get()), 1);
    }

    CRefPtr<CFaultyInputStream> stream_ = Make<CFaultyInputStream>();
};

TBytes SampleFile() {
    return CWavBuilder()
        .Format({.channels = 2}, 18)
        .Chunk("LIST", Ramp(10))
        .Chunk("data", Ramp(20, 200))
        .Build();
}
constexpr std::size_t kSampleHeads = 12 + 26 + 18 + 8;

TEST_F(WavDecoderMemory, NothingIsLeftOfATruncatedFile) {
    for (std::size_t size = 0; size <= SampleFile().size(); ++size) {
        SCOPED_TRACE("cut to " + std::to_string(size));
        TBytes file = SampleFile();
        file.resize(size);
        ExpectNothingLeftOf(file);
    }
}

TEST_F(WavDecoderMemory, NothingIsLeftOfADamagedFile) {
    for (std::size_t at = 0; at < kSampleHeads; ++at) {
        for (const int change : {1, 0x20, 0x80, 0xFF}) {
            SCOPED_TRACE("byte " + std::to_string(at) + " changed by " + std::to_string(change));
            TBytes file = SampleFile();
            file[at] = static_cast<std::uint8_t>(file[at] ^ change);
            ExpectNothingLeftOf(file);
        }
    }
}

TEST_F(WavDecoderMemory, NothingIsLeftWhenTheStreamFails) {
    const std::vector<std::function<void()>> faults = {
        [] { Raise<CIOException>(streamfailures::kCannotRead); },
        [] { Raise<CInvalidStateException>(streamfailures::kCannotRead); }, [] { throw std::bad_alloc(); }};
    for (const auto& fault : faults) {
        for (std::size_t at = 0; at <= SampleFile().size(); ++at) {
            SCOPED_TRACE("fails at " + std::to_string(at));
            stream_->fail = fault;
            stream_->failAt = static_cast<std::int64_t>(at);
            ExpectNothingLeftOf(SampleFile());
            stream_->failAt.reset();
            stream_->failSeekAt = static_cast<std::int64_t>(at);
            ExpectNothingLeftOf(SampleFile());
            stream_->failSeekAt.reset();
        }
    }
}

TEST_F(WavDecoderMemory, NothingIsLeftWhenTheStreamClaimsTooMuch) {
    for (const std::uint64_t exaggeration : {std::uint64_t{1}, std::uint64_t{100}, ~std::uint64_t{0} / 2}) {
        stream_->exaggeration = exaggeration;
        ExpectNothingLeftOf(SampleFile());
    }
}

// The table of chunks.

/// `size` bytes of chunks of `dataSize` bytes.
TBytes ManyChunks(std::size_t size, std::uint32_t dataSize) {
    TBytes chunk;
    AppendText(chunk, "junk");
    Append32(chunk, dataSize);
    chunk.resize(8 + dataSize);
    TBytes file = CWavBuilder().Build();
    file.reserve(size);
    while (file.size() + chunk.size() <= size) file.insert(file.end(), chunk.begin(), chunk.end());
    return file;
}

struct TTableRow {
    const char* name;
    std::size_t fileSize;
    std::uint32_t dataSize;
};
class WavDecoderMemoryTable : public WavDecoderMemory, public testing::WithParamInterface<TTableRow> {};

TEST_P(WavDecoderMemoryTable, EqualChunksTakeNothing) {
    stream_->bytes = ManyChunks(GetParam().fileSize, GetParam().dataSize);
    const auto chunks = CreateAs<IWavChunkDecoder>(classid::CWavChunkDecoder);
    {
        const CMemoryWatch watch;
        chunks->Connect(stream_.Get());
        chunks->SelectChunk(VRL_L("junk"));
        // Equal chunks are one record with a count.
        EXPECT_LE(watch.GetPeakBytes(), 2048u);
        chunks->Disconnect();
        EXPECT_LE(watch.GetLiveBlocks(), 0) << "the memory is given back at once";
    }
    // The same through the whole chain, which finds no format in it.
    const CMemoryWatch watch;
    EXPECT_NE(
        Outcome([&] { v.GetCodecClassStore().DecodeStream(stream_.Get(), TDataFormat_AudioPcm::FormatId); }),
        "nothing");
    EXPECT_LE(watch.GetPeakBytes(), 16384u);
    EXPECT_EQ(watch.GetLiveBlocks(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, WavDecoderMemoryTable,
    testing::Values(TTableRow{"Empty1KiB", 1 << 10, 0}, TTableRow{"Empty100KiB", 100 << 10, 0},
                    TTableRow{"Empty4MiB", 4 << 20, 0}, TTableRow{"Empty5MiB", 5 << 20, 0},
                    TTableRow{"Empty64MiB", 64 << 20, 0}, TTableRow{"OneByte4MiB", 4 << 20, 1}),
    [](const auto& row) { return row.param.name; });

TEST_F(WavDecoderMemory, DeclaredSizesCostNothing) {
    // A hundred bytes of heads, each of which declares 4 GiB.
    CWavBuilder file;
    for (int i = 0; i < 11; ++i) file.Declare("data", 0xFFFFFFFF);
    stream_->bytes = file.Build();
    ASSERT_EQ(stream_->bytes.size(), 100u);
    const auto chunks = CreateAs<IWavChunkDecoder>(classid::CWavChunkDecoder);
    const CMemoryWatch watch;
    chunks->Connect(stream_.Get());
    chunks->SelectChunk(VRL_L("data"));
    EXPECT_EQ(chunks->GetLength(), 0xFFFFFFFF);
    EXPECT_LT(watch.GetPeakBytes(), 2048u);
}

TEST_F(WavDecoderMemory, IndexingTakesTheSameWorkPerChunk) {
    const auto calls = [&](std::size_t size) {
        TCallLog log;
        stream_->bytes = ManyChunks(size, 0);
        stream_->log = &log;
        CreateAs<IWavChunkDecoder>(classid::CWavChunkDecoder)->Connect(stream_.Get());
        stream_->log = nullptr;
        return log.size();
    };
    const std::size_t fixed = calls(12);
    for (const std::size_t chunks : {1, 10, 1000, 2000}) {
        // Two reads and a skip; asking for the position is not in the log.
        EXPECT_EQ(calls(12 + 8 * chunks), fixed + 3 * chunks);
    }
}

// Reading.

TEST_F(WavDecoderMemory, ReadingAllocatesNothing) {
    const TBytes file = PlainWav({.channels = 2}, Ramp(4 << 20));
    const fs::path path = Put("big.wav", {reinterpret_cast<const char*>(file.data()), file.size()});
    const CInputStreamSelector selector(ToVorlund(path).c_str());
    const auto decoded = CRefPtr<IInputStream>::Adopt(selector.DecodeStream(TDataFormat_AudioPcm::FormatId));
    TBytes block(1 << 20);
    for (const std::size_t size : {1, 7, 1 << 10, 4 << 10, 64 << 10, 1 << 20}) {
        decoded->Seek(0);
        const CAllocationCount allocations;
        std::uint64_t total = 0;
        for (int i = 0; i < 2000; ++i) {
            const std::uint64_t count = decoded->Read(block.data(), size);
            total += count;
            if (count == 0) break;
        }
        decoded->Eof();
        decoded->Tell();
        decoded->GetFormat();
        decoded->Seek(100);
        decoded->Skip(10);
        EXPECT_EQ(allocations.Get(), 0u) << "reads of " << size;
        EXPECT_EQ(total, std::min<std::uint64_t>(2000 * size, 4 << 20));
    }
}

} // namespace
} // namespace vorlund::test
