// Decoding when memory runs out.
#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/RefuseEachAllocation.h"
#include "support/Streams.h"
#include "support/WavBuilder.h"

#include <vorlund/DataFormat.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Vorlund.h>

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(WavDecoderOutOfMemory, NothingIsLeft) {
    const CLibraryScope library;
    const auto stream = Make<CMemoryInputStream>();
    stream->bytes = CWavBuilder()
                        .Format({.channels = 2}, 18)
                        .Chunk("LIST", Ramp(10))
                        .Chunk("data", Ramp(20, 200))
                        .Build();
    std::uint64_t count = 0;
    const auto decode = [&] {
        const auto decoded = CRefPtr<IInputStream>::Adopt(
            v.GetCodecClassStore().DecodeStream(stream.Get(), TDataFormat_AudioPcm::FormatId));
        std::uint8_t block[256];
        count = decoded->Read(block, sizeof block);
    };
    // What is made once and kept is made here.
    decode();
    count = 0;
    EXPECT_GT(RefuseEachAllocation(decode,
                                   [&] {
                                       EXPECT_EQ(count, 0u);
                                       EXPECT_EQ(ReferencesOf(stream.Get()), 1);
                                   }),
              3u);
    EXPECT_EQ(count, 20u);
}

} // namespace
} // namespace vorlund::test
