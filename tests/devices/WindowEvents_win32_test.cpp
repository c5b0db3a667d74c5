// Keys of Windows with modifiers, which messages alone do not have: typed into the system's input.
#include <vorlund/ClassIds.h>
#include <vorlund/RefPtr.h>

#include "devices/EventRecorder.h"
#include "support/LibraryScope.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace vorlund::test {
namespace {

constexpr std::uint32_t kReleased = CEventRecorder::kReleased;

class WindowEventsInput : public testing::Test {
protected:
    void SetUp() override {
        window_ = CreateAs<IVideoWindow>(classid::CVideoWindow);
        SetWindowHandler(*window_.Get(), &CEventRecorder::OnEvent, &recorder_);
        window_->Open();
        SetForegroundWindow(static_cast<HWND>(window_->GetHandle()));
        // Only what has the keyboard gets keys; a desktop that is in use may refuse it.
        if (!WaitUntil([&] { return GetForegroundWindow() == window_->GetHandle(); }))
            GTEST_SKIP() << "no keyboard";
    }
    ~WindowEventsInput() noexcept override { window_.Reset(); }

    static void Strike(BYTE virtualKey, bool isDown) {
        keybd_event(virtualKey, static_cast<BYTE>(MapVirtualKeyW(virtualKey, MAPVK_VK_TO_VSC)),
                    isDown ? 0 : KEYEVENTF_KEYUP, 0);
    }
    /// The events of a key between those of a modifier.
    std::vector<TWindowEvent> TypeWith(BYTE modifier, BYTE virtualKey) {
        recorder_.Clear();
        Strike(modifier, true);
        Strike(virtualKey, true);
        Strike(virtualKey, false);
        Strike(modifier, false);
        WaitUntil([&] { return recorder_.GetKeys().size() == 4; });
        std::vector<TWindowEvent> events = recorder_.GetEvents(WINDOW_EVENT_KEY_PRESSED);
        const auto released = recorder_.GetEvents(WINDOW_EVENT_KEY_RELEASED);
        events.insert(events.end(), released.begin(), released.end());
        return events;
    }

    CLibraryScope library_;
    CEventRecorder recorder_;
    CRefPtr<IVideoWindow> window_;
};

TEST_F(WindowEventsInput, ModifiersAndCharacters) {
    struct TRow {
        BYTE modifier;
        BYTE virtualKey;
        std::uint32_t key;
        std::uint32_t modifiers;
    };
    const TRow rows[] = {{VK_SHIFT, 'A', 'A', WINDOW_MODIFIER_SHIFT},
                         {VK_CONTROL, 'A', 'a', WINDOW_MODIFIER_CONTROL},
                         {VK_CONTROL, '7', '7', WINDOW_MODIFIER_CONTROL},
                         {VK_CONTROL, VK_LEFT, WINDOW_KEY_LEFT, WINDOW_MODIFIER_CONTROL},
                         {VK_MENU, 'B', 'b', WINDOW_MODIFIER_ALT},
                         {VK_SHIFT, VK_F5, WINDOW_KEY_F1 + 4, WINDOW_MODIFIER_SHIFT}};
    for (const TRow& row : rows) {
        const std::vector<TWindowEvent> events = TypeWith(row.modifier, row.virtualKey);
        ASSERT_EQ(events.size(), 4u) << row.key;
        EXPECT_EQ(events[0].key, std::uint32_t{WINDOW_KEY_OTHER});
        EXPECT_EQ(events[1].key, row.key);
        EXPECT_EQ(events[1].modifiers, row.modifiers) << row.key;
        EXPECT_EQ(events[2].key, row.key);
    }
}

TEST_F(WindowEventsInput, WithoutTheKeyboardNoKeyIsDown) {
    Strike('Q', true);
    ASSERT_TRUE(WaitUntil([&] { return recorder_.GetKeys().size() == 1; }));
    const auto other = CreateAs<IVideoWindow>(classid::CVideoWindow);
    other->Open();
    SetForegroundWindow(static_cast<HWND>(other->GetHandle()));
    EXPECT_TRUE(WaitUntil([&] { return recorder_.GetKeys().size() == 2; }));
    Strike('Q', false);
    EXPECT_EQ(recorder_.GetKeys(), (std::vector<std::uint32_t>{'q', 'q' | kReleased}));
}

} // namespace
} // namespace vorlund::test
