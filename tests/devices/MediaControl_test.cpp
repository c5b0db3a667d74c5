// The default media control.
#include <vorlund/ClassIds.h>
#include <vorlund/MediaControl.h>
#include <vorlund/PropertyPage.h>
#include <vorlund/RefPtr.h>

#include "support/DebugRecorder.h"
#include "support/LibraryScope.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(MediaControl, AcceptsEverythingAndDoesNothing) {
    const CLibraryScope library;
    const CDebugRecorder recorder;
    const auto control = CreateAs<IMediaControl>(classid::CMediaControl);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(control->GetCapabilities(), 31U);
        EXPECT_EQ(control->GetDuration(), 0.0F);
        EXPECT_EQ(control->GetTime(), 0.0F);
        EXPECT_FALSE(control->IsPlaying());
        control->SetRate(2);
        control->SetRange(1, 2);
        control->Seek(1.5F);
        control->Play();
        EXPECT_FALSE(control->IsPlaying());
        EXPECT_EQ(control->GetTime(), 0.0F);
        control->Pause();
        control->Rewind();
        control->Stop();
    }
    EXPECT_TRUE(recorder.GetEntries().empty());
}

TEST(MediaControl, HasAllCapabilities) {
    EXPECT_EQ(MEDIA_CONTROL_CAPABILITY_PLAY | MEDIA_CONTROL_CAPABILITY_PAUSE | MEDIA_CONTROL_CAPABILITY_SEEK |
                  MEDIA_CONTROL_CAPABILITY_RANGE | MEDIA_CONTROL_CAPABILITY_RATE,
              31U);
}

} // namespace
} // namespace vorlund::test
