// The video window, on a real display: what the window system says about it.
#include <vorlund/ClassIds.h>
#include <vorlund/RefPtr.h>
#include <vorlund/VideoWindow.h>

#include "devices/WindowProbe.h"
#include "support/LibraryScope.h"

#include <gtest/gtest.h>

#include <optional>
#include <utility>
#include <vector>

namespace vorlund::test {
namespace {

CRefPtr<IVideoWindow> NewWindow() {
    return CreateAs<IVideoWindow>(classid::CVideoWindow);
}

/// Waits until the system reports the size of the inside.
testing::AssertionResult HasClientSize(IVideoWindow& window, int width, int height) {
    std::optional<TWindowView> view;
    const bool hasSize = WaitUntil([&] {
        view = LookAtWindow(window.GetHandle());
        return view && view->width == width && view->height == height;
    });
    if (hasSize) return testing::AssertionSuccess();
    if (!view) return testing::AssertionFailure() << "no window";
    return testing::AssertionFailure() << view->width << " x " << view->height;
}

bool HasTitle(IVideoWindow& window, const wstring& title) {
    return WaitUntil([&] {
        const auto view = LookAtWindow(window.GetHandle());
        return view && view->title == title;
    });
}

TEST(VideoWindowWithoutWindow, HasNoHandle) {
    const CLibraryScope library;
    const auto window = NewWindow();
    EXPECT_EQ(window->GetHandle(), nullptr);
}

TEST(VideoWindowWithoutWindow, CloseDoesNothing) {
    const CLibraryScope library;
    const auto window = NewWindow();
    window->Close();
    window->Close();
    EXPECT_EQ(window->GetHandle(), nullptr);
}

class VideoWindow : public testing::Test {
protected:
    void SetUp() override {
        if (!CanShowWindows()) GTEST_SKIP() << "no display";
        window_ = NewWindow().Detach();
    }
    void TearDown() override { Release(); }

    void Release() {
        if (IVideoWindow* const old = std::exchange(window_, nullptr)) old->Release();
    }

    CLibraryScope library_;
    IVideoWindow* window_ = nullptr;
};

TEST_F(VideoWindow, OpensWithItsDefaults) {
    window_->Open();
    ASSERT_NE(window_->GetHandle(), nullptr);
    EXPECT_TRUE(HasClientSize(*window_, 640, 480));
    EXPECT_TRUE(HasTitle(*window_, VRL_L("Vorlund Video Window")));
}

TEST_F(VideoWindow, OpensOnce) {
    window_->Open();
    void* const first = window_->GetHandle();
    window_->Open();
    EXPECT_EQ(window_->GetHandle(), first);
}

TEST_F(VideoWindow, CloseDestroysTheWindow) {
    window_->Open();
    void* const handle = window_->GetHandle();
    window_->Close();
    EXPECT_EQ(window_->GetHandle(), nullptr);
    EXPECT_FALSE(LookAtWindow(handle));
}

TEST_F(VideoWindow, OpensAgain) {
    for (int i = 0; i < 5; ++i) {
        window_->Open();
        ASSERT_NE(window_->GetHandle(), nullptr);
        EXPECT_TRUE(HasClientSize(*window_, 640, 480));
        window_->Close();
        ASSERT_EQ(window_->GetHandle(), nullptr);
    }
}

TEST_F(VideoWindow, TheUserClosesIt) {
    window_->Open();
    void* const handle = window_->GetHandle();
    CloseWindowByUser(handle);
    EXPECT_TRUE(WaitUntil([&] { return window_->GetHandle() == nullptr; }));
    EXPECT_FALSE(LookAtWindow(handle));
}

TEST_F(VideoWindow, OpensAgainAfterTheUserClosedIt) {
    window_->Open();
    CloseWindowByUser(window_->GetHandle());
    ASSERT_TRUE(WaitUntil([&] { return window_->GetHandle() == nullptr; }));
    window_->SetTitle(VRL_L("Second"));
    window_->Open();
    ASSERT_NE(window_->GetHandle(), nullptr);
    EXPECT_TRUE(HasTitle(*window_, VRL_L("Second")));
    EXPECT_TRUE(HasClientSize(*window_, 640, 480));
}

TEST_F(VideoWindow, CloseAfterTheUserClosedIt) {
    window_->Open();
    CloseWindowByUser(window_->GetHandle());
    // Whoever comes first, one of them closes it and both come back.
    window_->Close();
    EXPECT_EQ(window_->GetHandle(), nullptr);
}

TEST_F(VideoWindow, TheLastReleaseClosesIt) {
    window_->Open();
    void* const handle = window_->GetHandle();
    Release();
    EXPECT_FALSE(LookAtWindow(handle));
}

TEST_F(VideoWindow, ClientSizeBeforeOpen) {
    window_->SetClientSize(320, 240);
    window_->Open();
    EXPECT_TRUE(HasClientSize(*window_, 320, 240));
}

TEST_F(VideoWindow, ClientSizeWhileOpen) {
    window_->Open();
    window_->SetClientSize(200, 150);
    EXPECT_TRUE(HasClientSize(*window_, 200, 150));
    window_->SetClientSize(400, 300);
    EXPECT_TRUE(HasClientSize(*window_, 400, 300));
}

TEST_F(VideoWindow, WindowSizeIsTheOuterOne) {
    window_->Open();
    window_->SetWindowSize(500, 400);
    ASSERT_TRUE(WaitUntil([&] {
        const auto view = LookAtWindow(window_->GetHandle());
        return view && view->width <= 500 && view->height <= 400;
    }));
    const auto view = LookAtWindow(window_->GetHandle());
    EXPECT_GT(view->width, 400);
    EXPECT_GT(view->height, 300);
}

TEST_F(VideoWindow, ClientSizeThatWaitsGoesBeforeAWindowSize) {
    window_->SetWindowSize(500, 400);
    window_->Open();
    EXPECT_TRUE(HasClientSize(*window_, 640, 480));
}

TEST_F(VideoWindow, KeepsItsSizeForTheNextOpen) {
    window_->Open();
    window_->SetClientSize(220, 160);
    window_->Close();
    window_->Open();
    EXPECT_TRUE(HasClientSize(*window_, 220, 160));
}

TEST_F(VideoWindow, TitleBeforeOpen) {
    window_->SetTitle(VRL_L("Before"));
    window_->Open();
    EXPECT_TRUE(HasTitle(*window_, VRL_L("Before")));
}

TEST_F(VideoWindow, TitleWhileOpen) {
    window_->Open();
    window_->SetTitle(VRL_L("Gr\u00FC\u00DFe \u4E16"));
    EXPECT_TRUE(HasTitle(*window_, VRL_L("Gr\u00FC\u00DFe \u4E16")));
    window_->SetTitle(VRL_L(""));
    EXPECT_TRUE(HasTitle(*window_, VRL_L("")));
}

TEST_F(VideoWindow, SeveralAtATime) {
    std::vector<CRefPtr<IVideoWindow>> windows;
    for (int i = 0; i < 3; ++i) {
        windows.push_back(NewWindow());
        windows.back()->SetClientSize(200 + 20 * i, 100);
        windows.back()->Open();
    }
    // The others stay when the first goes.
    windows[0]->Close();
    EXPECT_TRUE(HasClientSize(*windows[1], 220, 100));
    windows[0]->Open();
    EXPECT_TRUE(HasClientSize(*windows[0], 200, 100));
    EXPECT_TRUE(HasClientSize(*windows[2], 240, 100));
}

TEST_F(VideoWindow, ASizeNobodyCanShowIsSafe) {
    window_->Open();
    for (const int size : {0, -1, 1 << 30, -2147483647 - 1, 2147483647}) {
        window_->SetWindowSize(size, size);
        window_->SetClientSize(size, size);
    }
    window_->SetClientSize(300, 200);
    EXPECT_TRUE(HasClientSize(*window_, 300, 200));
}

} // namespace
} // namespace vorlund::test
