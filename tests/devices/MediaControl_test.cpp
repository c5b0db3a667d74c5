// The default media control and the default property page.
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

TEST(PropertyPage, AgreesToEverything) {
    const CLibraryScope library;
    const CDebugRecorder recorder;
    const auto page = CreateAs<IPropertyPage>(classid::CPropertyPage);
    for (const std::uint32_t argument : {0U, 1U, 0xFFFFFFFFU}) {
        EXPECT_TRUE(page->Open(argument));
        EXPECT_TRUE(page->Apply(argument));
        EXPECT_TRUE(page->Reset(argument));
        EXPECT_TRUE(page->Close(argument));
    }
    EXPECT_TRUE(recorder.GetEntries().empty());
}

TEST(PropertyPage, ShowsAMessage) {
    const CLibraryScope library;
    const auto page = CreateAs<IPropertyPage>(classid::CPropertyPage);
    const CDebugRecorder recorder;
    EXPECT_FALSE(page->Show());
    const auto entries = recorder.GetEntries();
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].type, DEBUG_MESSAGE_BOX);
    EXPECT_EQ(Narrow(entries[0].text), "This is the default property page object");
}

} // namespace
} // namespace vorlund::test
