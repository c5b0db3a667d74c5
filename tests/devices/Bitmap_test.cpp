// What bitmaps add to the resource that they hold.
#include "data/resource/ResourceTest.h"

#include <vorlund/Bitmap.h>

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

class Bitmap : public CResourceTest {
protected:
    ~Bitmap() noexcept override {}

    CRefPtr<IBitmap> bitmap_ = CreateAs<IBitmap>(classid::CBitmap);
};

TEST_F(Bitmap, HasNoImageFormatAtFirst) {
    EXPECT_EQ(bitmap_->GetImageFormat(), nullptr);
}

TEST_F(Bitmap, ImageFormatIsTheResources) {
    TDataFormat_ImageRgb image;
    image.width = 3;
    image.height = 2;
    bitmap_->SetFormat(&image);
    ASSERT_NE(bitmap_->GetImageFormat(), nullptr);
    EXPECT_EQ(bitmap_->GetImageFormat(), bitmap_->GetFormat());
    EXPECT_EQ(bitmap_->GetImageFormat()->width, 3U);
    EXPECT_EQ(bitmap_->GetImageFormat()->height, 2U);
}

TEST_F(Bitmap, OtherFormatsAreNoImage) {
    TDataFormat_VideoRgb video;
    video.SetDefaults();
    bitmap_->SetFormat(&video);
    EXPECT_EQ(bitmap_->GetImageFormat(), nullptr);
    const TDataFormat cut = HeadOnly(TDataFormat_ImageRgb::FormatId);
    bitmap_->SetFormat(&cut);
    EXPECT_EQ(bitmap_->GetImageFormat(), nullptr);
}

} // namespace
} // namespace vorlund::test
