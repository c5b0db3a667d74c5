// The callback source when memory runs out.
#include "vorlund/data/sources/CbVideoSource.h"

#include "data/sources/EndlessSources.h"
#include "support/LibraryScope.h"
#include "support/RefuseEachAllocation.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <vector>

namespace vorlund::test {
namespace {

/// A source whose next frame has another size than the one that it has made.
class CbVideoSourceOutOfMemory : public testing::Test {
protected:
    ~CbVideoSourceOutOfMemory() noexcept override {}

    void SetNextFrame(std::uint32_t width, std::uint32_t height) {
        TDataFormat_VideoRgb format = VideoFormat(4, 2);
        source_->SetFormat(&format);
        ReadPixels(*source_, 8);
        format = VideoFormat(width, height);
        source_->SetFormat(&format);
    }

    CLibraryScope library_;
    CRefPtr<ICbVideoSource> source_ =
        CRefPtr<IObject>::Adopt(NewObject<CCbVideoSource>()).Query<ICbVideoSource>();
};

TEST_F(CbVideoSourceOutOfMemory, ARefusedFrameLeavesNoneAndMayBeTriedAgain) {
    SetNextFrame(100, 2);
    const CMemoryWatch watch;
    std::uint32_t pixel = 0;
    EXPECT_EQ(RefuseEachAllocation(
                  [&] { source_->Read(&pixel, 4); },
                  [&] { EXPECT_EQ(watch.GetLiveBlocks(), -1) << "the former frame was given back"; },
                  TKept::Other),
              1U);
    EXPECT_EQ(ReadPixels(*source_, 200), std::vector<std::uint32_t>(200, 0xFF000088));
}

TEST_F(CbVideoSourceOutOfMemory, ATooLargeFrameIsNotAskedFor) {
    for (const auto& [width, height] : kTooLargeSizes) {
        SetNextFrame(width, height);
        const CMemoryWatch watch;
        std::uint32_t pixel = 0;
        EXPECT_THROW(source_->Read(&pixel, 4), std::bad_alloc);
        EXPECT_EQ(watch.GetLiveBlocks(), -1);
    }
}

} // namespace
} // namespace vorlund::test
