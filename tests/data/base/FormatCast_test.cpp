#include <vorlund/FormatCast.h>

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(FormatCasts, GiveTheRecordThatItIs) {
    const TDataFormat_AudioPcm pcm(SAMPLE_FORMAT_FLOAT, 2, 48000);
    const TDataFormat& format = pcm;
    EXPECT_EQ(FormatCast<TDataFormat_AudioPcm>(format), &pcm);
    EXPECT_EQ(FormatCast<TDataFormat_ImageRgb>(format), nullptr);
    const TDataFormat_VideoRgb video;
    EXPECT_EQ(FormatCast<TDataFormat_VideoRgb>(static_cast<const TDataFormat&>(video)), &video);
}

TEST(FormatCasts, RefuseASmallerRecord) {
    EXPECT_EQ(FormatCast<TDataFormat_AudioPcm>(TDataFormat{}), nullptr);
    EXPECT_EQ(FormatCast<TDataFormat_AudioPcm>(TDataFormat{TDataFormat_AudioPcm::FormatId, 20}), nullptr);
    TDataFormat_AudioPcm longer;
    longer.size = 100;
    EXPECT_EQ(FormatCast<TDataFormat_AudioPcm>(longer), &longer);
}

} // namespace
} // namespace vorlund::test
