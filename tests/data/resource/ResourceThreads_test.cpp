// One resource, several threads.
#include "data/resource/ResourceTest.h"

#include "support/Latch.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace vorlund::test {
namespace {

class ResourceThreads : public CResourceTest {};

TEST_F(ResourceThreads, ReadersAndAWriterSeeWholeStates) {
    constexpr int kReaders = 3;
    constexpr int kRounds = 200;
    constexpr std::size_t kSize = 4096;
    SetBytes(*resource_, TBytes(kSize, 0));
    // Counts and creation belong to one thread.
    CReferenceList<IResourceIs> streams;
    for (int i = 0; i < kReaders; ++i) {
        auto stream = CreateAs<IResourceIs>(classid::CResourceIs);
        stream->SetResource(resource_.Get());
        streams.Adopt(stream.Detach());
    }
    CRefPtr<CMemoryInputStream> sources[2] = {Make<CMemoryInputStream>(), Make<CMemoryInputStream>()};
    sources[0]->bytes = TBytes(kSize, 1);
    sources[1]->bytes = TBytes(kSize / 2, 2);
    const CInputStreamSelector selectors[2] = {sources[0].Get(), sources[1].Get()};

    std::atomic<bool> isDone = false;
    std::atomic<int> torn = 0;
    CLatch start(kReaders + 1);
    std::vector<std::thread> threads;
    for (int i = 0; i < kReaders; ++i) {
        threads.emplace_back([&, stream = streams[static_cast<std::size_t>(i)]] {
            start.ArriveAndWait();
            TBytes bytes(kSize);
            do {
                stream->Seek(0);
                const auto count = static_cast<std::ptrdiff_t>(stream->Read(bytes.data(), kSize));
                const bool isWhole =
                    std::all_of(bytes.begin(), bytes.begin() + count, [&](auto b) { return b == bytes[0]; });
                const bool isKnown =
                    count == 0 || (bytes[0] < 2 && count == kSize) || (bytes[0] == 2 && count == kSize / 2);
                if (!isWhole || !isKnown) ++torn;
                stream->Eof();
                resource_->GetModificationCount();
            } while (!isDone);
        });
    }
    start.ArriveAndWait();
    for (int i = 0; i < kRounds; ++i) {
        sources[i % 2]->position = 0;
        resource_->Load(selectors[i % 2]);
    }
    isDone = true;
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(resource_->GetModificationCount(), 1U + kRounds);
}

TEST_F(ResourceThreads, AppendedPiecesStayWhole) {
    constexpr int kWriters = 3;
    constexpr int kPieces = 300;
    constexpr std::size_t kPieceSize = 33;
    CReferenceList<IAppendingRos> streams;
    for (int i = 0; i < kWriters; ++i) {
        auto stream = CreateAs<IAppendingRos>(classid::CAppendingRos);
        stream->SetResource(resource_.Get());
        streams.Adopt(stream.Detach());
    }
    CLatch start(kWriters);
    std::vector<std::thread> threads;
    for (int i = 0; i < kWriters; ++i) {
        threads.emplace_back([&, i, stream = streams[static_cast<std::size_t>(i)]] {
            start.ArriveAndWait();
            const TBytes piece(kPieceSize, static_cast<std::uint8_t>(i));
            for (int n = 0; n < kPieces; ++n) stream->Write(piece.data(), piece.size());
        });
    }
    for (std::thread& thread : threads) thread.join();
    const TBytes bytes = BytesOf(*resource_);
    ASSERT_EQ(bytes.size(), kWriters * kPieces * kPieceSize);
    std::vector<int> pieces(kWriters);
    for (std::size_t at = 0; at < bytes.size(); at += kPieceSize) {
        ASSERT_LT(bytes[at], kWriters);
        ASSERT_TRUE(std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                                bytes.begin() + static_cast<std::ptrdiff_t>(at + kPieceSize),
                                [&](auto b) { return b == bytes[at]; }));
        ++pieces[bytes[at]];
    }
    EXPECT_EQ(pieces, std::vector<int>(kWriters, kPieces));
    EXPECT_EQ(resource_->GetModificationCount(), static_cast<std::uint32_t>(kWriters * kPieces));
}

} // namespace
} // namespace vorlund::test
