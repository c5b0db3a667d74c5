// The same bytes on every system: those that other programs have read on one of them.
#include "data/wav/SampleFiles.h"
#include "support/LibraryScope.h"

namespace vorlund::test {
namespace {

TEST(WavWriterSystems, WriteTheSameBytes) {
    const CLibraryScope library;
    // FNV-1a.
    std::uint64_t sum = 0xCBF29CE484222325;
    std::size_t count = 0;
    for (const TSampleFile& file : MakeSampleFiles()) {
        for (const std::uint8_t byte : file.bytes) sum = (sum ^ byte) * 0x100000001B3;
        count += file.bytes.size();
    }
    EXPECT_EQ(count, 67596u);
    EXPECT_EQ(sum, 9683945407128087496u);
}

} // namespace
} // namespace vorlund::test
