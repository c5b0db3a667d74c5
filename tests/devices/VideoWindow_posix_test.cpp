// A system without a display.
#include <vorlund/ClassIds.h>
#include <vorlund/RefPtr.h>
#include <vorlund/VideoWindow.h>

#include "devices/DisplayScope.h"
#include "support/LibraryScope.h"

#include <gtest/gtest.h>

namespace vorlund::test {
namespace {

TEST(VideoWindowWithoutDisplay, OpenReturnsAndThereIsNoHandle) {
    const CDisplayScope display(":54321");
    const CLibraryScope library;
    const auto window = CreateAs<IVideoWindow>(classid::CVideoWindow);
    for (int i = 0; i < 3; ++i) {
        window->Open();
        EXPECT_EQ(window->GetHandle(), nullptr);
    }
    window->SetTitle(VRL_L("Title"));
    window->SetClientSize(10, 10);
    window->SetWindowSize(10, 10);
    window->Close();
    EXPECT_EQ(window->GetHandle(), nullptr);
}

} // namespace
} // namespace vorlund::test
