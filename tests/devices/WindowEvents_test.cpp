// What happens to a window, as its handler is told, on every system.
#include <vorlund/ClassIds.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/RefPtr.h>

#include "devices/EventRecorder.h"
#include "support/LibraryScope.h"

#include <gtest/gtest.h>

#include <atomic>

namespace vorlund::test {
namespace {

constexpr std::uint32_t kReleased = CEventRecorder::kReleased;

class WindowEvents : public testing::Test {
protected:
    ~WindowEvents() noexcept override { window_.Reset(); }

    void SetUp() override {
        if (!CanShowWindows()) GTEST_SKIP() << "no display";
        window_ = CreateAs<IVideoWindow>(classid::CVideoWindow);
        ASSERT_TRUE(SetWindowHandler(*window_.Get(), &CEventRecorder::OnEvent, &recorder_));
    }

    void Type(std::uint32_t key) {
        PressKey(window_->GetHandle(), key);
        ReleaseKey(window_->GetHandle(), key);
    }

    CLibraryScope library_;
    CEventRecorder recorder_;
    CRefPtr<IVideoWindow> window_;
};

TEST_F(WindowEvents, TheSizeAtFirst) {
    window_->SetClientSize(320, 240);
    window_->Open();
    ASSERT_TRUE(WaitUntil([&] { return recorder_.HasSize(320, 240); }));
    EXPECT_NE(recorder_.GetThread(), std::this_thread::get_id());
}

TEST_F(WindowEvents, EachNewSizeOnce) {
    window_->SetClientSize(320, 240);
    window_->Open();
    ASSERT_TRUE(WaitUntil([&] { return recorder_.HasSize(320, 240); }));
    recorder_.Clear();
    window_->SetClientSize(300, 200);
    ASSERT_TRUE(WaitUntil([&] { return recorder_.HasSize(300, 200); }));
    ResizeWindowByUser(window_->GetHandle(), 400, 350);
    ASSERT_TRUE(WaitUntil([&] {
        const auto view = LookAtWindow(window_->GetHandle());
        return view && view->width > 300 && recorder_.HasSize(view->width, view->height);
    }));
    // The same size once more is no event; the key that follows is.
    ResizeWindowByUser(window_->GetHandle(), 400, 350);
    Type(WINDOW_KEY_ESCAPE);
    ASSERT_TRUE(WaitUntil([&] { return recorder_.Has(WINDOW_EVENT_KEY_RELEASED); }));
    EXPECT_EQ(recorder_.GetEvents(WINDOW_EVENT_RESIZED).size(), 2u);
}

TEST_F(WindowEvents, AHeightOfItsOwn) {
    window_->SetClientSize(320, 240);
    window_->Open();
    ASSERT_TRUE(WaitUntil([&] { return recorder_.HasSize(320, 240); }));
    window_->SetClientSize(320, 200);
    EXPECT_TRUE(WaitUntil([&] { return recorder_.HasSize(320, 200); }));
}

TEST_F(WindowEvents, WhatMustBeDrawn) {
    window_->Open();
    EXPECT_TRUE(WaitUntil([&] { return recorder_.Has(WINDOW_EVENT_EXPOSED); }));
    ASSERT_TRUE(WaitUntil([&] { return recorder_.HasSize(640, 480); }));
    recorder_.Clear();
    window_->SetClientSize(700, 500);
    EXPECT_TRUE(WaitUntil([&] { return recorder_.Has(WINDOW_EVENT_EXPOSED); }));
}

TEST_F(WindowEvents, Keys) {
    window_->Open();
    const std::vector<std::uint32_t> keys{WINDOW_KEY_ESCAPE,
                                          WINDOW_KEY_ENTER,
                                          WINDOW_KEY_TAB,
                                          WINDOW_KEY_BACKSPACE,
                                          WINDOW_KEY_DELETE,
                                          WINDOW_KEY_LEFT,
                                          WINDOW_KEY_UP,
                                          WINDOW_KEY_RIGHT,
                                          WINDOW_KEY_DOWN,
                                          WINDOW_KEY_HOME,
                                          WINDOW_KEY_END,
                                          WINDOW_KEY_PAGE_UP,
                                          WINDOW_KEY_PAGE_DOWN,
                                          WINDOW_KEY_INSERT,
                                          WINDOW_KEY_F1,
                                          WINDOW_KEY_F12,
                                          WINDOW_KEY_SPACE,
                                          'a',
                                          'q',
                                          'z',
                                          '0',
                                          '9',
                                          '-',
                                          '+',
                                          '.'};
    std::vector<std::uint32_t> told;
    for (const std::uint32_t key : keys) {
        Type(key);
        told.push_back(key);
        told.push_back(key | kReleased);
    }
    WaitUntil([&] { return recorder_.GetKeys().size() == told.size(); });
    EXPECT_EQ(recorder_.GetKeys(), told);
    for (const TWindowEvent& event : recorder_.GetEvents(WINDOW_EVENT_KEY_PRESSED)) {
        EXPECT_EQ(event.modifiers, 0u);
        EXPECT_EQ(event.isRepeated, 0u);
        EXPECT_EQ(event.width, 640);
        EXPECT_EQ(event.height, 480);
    }
}

TEST_F(WindowEvents, AKeyThatIsHeldIsRepeated) {
    window_->Open();
    for (int i = 0; i < 3; ++i) PressKey(window_->GetHandle(), WINDOW_KEY_RIGHT);
    PressKey(window_->GetHandle(), 'a');
    ReleaseKey(window_->GetHandle(), WINDOW_KEY_RIGHT);
    // Of a key that is not down there is no release.
    ReleaseKey(window_->GetHandle(), WINDOW_KEY_RIGHT);
    ReleaseKey(window_->GetHandle(), 'a');
    const std::vector<std::uint32_t> told{
        WINDOW_KEY_RIGHT, WINDOW_KEY_RIGHT, WINDOW_KEY_RIGHT, 'a', WINDOW_KEY_RIGHT | kReleased,
        'a' | kReleased};
    WaitUntil([&] { return recorder_.GetKeys().size() == told.size(); });
    EXPECT_EQ(recorder_.GetKeys(), told);
    const auto presses = recorder_.GetEvents(WINDOW_EVENT_KEY_PRESSED);
    ASSERT_EQ(presses.size(), 4u);
    EXPECT_EQ(presses[0].isRepeated, 0u);
    EXPECT_EQ(presses[1].isRepeated, 1u);
    EXPECT_EQ(presses[2].isRepeated, 1u);
    EXPECT_EQ(presses[3].isRepeated, 0u);
}

TEST_F(WindowEvents, OfMoreKeysThanHandsHoldNoReleaseIsTold) {
    window_->Open();
    constexpr std::uint32_t kHeld = 16;
    std::vector<std::uint32_t> told;
    for (std::uint32_t i = 0; i < kHeld + 2; ++i) {
        PressKey(window_->GetHandle(), 'a' + i);
        told.push_back('a' + i);
    }
    for (std::uint32_t i = kHeld + 2; i-- > 0;) {
        ReleaseKey(window_->GetHandle(), 'a' + i);
        if (i < kHeld) told.push_back(('a' + i) | kReleased);
    }
    WaitUntil([&] { return recorder_.GetKeys().size() == told.size(); });
    EXPECT_EQ(recorder_.GetKeys(), told);
}

TEST_F(WindowEvents, TheUserClosesIt) {
    window_->Open();
    CloseWindowByUser(window_->GetHandle());
    ASSERT_TRUE(WaitUntil([&] { return recorder_.Has(WINDOW_EVENT_CLOSED); }));
    EXPECT_EQ(window_->GetHandle(), nullptr);
    EXPECT_EQ(recorder_.GetEvents().back().type, std::uint32_t{WINDOW_EVENT_CLOSED});
    // The next window has the same handler.
    recorder_.Clear();
    window_->SetClientSize(100, 300);
    window_->Open();
    EXPECT_TRUE(
        WaitUntil([&] { return recorder_.HasSize(100, 300) || recorder_.Has(WINDOW_EVENT_RESIZED); }));
    CloseWindowByUser(window_->GetHandle());
    EXPECT_TRUE(WaitUntil([&] { return recorder_.GetEvents(WINDOW_EVENT_CLOSED).size() == 1; }));
}

TEST_F(WindowEvents, CloseIsNotTheUser) {
    window_->Open();
    window_->Close();
    EXPECT_FALSE(recorder_.Has(WINDOW_EVENT_CLOSED));
    window_->Open();
    window_.Reset();
    EXPECT_FALSE(recorder_.Has(WINDOW_EVENT_CLOSED));
}

TEST_F(WindowEvents, NoHandlerNoEvents) {
    window_->Open();
    ASSERT_TRUE(WaitUntil([&] { return recorder_.Has(WINDOW_EVENT_RESIZED); }));
    ASSERT_TRUE(SetWindowHandler(*window_.Get(), nullptr));
    recorder_.Clear();
    Type('a');
    CEventRecorder second;
    Type('b');
    ASSERT_TRUE(SetWindowHandler(*window_.Get(), &CEventRecorder::OnEvent, &second));
    Type(WINDOW_KEY_ESCAPE);
    EXPECT_TRUE(WaitUntil([&] {
        const auto keys = second.GetKeys();
        return !keys.empty() && keys.back() == (WINDOW_KEY_ESCAPE | kReleased);
    }));
    EXPECT_TRUE(recorder_.GetEvents().empty());
    ASSERT_TRUE(SetWindowHandler(*window_.Get(), nullptr));
}

/// A handler that uses its window.
struct TClosingHandler {
    static void OnEvent(const TWindowEvent& event, void* user) {
        auto& self = *static_cast<TClosingHandler*>(user);
        if (event.type == WINDOW_EVENT_CLOSED) ++self.closed;
        if (event.type != WINDOW_EVENT_KEY_PRESSED) return;
        ++self.keys;
        self.handle = self.window->GetHandle();
        self.window->Close();
        // Nothing can wait for the window here.
        self.window->Open();
        self.window->Close();
    }
    IVideoWindow* window = nullptr;
    std::atomic<int> keys = 0;
    std::atomic<int> closed = 0;
    std::atomic<void*> handle = nullptr;
};

TEST_F(WindowEvents, AHandlerMayClose) {
    TClosingHandler handler;
    handler.window = window_.Get();
    ASSERT_TRUE(SetWindowHandler(*window_.Get(), &TClosingHandler::OnEvent, &handler));
    for (int i = 1; i <= 3; ++i) {
        window_->Open();
        void* const handle = window_->GetHandle();
        ASSERT_NE(handle, nullptr);
        PressKey(handle, WINDOW_KEY_ESCAPE);
        ASSERT_TRUE(WaitUntil([&] { return window_->GetHandle() == nullptr; }));
        EXPECT_EQ(handler.keys, i);
        EXPECT_EQ(handler.handle, handle);
        EXPECT_FALSE(LookAtWindow(handle));
    }
    window_->Close();
    EXPECT_EQ(handler.closed, 0);
}

/// A handler that takes itself away.
struct TOnceHandler {
    static void OnEvent(const TWindowEvent& event, void* user) {
        auto& self = *static_cast<TOnceHandler*>(user);
        if (event.type != WINDOW_EVENT_KEY_PRESSED) return;
        ++self.keys;
        SetWindowHandler(*self.window, &CEventRecorder::OnEvent, self.next);
    }
    IVideoWindow* window = nullptr;
    CEventRecorder* next = nullptr;
    std::atomic<int> keys = 0;
};

TEST_F(WindowEvents, AHandlerMayBeReplacedFromInside) {
    TOnceHandler handler;
    handler.window = window_.Get();
    handler.next = &recorder_;
    ASSERT_TRUE(SetWindowHandler(*window_.Get(), &TOnceHandler::OnEvent, &handler));
    window_->Open();
    Type('a');
    Type('b');
    ASSERT_TRUE(WaitUntil([&] { return recorder_.GetKeys().size() == 3; }));
    EXPECT_EQ(recorder_.GetKeys(), (std::vector<std::uint32_t>{'a' | kReleased, 'b', 'b' | kReleased}));
    EXPECT_EQ(handler.keys, 1);
}

/// A handler that takes its time, until it is let go.
struct TSlowHandler {
    static void OnEvent(const TWindowEvent& event, void* user) {
        auto& self = *static_cast<TSlowHandler*>(user);
        if (event.type != WINDOW_EVENT_KEY_PRESSED) return;
        self.isInside = true;
        WaitUntil([&] { return self.isLetGo.load(); });
        self.isInside = false;
    }
    std::atomic<bool> isInside = false;
    std::atomic<bool> isLetGo = false;
};

TEST_F(WindowEvents, NoHandlerRunsOnceItIsReplaced) {
    TSlowHandler handler;
    ASSERT_TRUE(SetWindowHandler(*window_.Get(), &TSlowHandler::OnEvent, &handler));
    window_->Open();
    PressKey(window_->GetHandle(), 'a');
    ASSERT_TRUE(WaitUntil([&] { return handler.isInside.load(); }));
    std::thread other([&] { handler.isLetGo = true; });
    SetWindowHandler(*window_.Get(), nullptr);
    EXPECT_FALSE(handler.isInside);
    other.join();
}

/// A class of somebody else, under the identifier of the library's.
class CForeignWindow : public CObjectImpl<IVideoWindow> {
public:
    static constexpr CId ClassId = classid::CVideoWindow;
    void Open() override {}
    void Close() override {}
    void* GetHandle() override { return nullptr; }
    void SetClientSize(int, int) override {}
    void SetWindowSize(int, int) override {}
    void SetTitle(const wchar*) override {}
};

/// The same under an identifier of its own.
class COtherWindow : public CForeignWindow {
public:
    static constexpr CId ClassId{0x7E57D0C5, 0x11D4A3B6, 0x90C2E7F1, 3};
};

TEST(WindowEventsForeign, KnowsNothingOfOtherClasses) {
    const CLibraryScope library;
    const auto other = CRefPtr<IObject>::Adopt(NewObject<COtherWindow>()).Query<IVideoWindow>();
    EXPECT_FALSE(SetWindowHandler(*other.Get(), nullptr));
    const auto window = CRefPtr<IObject>::Adopt(NewObject<CForeignWindow>()).Query<IVideoWindow>();
    CEventRecorder recorder;
    EXPECT_FALSE(SetWindowHandler(*window.Get(), &CEventRecorder::OnEvent, &recorder));
    const auto own = CreateAs<IVideoWindow>(classid::CVideoWindow);
    EXPECT_TRUE(SetWindowHandler(*own.Get(), &CEventRecorder::OnEvent, &recorder));
    EXPECT_TRUE(SetWindowHandler(*own.Get(), nullptr));
}

} // namespace
} // namespace vorlund::test
