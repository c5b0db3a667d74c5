// The generated sources when memory runs out, and what the painter makes of times that take years to reach.
#include "vorlund/data/sources/CbVideoSource.h"
#include "vorlund/data/sources/PlasmaPainter.h"
#include "vorlund/data/sources/PlasmaVideoGenerator.h"
#include "vorlund/data/sources/RandomGenerator.h"

#include "data/sources/EndlessSources.h"
#include "data/sources/PlasmaModel.h"
#include "support/Allocations.h"
#include "support/LibraryScope.h"

#include <new>

namespace vorlund::test {
namespace {

TEST(PlasmaPainter, LateTimes) {
    for (const std::uint32_t time : {255U, 256U, 511U, 1000000007U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        std::vector<std::uint32_t> pixels(33 * 21);
        PaintPlasma(pixels.data(), 33, 21, time);
        EXPECT_EQ(pixels, PlasmaFrame(33, 21, time)) << time;
    }
}

class SourceMemory : public testing::Test {
protected:
    CLibraryScope library_;
};

TEST_F(SourceMemory, ARefusedFrameLeavesNoneAndMayBeTriedAgain) {
    const auto source = CRefPtr<IObject>::Adopt(NewObject<CCbVideoSource>()).Query<ICbVideoSource>();
    TDataFormat_VideoRgb format = VideoFormat(4, 2);
    source->SetFormat(&format);
    ReadPixels(*source, 8);
    format = VideoFormat(100, 2);
    source->SetFormat(&format);
    const CMemoryWatch watch;
    std::uint32_t pixel = 0;
    for (int i = 0; i < 2; ++i) {
        bool hasRaised = false;
        {
            const CAllocationFailure failure(0);
            try {
                source->Read(&pixel, 4);
            } catch (const std::bad_alloc&) {
                hasRaised = true;
            }
        }
        EXPECT_TRUE(hasRaised);
        // The former frame was given back.
        EXPECT_EQ(watch.GetLiveBlocks(), -1);
    }
    EXPECT_EQ(ReadPixels(*source, 200), std::vector<std::uint32_t>(200, 0xFF000088));
}

TEST_F(SourceMemory, ATooLargeFrameIsNotAskedFor) {
    const auto source = CRefPtr<IObject>::Adopt(NewObject<CCbVideoSource>()).Query<ICbVideoSource>();
    for (const auto& [width, height] : kTooLargeSizes) {
        TDataFormat_VideoRgb format = VideoFormat(4, 2);
        source->SetFormat(&format);
        ReadPixels(*source, 8);
        format = VideoFormat(width, height);
        source->SetFormat(&format);
        const CMemoryWatch watch;
        std::uint32_t pixel = 0;
        EXPECT_THROW(source->Read(&pixel, 4), std::bad_alloc);
        EXPECT_EQ(watch.GetLiveBlocks(), -1);
    }
}

TEST_F(SourceMemory, WholePlasmaFramesNeedNone) {
    const auto source = CRefPtr<IObject>::Adopt(NewObject<CPlasmaVideoGenerator>()).Query<IInputStream>();
    std::vector<std::uint32_t> frame(400 * 300);
    const CAllocationCount count;
    for (int i = 0; i < 3; ++i) EXPECT_EQ(source->Read(frame.data(), 480000), 480000U);
    EXPECT_EQ(count.Get(), 0U);
}

TEST_F(SourceMemory, SourcesGiveBackWhatTheyTake) {
    const CMemoryWatch watch;
    for (IObject* const object :
         {NewObject<CCbVideoSource>(), NewObject<CPlasmaVideoGenerator>(), NewObject<CRandomGenerator>()}) {
        const auto source = CRefPtr<IObject>::Adopt(object).Query<IInputStream>();
        std::uint8_t bytes[16];
        source->Read(bytes, sizeof bytes);
    }
    EXPECT_EQ(watch.GetLiveBlocks(), 0);
}

} // namespace
} // namespace vorlund::test
