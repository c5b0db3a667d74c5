// What other programs can see of the video window.
#include <vorlund/ClassIds.h>
#include <vorlund/RefPtr.h>
#include <vorlund/VideoWindow.h>

#include "devices/WindowProbe.h"
#include "support/LibraryScope.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace vorlund::test {
namespace {

class CShownWindow {
public:
    CShownWindow() : window_(CreateAs<IVideoWindow>(classid::CVideoWindow)) { window_->Open(); }

    HWND GetHandle() const { return static_cast<HWND>(window_->GetHandle()); }
    IVideoWindow* Get() const { return window_.Get(); }

private:
    CLibraryScope library_;
    CRefPtr<IVideoWindow> window_;
};

TEST(VideoWindowWin32, ClassAndStyle) {
    const CShownWindow window;
    wchar_t name[64] = {};
    GetClassNameW(window.GetHandle(), name, 64);
    EXPECT_EQ(wstring(name), VRL_L("vorlund::CVideoWindow"));
    constexpr LONG_PTR kOverlapped = 0x00CF0000;
    EXPECT_EQ(GetWindowLongPtrW(window.GetHandle(), GWL_STYLE) & kOverlapped, kOverlapped);
    EXPECT_EQ(GetMenu(window.GetHandle()), nullptr);
    EXPECT_TRUE(IsWindowVisible(window.GetHandle()));
}

TEST(VideoWindowWin32, UserDataIsTheObject) {
    const CShownWindow window;
    EXPECT_EQ(reinterpret_cast<void*>(GetWindowLongPtrW(window.GetHandle(), GWLP_USERDATA)), window.Get());
}

TEST(VideoWindowWin32, AThreadOfItsOwn) {
    const CShownWindow window;
    EXPECT_NE(GetWindowThreadProcessId(window.GetHandle(), nullptr), GetCurrentThreadId());
}

TEST(VideoWindowWin32, ThePrivateMessageDestroysIt) {
    const CShownWindow window;
    const HWND handle = window.GetHandle();
    EXPECT_EQ(SendMessageW(handle, 0x8000, 0, 0), 0);
    EXPECT_FALSE(IsWindow(handle));
    EXPECT_TRUE(WaitUntil([&] { return window.GetHandle() == nullptr; }));
}

} // namespace
} // namespace vorlund::test
