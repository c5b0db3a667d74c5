// Keys by the layout of an X server of the test's own, and the keyboard as a window manager hands it out.
#include "vorlund/devices/XcbReply.h"

#include <vorlund/ClassIds.h>
#include <vorlund/RefPtr.h>

#include "devices/DisplayScope.h"
#include "devices/EventRecorder.h"
#include "devices/FreshServer_posix.h"
#include "support/LibraryScope.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

namespace vorlund::test {
namespace {

constexpr std::uint32_t kReleased = CEventRecorder::kReleased;

/// A key of the keyboard that the tests give symbols of their own.
constexpr xcb_keycode_t kKey = 200;
constexpr xcb_keycode_t kShift = 50;
constexpr xcb_keycode_t kEscape = 9;

class WindowEventsLayout : public testing::Test {
protected:
    void SetUp() override {
        if (!server_.IsThere()) GTEST_SKIP() << "no server to start";
        window_ = CreateAs<IVideoWindow>(classid::CVideoWindow);
        SetWindowHandler(*window_.Get(), &CEventRecorder::OnEvent, &recorder_);
    }
    ~WindowEventsLayout() noexcept override { window_.Reset(); }

    xcb_window_t GetWindow() const {
        return static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(window_->GetHandle()));
    }
    /// Gives the key symbols: without Shift and with it, the same of the second group, the same two with
    /// AltGr.
    void SetSymbols(std::vector<xcb_keysym_t> symbols) {
        xcb_change_keyboard_mapping(connection_, 1, kKey, static_cast<std::uint8_t>(symbols.size()),
                                    symbols.data());
        xcb_flush(connection_);
    }
    void Send(std::uint8_t type, xcb_keycode_t code, std::uint16_t state, xcb_timestamp_t time = 0) {
        Queue(type, code, state, time);
        xcb_flush(connection_);
    }
    void Queue(std::uint8_t type, xcb_keycode_t code, std::uint16_t state, xcb_timestamp_t time) {
        xcb_key_press_event_t event{};
        event.response_type = type;
        event.detail = code;
        event.event = GetWindow();
        event.state = state;
        event.time = time;
        xcb_send_event(connection_, 0, GetWindow(), XCB_EVENT_MASK_NO_EVENT,
                       reinterpret_cast<const char*>(&event));
    }
    /// What the key is told to be.
    std::uint32_t GetKey(std::uint16_t state) {
        recorder_.Clear();
        Send(XCB_KEY_PRESS, kKey, state);
        // The release has what the press had, whatever is held by then.
        Send(XCB_KEY_RELEASE, kKey, 0);
        if (!WaitUntil([&] { return recorder_.GetKeys().size() == 2; })) return 0;
        const auto keys = recorder_.GetKeys();
        EXPECT_EQ(keys[1], keys[0] | kReleased);
        return keys[0];
    }

    CFreshServer server_;
    CDisplayScope display_{server_.GetDisplay()};
    xcb_connection_t* connection_ = server_.GetConnection();
    CLibraryScope library_;
    CEventRecorder recorder_;
    CRefPtr<IVideoWindow> window_;
};

struct TLayoutRow {
    std::vector<xcb_keysym_t> symbols;
    std::uint16_t state;
    std::uint32_t key;
};

TEST_F(WindowEventsLayout, SymbolsAndModifiers) {
    constexpr std::uint16_t kSecondGroup = 1 << 13;
    const std::vector<xcb_keysym_t> latin{'q', 'Q', 0x06CA, 0x06EA, '@', 0x07D9};
    const std::vector<xcb_keysym_t> keypad{0xFF95, 0xFFB7};
    const TLayoutRow rows[] = {
        {latin, 0, 'q'},
        {latin, XCB_MOD_MASK_SHIFT, 'Q'},
        {latin, XCB_MOD_MASK_LOCK, 'Q'},
        {latin, XCB_MOD_MASK_LOCK | XCB_MOD_MASK_SHIFT, 'q'},
        {latin, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1, 'q'},
        {latin, kSecondGroup, 0x0439},
        {latin, kSecondGroup | XCB_MOD_MASK_SHIFT, 0x0419},
        {latin, XCB_MOD_MASK_5, '@'},
        {latin, XCB_MOD_MASK_5 | XCB_MOD_MASK_SHIFT, 0x03A9},
        // Without a symbol for AltGr.
        {{'q', 'Q'}, XCB_MOD_MASK_5, 'q'},
        // One of a pair stands for a letter's other half; of the second group, for both.
        {{'x'}, XCB_MOD_MASK_SHIFT, 'X'},
        {{'x'}, kSecondGroup, 'x'},
        {{'5', '%'}, XCB_MOD_MASK_LOCK, '5'},
        {keypad, 0, WINDOW_KEY_HOME},
        {keypad, XCB_MOD_MASK_2, '7'},
        {keypad, XCB_MOD_MASK_2 | XCB_MOD_MASK_SHIFT, WINDOW_KEY_HOME},
        {{0x01B1, 0x01A1}, 0, 0x0105},
        {{0x01B1, 0x01A1}, XCB_MOD_MASK_LOCK, 0x0104},
        {{0x06A4, 0x06B4}, XCB_MOD_MASK_SHIFT, 0x0404},
        {{0xE4, 0xC4}, XCB_MOD_MASK_SHIFT, 0xC4},
        {{0x20AC, 0x01002039}, 0, 0x20AC},
        {{0x20AC, 0x01002039}, XCB_MOD_MASK_SHIFT, 0x2039},
        {{0x05C7, 0x0CE0}, 0, 0x0627},
        {{0x05C7, 0x0CE0}, XCB_MOD_MASK_SHIFT, 0x05D0},
        {{0xFE20, 0xFFBF}, 0, WINDOW_KEY_TAB},
        {{0xFE20, 0xFFBF}, XCB_MOD_MASK_SHIFT, WINDOW_KEY_F1 + 1},
        {{0x1008FF14, 0xFFE1}, 0, WINDOW_KEY_OTHER},
        {{0, 0}, 0, WINDOW_KEY_OTHER},
    };
    for (const TLayoutRow& row : rows) {
        // At the opening; a change while the window is open is another test.
        SetSymbols(row.symbols);
        OwnReply(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
        window_->Open();
        EXPECT_EQ(GetKey(row.state), row.key) << std::hex << row.symbols[0] << ", " << row.state;
        window_->Close();
    }
}

TEST_F(WindowEventsLayout, ModifiersAreTold) {
    SetSymbols({'q', 'Q'});
    window_->Open();
    Send(XCB_KEY_PRESS, kKey, XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_2);
    Send(XCB_KEY_RELEASE, kKey, XCB_MOD_MASK_1);
    ASSERT_TRUE(WaitUntil([&] { return recorder_.GetKeys().size() == 2; }));
    EXPECT_EQ(recorder_.GetEvents(WINDOW_EVENT_KEY_PRESSED)[0].modifiers,
              WINDOW_MODIFIER_SHIFT | WINDOW_MODIFIER_CONTROL);
    const auto release = recorder_.GetEvents(WINDOW_EVENT_KEY_RELEASED)[0];
    EXPECT_EQ(release.modifiers, std::uint32_t{WINDOW_MODIFIER_ALT});
    EXPECT_EQ(release.key, std::uint32_t{'Q'});
}

TEST_F(WindowEventsLayout, FollowsAChange) {
    SetSymbols({'q', 'Q'});
    window_->Open();
    EXPECT_EQ(GetKey(0), std::uint32_t{'q'});
    SetSymbols({'a', 'A'});
    EXPECT_TRUE(WaitUntil([&] { return GetKey(0) == 'a'; }));
}

TEST_F(WindowEventsLayout, ARepetitionIsNoRelease) {
    SetSymbols({'q', 'Q'});
    window_->Open();
    Send(XCB_KEY_PRESS, kKey, 0, 1);
    // In one piece, as the server sends them.
    for (xcb_timestamp_t time = 2; time < 5; ++time) {
        Queue(XCB_KEY_RELEASE, kKey, 0, time);
        Queue(XCB_KEY_PRESS, kKey, 0, time);
    }
    xcb_flush(connection_);
    Send(XCB_KEY_RELEASE, kKey, 0, 5);
    Send(XCB_KEY_PRESS, kKey, 0, 6);
    Send(XCB_KEY_RELEASE, kKey, 0, 7);
    const std::vector<std::pair<std::uint32_t, std::uint32_t>> expected{
        {WINDOW_EVENT_KEY_PRESSED, 0}, {WINDOW_EVENT_KEY_PRESSED, 1},  {WINDOW_EVENT_KEY_PRESSED, 1},
        {WINDOW_EVENT_KEY_PRESSED, 1}, {WINDOW_EVENT_KEY_RELEASED, 0}, {WINDOW_EVENT_KEY_PRESSED, 0},
        {WINDOW_EVENT_KEY_RELEASED, 0}};
    WaitUntil([&] { return recorder_.GetKeys().size() == expected.size(); });
    std::vector<std::pair<std::uint32_t, std::uint32_t>> told;
    for (const TWindowEvent& event : recorder_.GetEvents())
        if (event.type == WINDOW_EVENT_KEY_PRESSED || event.type == WINDOW_EVENT_KEY_RELEASED)
            told.emplace_back(event.type, event.isRepeated);
    EXPECT_EQ(told, expected);
}

TEST_F(WindowEventsLayout, WithoutTheKeyboardNoKeyIsDown) {
    SetSymbols({'q', 'Q'});
    window_->Open();
    Send(XCB_KEY_PRESS, kKey, 0);
    xcb_focus_out_event_t event{};
    event.response_type = XCB_FOCUS_OUT;
    event.event = GetWindow();
    xcb_send_event(connection_, 0, GetWindow(), XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&event));
    xcb_flush(connection_);
    ASSERT_TRUE(WaitUntil([&] { return recorder_.GetKeys().size() == 2; }));
    EXPECT_EQ(recorder_.GetKeys(), (std::vector<std::uint32_t>{'q', 'q' | kReleased}));
}

/// A window manager that ends with this object.
class CManager {
public:
    explicit CManager(const char* display) : process_(fork()) {
        if (process_ != 0) return;
        setenv("DISPLAY", display, 1);
        // It has things to say about a system without a desktop.
        close(STDOUT_FILENO);
        close(STDERR_FILENO);
        execlp("openbox", "openbox", "--sm-disable", static_cast<char*>(nullptr));
        _exit(1);
    }
    CManager(const CManager&) = delete;
    CManager& operator=(const CManager&) = delete;
    ~CManager() {
        if (process_ <= 0) return;
        kill(process_, SIGTERM);
        waitpid(process_, nullptr, 0);
    }

private:
    const pid_t process_;
};

/// A server whose keyboard is typed on, with a window manager.
class WindowEventsManaged : public testing::Test {
protected:
    void SetUp() override {
        if (!HasOpenbox()) GTEST_SKIP() << "no window manager";
        server_ = std::make_unique<CFreshServer>();
        if (!server_->IsThere()) GTEST_SKIP() << "no server to start";
        display_ = std::make_unique<CDisplayScope>(server_->GetDisplay());
        manager_ = std::make_unique<CManager>(server_->GetDisplay());
        connection_ = server_->GetConnection();
        ASSERT_TRUE(WaitUntil([&] { return IsManaged(); }));
        window_ = CreateAs<IVideoWindow>(classid::CVideoWindow);
        SetWindowHandler(*window_.Get(), &CEventRecorder::OnEvent, &recorder_);
        window_->SetClientSize(200, 150);
        window_->Open();
    }
    ~WindowEventsManaged() noexcept override {
        window_.Reset();
        // A client of the server, which ends with the last one.
        manager_.reset();
        server_.reset();
    }

    static bool HasOpenbox() { return std::system("command -v openbox >/dev/null 2>&1") == 0; }
    xcb_window_t GetRoot() const { return xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root; }
    xcb_atom_t FindAtom(std::string_view name) const {
        const auto asked =
            xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
        const auto reply = OwnReply(xcb_intern_atom_reply(connection_, asked, nullptr));
        return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    }
    bool IsFramed(xcb_window_t window) const {
        const auto tree =
            OwnReply(xcb_query_tree_reply(connection_, xcb_query_tree(connection_, window), nullptr));
        return tree && tree->parent != GetRoot();
    }
    /// Whether a new window is looked after. One that comes while the window manager starts may be overlooked
    /// for ever, so each question has a window of its own.
    bool IsManaged() const {
        const xcb_window_t window = xcb_generate_id(connection_);
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, GetRoot(), 0, 0, 10, 10, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_map_window(connection_, window);
        bool isFramed = false;
        for (int i = 0; i < 50 && !isFramed; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            isFramed = IsFramed(window);
        }
        xcb_destroy_window(connection_, window);
        xcb_flush(connection_);
        return isFramed;
    }
    xcb_window_t GetWindow() const {
        return static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(window_->GetHandle()));
    }
    bool HasKeyboard() const {
        const auto reply =
            OwnReply(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
        return reply && reply->focus == GetWindow();
    }
    /// As from the keyboard itself.
    void Type(xcb_keycode_t code) {
        Strike(XCB_KEY_PRESS, code);
        Strike(XCB_KEY_RELEASE, code);
    }
    void Strike(std::uint8_t type, xcb_keycode_t code) {
        xcb_test_fake_input(connection_, type, code, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        xcb_flush(connection_);
    }
    void Ask(std::string_view type, std::uint32_t first) {
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = GetWindow();
        message.type = FindAtom(type);
        message.data.data32[0] = first;
        xcb_send_event(connection_, 0, GetRoot(),
                       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                       reinterpret_cast<const char*>(&message));
        xcb_flush(connection_);
    }

    CLibraryScope library_;
    CEventRecorder recorder_;
    std::unique_ptr<CManager> manager_;
    std::unique_ptr<CDisplayScope> display_;
    std::unique_ptr<CFreshServer> server_;
    xcb_connection_t* connection_ = nullptr;
    CRefPtr<IVideoWindow> window_;
};

TEST_F(WindowEventsManaged, IsFramedAndGetsTheKeyboard) {
    EXPECT_TRUE(WaitUntil([&] { return HasKeyboard(); }));
    EXPECT_TRUE(WaitUntil([&] { return recorder_.HasSize(200, 150); }));
    EXPECT_TRUE(IsFramed(GetWindow()));
    Strike(XCB_KEY_PRESS, kShift);
    Type(kEscape);
    Strike(XCB_KEY_RELEASE, kShift);
    ASSERT_TRUE(WaitUntil([&] { return recorder_.GetKeys().size() == 4; }));
    EXPECT_EQ(recorder_.GetKeys(), (std::vector<std::uint32_t>{WINDOW_KEY_OTHER, WINDOW_KEY_ESCAPE,
                                                               WINDOW_KEY_ESCAPE | kReleased, kReleased}));
    EXPECT_EQ(recorder_.GetEvents(WINDOW_EVENT_KEY_PRESSED)[1].modifiers,
              std::uint32_t{WINDOW_MODIFIER_SHIFT});
}

TEST_F(WindowEventsManaged, TheCloseButton) {
    ASSERT_TRUE(WaitUntil([&] { return HasKeyboard(); }));
    Ask("_NET_CLOSE_WINDOW", 0);
    EXPECT_TRUE(WaitUntil([&] { return recorder_.Has(WINDOW_EVENT_CLOSED); }));
    EXPECT_EQ(window_->GetHandle(), nullptr);
}

TEST_F(WindowEventsManaged, AnotherSize) {
    ASSERT_TRUE(WaitUntil([&] { return HasKeyboard(); }));
    window_->SetClientSize(333, 222);
    EXPECT_TRUE(WaitUntil([&] { return recorder_.HasSize(333, 222); }));
    ResizeWindowByUser(window_->GetHandle(), 250, 260);
    EXPECT_TRUE(WaitUntil([&] { return recorder_.HasSize(250, 260); }));
}

} // namespace
} // namespace vorlund::test
