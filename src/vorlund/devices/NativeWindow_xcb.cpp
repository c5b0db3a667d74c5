// Windows of the X Window System, by the core protocol and the conventions of clients with window managers
// (ICCCM 4.1 and 4.2.8, EWMH `_NET_WM_NAME`).
#include "vorlund/api/text/StackArena.h"
#include "vorlund/api/text/Utf8.h"
#include "vorlund/devices/NativeWindow.h"
#include "vorlund/devices/WindowEvents.h"
#include "vorlund/devices/XcbKeyboard.h"
#include "vorlund/devices/XcbLibrary.h"
#include "vorlund/devices/XcbReply.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>
#include <utility>

namespace vorlund {
namespace {

struct TAtoms {
    xcb_atom_t wmProtocols;
    xcb_atom_t wmDeleteWindow;
    xcb_atom_t netWmName;
    xcb_atom_t utf8String;
    /// Our own message: any thread may send it, and the window's thread destroys the window.
    xcb_atom_t destroy;
};

constexpr TWindowSize kDefaultSize{640, 480};
/// The protocol counts sizes in 16 bits, and servers take no more than this.
constexpr int kMaxSize = 32767;

constexpr std::uint8_t kResponseTypeMask = 0x7F;

class CNativeWindowXcb final : public CNativeWindow {
public:
    CNativeWindowXcb(const TXcbLibrary& xcb, CWindowEvents& events) : xcb_(xcb), events_(events) {}
    ~CNativeWindowXcb() override {
        if (connection_) xcb_.xcb_disconnect(connection_);
    }

    bool Open(const wchar* title);

    void* GetHandle() const override { return reinterpret_cast<void*>(std::uintptr_t{window_}); }
    TWindowSize GetOuterSize(TWindowSize client) const override { return client; }
    void Resize(TWindowSize outer) override;
    void SetTitle(const wchar* title) override;
    void SetOwner(void*) override {}
    void Destroy() override;
    void RunLoop() override;

private:
    const xcb_screen_t& FindScreen(int number) const;
    void FindAtoms();
    bool IsEndAsked(const xcb_client_message_event_t& message) const;
    void TellSizeAtFirst();
    void TellKey(const xcb_key_press_event_t& press);
    void TellReleasedKey(const xcb_key_release_event_t& release);
    /// False when that was the last one.
    bool TakeEvent(const xcb_generic_event_t& event);

    const TXcbLibrary& xcb_;
    CWindowEvents& events_;
    CXcbKeyboard keyboard_{xcb_};
    /// One that was looked at too early.
    CXcbReply<xcb_generic_event_t> next_;
    xcb_connection_t* connection_ = nullptr;
    xcb_window_t window_ = 0;
    TAtoms atoms_{};
};

bool CNativeWindowXcb::Open(const wchar* title) {
    int screenNumber = 0;
    connection_ = xcb_.xcb_connect(nullptr, &screenNumber);
    if (xcb_.xcb_connection_has_error(connection_)) return false;
    const xcb_screen_t& screen = FindScreen(screenNumber);
    FindAtoms();
    window_ = xcb_.xcb_generate_id(connection_);
    const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_EXPOSURE |
                                 XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE |
                                 XCB_EVENT_MASK_FOCUS_CHANGE;
    const xcb_void_cookie_t created =
        xcb_.xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, screen.root, 0, 0,
                               std::uint16_t{kDefaultSize.width}, std::uint16_t{kDefaultSize.height}, 0,
                               XCB_WINDOW_CLASS_INPUT_OUTPUT, screen.root_visual, XCB_CW_EVENT_MASK, &events);
    xcb_.xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, atoms_.wmProtocols, XCB_ATOM_ATOM,
                             32, 1, &atoms_.wmDeleteWindow);
    // That it wants the keyboard: some window managers give it to no other.
    constexpr std::uint32_t kHints[9] = {1, 1};
    xcb_.xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_HINTS,
                             XCB_ATOM_WM_HINTS, 32, std::size(kHints), kHints);
    SetTitle(title);
    xcb_.xcb_map_window(connection_, window_);
    const auto error = OwnReply(xcb_.xcb_request_check(connection_, created));
    return !error && !xcb_.xcb_connection_has_error(connection_);
}

const xcb_screen_t& CNativeWindowXcb::FindScreen(int number) const {
    // There is one of that number, or there would be no connection.
    auto screens = xcb_.xcb_setup_roots_iterator(xcb_.xcb_get_setup(connection_));
    for (; number > 0; --number) xcb_.xcb_screen_next(&screens);
    return *screens.data;
}

void CNativeWindowXcb::FindAtoms() {
    struct TRow {
        const char* name;
        xcb_atom_t TAtoms::*atom;
    };
    constexpr TRow kRows[] = {
        {"WM_PROTOCOLS", &TAtoms::wmProtocols}, {"WM_DELETE_WINDOW", &TAtoms::wmDeleteWindow},
        {"_NET_WM_NAME", &TAtoms::netWmName},   {"UTF8_STRING", &TAtoms::utf8String},
        {"_VORLUND_DESTROY", &TAtoms::destroy},
    };
    for (const TRow& row : kRows) {
        const auto asked =
            xcb_.xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(row.name)), row.name);
        const auto reply = OwnReply(xcb_.xcb_intern_atom_reply(connection_, asked, nullptr));
        if (reply) atoms_.*row.atom = reply->atom;
    }
}

void CNativeWindowXcb::Resize(TWindowSize outer) {
    const std::uint32_t size[] = {static_cast<std::uint32_t>(std::clamp(outer.width, 1, kMaxSize)),
                                  static_cast<std::uint32_t>(std::clamp(outer.height, 1, kMaxSize))};
    xcb_.xcb_configure_window(connection_, window_, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size);
    xcb_.xcb_flush(connection_);
}

void CNativeWindowXcb::SetTitle(const wchar* title) {
    CStackArena arena;
    std::pmr::string text(arena.Get());
    AppendUtf8(text, title);
    // The first is for window managers of today, the second for old ones and for tools that list windows.
    for (const xcb_atom_t name : {atoms_.netWmName, xcb_atom_t{XCB_ATOM_WM_NAME}}) {
        xcb_.xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, name, atoms_.utf8String, 8,
                                 static_cast<std::uint32_t>(text.size()), text.data());
    }
    xcb_.xcb_flush(connection_);
}

void CNativeWindowXcb::Destroy() {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window_;
    message.type = atoms_.destroy;
    // An empty event mask sends it to the client that created the window: this connection.
    xcb_.xcb_send_event(connection_, 0, window_, XCB_EVENT_MASK_NO_EVENT,
                        reinterpret_cast<const char*>(&message));
    xcb_.xcb_flush(connection_);
}

bool CNativeWindowXcb::IsEndAsked(const xcb_client_message_event_t& message) const {
    if (message.window != window_) return false;
    return message.type == atoms_.destroy ||
           (message.type == atoms_.wmProtocols && message.data.data32[0] == atoms_.wmDeleteWindow);
}

void CNativeWindowXcb::TellSizeAtFirst() {
    const auto asked = xcb_.xcb_get_geometry(connection_, window_);
    const auto reply = OwnReply(xcb_.xcb_get_geometry_reply(connection_, asked, nullptr));
    if (reply) events_.TellSize({reply->width, reply->height});
}

void CNativeWindowXcb::TellKey(const xcb_key_press_event_t& press) {
    events_.TellPressed(press.detail, keyboard_.GetKey(press.detail, press.state), GetModifiers(press.state));
}

void CNativeWindowXcb::TellReleasedKey(const xcb_key_release_event_t& release) {
    // A key that is held is repeated as a release and a press of the same moment. What the server has said by
    // now is there behind an answer of it.
    OwnReply(xcb_.xcb_get_geometry_reply(connection_, xcb_.xcb_get_geometry(connection_, window_), nullptr));
    next_ = OwnReply(xcb_.xcb_poll_for_event(connection_));
    if (next_ && (next_->response_type & kResponseTypeMask) == XCB_KEY_PRESS) {
        const auto& press = reinterpret_cast<const xcb_key_press_event_t&>(*next_);
        if (press.detail == release.detail && press.time == release.time) return;
    }
    events_.TellReleased(release.detail, GetModifiers(release.state));
}

bool CNativeWindowXcb::TakeEvent(const xcb_generic_event_t& event) {
    switch (event.response_type & kResponseTypeMask) {
    case XCB_DESTROY_NOTIFY:
        return false;
    case XCB_CLIENT_MESSAGE:
        if (IsEndAsked(reinterpret_cast<const xcb_client_message_event_t&>(event))) {
            xcb_.xcb_destroy_window(connection_, window_);
            xcb_.xcb_flush(connection_);
        }
        break;
    case XCB_CONFIGURE_NOTIFY: {
        const auto& change = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
        events_.TellSize({change.width, change.height});
        break;
    }
    case XCB_EXPOSE:
        // Further parts of the same follow unless it is 0.
        if (reinterpret_cast<const xcb_expose_event_t&>(event).count == 0) events_.TellExposed();
        break;
    case XCB_KEY_PRESS:
        TellKey(reinterpret_cast<const xcb_key_press_event_t&>(event));
        break;
    case XCB_KEY_RELEASE:
        TellReleasedKey(reinterpret_cast<const xcb_key_release_event_t&>(event));
        break;
    case XCB_FOCUS_OUT:
        events_.TellAllReleased();
        break;
    case XCB_MAPPING_NOTIFY:
        keyboard_.Load(connection_);
        break;
    default:
        break;
    }
    return true;
}

void CNativeWindowXcb::RunLoop() {
    keyboard_.Load(connection_);
    TellSizeAtFirst();
    for (;;) {
        const auto event = next_ ? std::move(next_) : OwnReply(xcb_.xcb_wait_for_event(connection_));
        // A lost connection ends it too: there is no event then.
        if (!event || !TakeEvent(*event)) return;
    }
}

} // namespace

std::unique_ptr<CNativeWindow> CNativeWindow::Create(const wchar* title, CWindowEvents& events) {
    const TXcbLibrary* const xcb = LoadXcb();
    if (!xcb) return nullptr;
    auto window = std::make_unique<CNativeWindowXcb>(*xcb, events);
    if (!window->Open(title)) return nullptr;
    return window;
}

} // namespace vorlund
