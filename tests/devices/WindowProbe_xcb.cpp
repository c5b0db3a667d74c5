#include "devices/WindowProbe.h"

#include "vorlund/devices/XcbReply.h"

#include <vorlund/Path.h>
#include <vorlund/WindowEvents.h>

#include <xcb/xcb.h>

#include <cstring>
#include <string>

namespace vorlund::test {
namespace {

class CConnection {
public:
    CConnection() : connection_(xcb_connect(nullptr, nullptr)) {}
    CConnection(const CConnection&) = delete;
    CConnection& operator=(const CConnection&) = delete;
    ~CConnection() { xcb_disconnect(connection_); }

    bool IsOpen() const { return xcb_connection_has_error(connection_) == 0; }
    operator xcb_connection_t*() const { return connection_; }

    /// An answer to something later says that the server has taken what was sent; a connection that just goes
    /// may lose it.
    void Synchronise() const {
        OwnReply(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
    }

    xcb_atom_t FindAtom(const char* name) const {
        const auto asked =
            xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
        const auto reply = OwnReply(xcb_intern_atom_reply(connection_, asked, nullptr));
        return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    }

private:
    xcb_connection_t* connection_;
};

xcb_window_t ToWindow(void* handle) {
    return static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(handle));
}

wstring GetTitle(const CConnection& connection, xcb_window_t window) {
    const auto asked = xcb_get_property(connection, 0, window, connection.FindAtom("_NET_WM_NAME"),
                                        connection.FindAtom("UTF8_STRING"), 0, 1024);
    const auto reply = OwnReply(xcb_get_property_reply(connection, asked, nullptr));
    if (!reply) return {};
    const std::string title(static_cast<const char*>(xcb_get_property_value(reply.get())),
                            static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
    return PathFromUtf8(title.c_str());
}

} // namespace

bool CanShowWindows() {
    return CConnection().IsOpen();
}

void* FindWindowByTitle(const wstring& title) {
    const CConnection connection;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const auto tree = OwnReply(xcb_query_tree_reply(connection, xcb_query_tree(connection, root), nullptr));
    if (!tree) return nullptr;
    const xcb_window_t* const windows = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        if (GetTitle(connection, windows[i]) == title)
            return reinterpret_cast<void*>(std::uintptr_t{windows[i]});
    }
    return nullptr;
}

std::optional<TWindowView> LookAtWindow(void* handle) {
    const CConnection connection;
    const auto reply =
        OwnReply(xcb_get_geometry_reply(connection, xcb_get_geometry(connection, ToWindow(handle)), nullptr));
    if (!reply) return {};
    return TWindowView{GetTitle(connection, ToWindow(handle)), reply->width, reply->height};
}

void CloseWindowByUser(void* handle) {
    const CConnection connection;
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = ToWindow(handle);
    message.type = connection.FindAtom("WM_PROTOCOLS");
    message.data.data32[0] = connection.FindAtom("WM_DELETE_WINDOW");
    xcb_send_event(connection, 0, message.window, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&message));
    connection.Synchronise();
}

void ResizeWindowByUser(void* handle, int width, int height) {
    const CConnection connection;
    const std::uint32_t size[] = {static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
    xcb_configure_window(connection, ToWindow(handle), XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         size);
    connection.Synchronise();
}

namespace {

xcb_keysym_t ToSymbol(std::uint32_t key) {
    constexpr struct {
        std::uint32_t key;
        xcb_keysym_t symbol;
    } kNamed[] = {
        {WINDOW_KEY_ESCAPE, 0xFF1B},
        {WINDOW_KEY_ENTER, 0xFF0D},
        {WINDOW_KEY_TAB, 0xFF09},
        {WINDOW_KEY_BACKSPACE, 0xFF08},
        {WINDOW_KEY_DELETE, 0xFFFF},
        {WINDOW_KEY_LEFT, 0xFF51},
        {WINDOW_KEY_UP, 0xFF52},
        {WINDOW_KEY_RIGHT, 0xFF53},
        {WINDOW_KEY_DOWN, 0xFF54},
        {WINDOW_KEY_HOME, 0xFF50},
        {WINDOW_KEY_END, 0xFF57},
        {WINDOW_KEY_PAGE_UP, 0xFF55},
        {WINDOW_KEY_PAGE_DOWN, 0xFF56},
        {WINDOW_KEY_INSERT, 0xFF63},
        {WINDOW_KEY_F1, 0xFFBE},
        {WINDOW_KEY_F12, 0xFFC9},
        {'+', 0xFFAB},
    };
    for (const auto& row : kNamed)
        if (row.key == key) return row.symbol;
    return key;
}

xcb_keycode_t FindCode(const CConnection& connection, xcb_keysym_t symbol) {
    const xcb_setup_t* const setup = xcb_get_setup(connection);
    const int count = setup->max_keycode - setup->min_keycode + 1;
    const auto asked =
        xcb_get_keyboard_mapping(connection, setup->min_keycode, static_cast<std::uint8_t>(count));
    const auto reply = OwnReply(xcb_get_keyboard_mapping_reply(connection, asked, nullptr));
    if (!reply) return 0;
    const xcb_keysym_t* const symbols = xcb_get_keyboard_mapping_keysyms(reply.get());
    for (int i = 0; i < count; ++i)
        if (symbols[i * reply->keysyms_per_keycode] == symbol)
            return static_cast<xcb_keycode_t>(setup->min_keycode + i);
    return 0;
}

void SendKey(void* handle, std::uint32_t key, std::uint8_t type) {
    const CConnection connection;
    xcb_key_press_event_t event{};
    event.response_type = type;
    event.detail = FindCode(connection, ToSymbol(key));
    event.event = ToWindow(handle);
    event.same_screen = 1;
    xcb_send_event(connection, 0, event.event, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&event));
    connection.Synchronise();
}

} // namespace

void PressKey(void* handle, std::uint32_t key) {
    SendKey(handle, key, XCB_KEY_PRESS);
}

void ReleaseKey(void* handle, std::uint32_t key) {
    SendKey(handle, key, XCB_KEY_RELEASE);
}

void SpoilWindow(void* handle) {
    const CConnection connection;
    // It has no background of its own, so that of this one stays.
    const std::uint32_t white = 0xFFFFFF;
    xcb_change_window_attributes(connection, ToWindow(handle), XCB_CW_BACK_PIXEL, &white);
    xcb_clear_area(connection, 1, ToWindow(handle), 0, 0, 0, 0);
    connection.Synchronise();
}

std::optional<TWindowPixels> GetWindowPixels(void* handle) {
    const auto view = LookAtWindow(handle);
    if (!view) return {};
    const CConnection connection;
    const auto asked =
        xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, ToWindow(handle), 0, 0,
                      static_cast<std::uint16_t>(view->width), static_cast<std::uint16_t>(view->height), ~0u);
    const auto reply = OwnReply(xcb_get_image_reply(connection, asked, nullptr));
    TWindowPixels picture{view->width, view->height, {}};
    picture.pixels.resize(static_cast<std::size_t>(view->width) * static_cast<std::size_t>(view->height));
    const std::size_t size = picture.pixels.size() * 4;
    if (!reply || static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) < size) return {};
    std::memcpy(picture.pixels.data(), xcb_get_image_data(reply.get()), size);
    return picture;
}

} // namespace vorlund::test