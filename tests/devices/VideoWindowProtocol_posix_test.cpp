// What window managers see of the video window.
#include "vorlund/devices/XcbReply.h"

#include <vorlund/ClassIds.h>
#include <vorlund/RefPtr.h>
#include <vorlund/VideoWindow.h>

#include "devices/DisplayScope.h"
#include "devices/FreshServer_posix.h"
#include "devices/WindowProbe.h"
#include "support/LibraryScope.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>
#include <xcb/xcb.h>

namespace vorlund::test {
namespace {

xcb_atom_t FindAtom(xcb_connection_t* connection, const char* name) {
    const auto asked = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    const auto reply = OwnReply(xcb_intern_atom_reply(connection, asked, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

/// The atoms in a property of a window.
std::vector<xcb_atom_t> GetAtoms(xcb_connection_t* connection, void* window, xcb_atom_t property) {
    const auto number = static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(window));
    const auto asked = xcb_get_property(connection, 0, number, property, XCB_ATOM_ATOM, 0, 16);
    const auto reply = OwnReply(xcb_get_property_reply(connection, asked, nullptr));
    if (!reply || reply->format != 32) return {};
    const auto* const first = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get()));
    return {first, first + reply->value_len};
}

class VideoWindowProtocol : public testing::Test {
protected:
    void SetUp() override {
        if (!CanShowWindows()) GTEST_SKIP() << "no display";
    }

    CLibraryScope library_;
};

TEST_F(VideoWindowProtocol, AsksToBeToldThatTheUserClosesIt) {
    const auto window = CreateAs<IVideoWindow>(classid::CVideoWindow);
    window->Open();
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    EXPECT_EQ(GetAtoms(connection, window->GetHandle(), FindAtom(connection, "WM_PROTOCOLS")),
              std::vector{FindAtom(connection, "WM_DELETE_WINDOW")});
    xcb_disconnect(connection);
}

TEST_F(VideoWindowProtocol, OpensAsSmallAsAPixel) {
    for (const auto& [width, height] : {std::pair{1, 100}, {100, 1}, {1, 1}}) {
        const auto window = CreateAs<IVideoWindow>(classid::CVideoWindow);
        window->SetClientSize(width, height);
        window->Open();
        EXPECT_TRUE(WaitUntil([&, w = width, h = height] {
            const auto view = LookAtWindow(window->GetHandle());
            return view && view->width == w && view->height == h;
        })) << width
            << " x " << height;
    }
}

TEST_F(VideoWindowProtocol, SizesWithoutAWidthOrAHeightAreNone) {
    for (const auto& [width, height] : {std::pair{100, 0}, {0, 100}, {0, 0}}) {
        for (const bool isClientSize : {false, true}) {
            const auto window = CreateAs<IVideoWindow>(classid::CVideoWindow);
            if (isClientSize)
                window->SetClientSize(width, height);
            else
                window->SetWindowSize(width, height);
            window->Open();
            const auto view = LookAtWindow(window->GetHandle());
            ASSERT_TRUE(view);
            EXPECT_EQ(std::pair(view->width, view->height), std::pair(640, 480)) << width << " x " << height;
        }
    }
}

/// Sends a message of a kind, about the window or about another one, as other programs may.
void SendMessage(xcb_connection_t* connection, void* window, bool isAboutIt, const char* type,
                 std::uint32_t data) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    const auto number = static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(window));
    message.window = isAboutIt ? number : number + 1;
    message.type = FindAtom(connection, type);
    message.data.data32[0] = data;
    xcb_send_event(connection, 0, number, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&message));
}

TEST_F(VideoWindowProtocol, OnlyTheMessageThatTheUserClosesItClosesIt) {
    const auto window = CreateAs<IVideoWindow>(classid::CVideoWindow);
    window->Open();
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    const xcb_atom_t close = FindAtom(connection, "WM_DELETE_WINDOW");
    SendMessage(connection, window->GetHandle(), false, "WM_PROTOCOLS", close);
    SendMessage(connection, window->GetHandle(), true, "WM_PROTOCOLS", FindAtom(connection, "WM_TAKE_FOCUS"));
    SendMessage(connection, window->GetHandle(), true, "_NET_WM_STATE", close);
    // Behind these in the order of the server: had one closed the window, this size would be nobody's.
    window->SetClientSize(321, 123);
    EXPECT_TRUE(WaitUntil([&] {
        const auto view = LookAtWindow(window->GetHandle());
        return view && view->width == 321 && view->height == 123;
    }));
    SendMessage(connection, window->GetHandle(), true, "WM_PROTOCOLS", close);
    xcb_flush(connection);
    EXPECT_TRUE(WaitUntil([&] { return !LookAtWindow(window->GetHandle()); }));
    xcb_disconnect(connection);
}

TEST(VideoWindowProtocolFirst, BringsTheNamesOfItsProperties) {
    const CFreshServer server;
    if (!server.IsThere()) GTEST_SKIP() << "no server to start";
    const CDisplayScope display(server.GetDisplay());
    const CLibraryScope library;
    const auto window = CreateAs<IVideoWindow>(classid::CVideoWindow);
    window->SetTitle(VRL_L("First"));
    window->Open();
    const auto view = LookAtWindow(window->GetHandle());
    ASSERT_TRUE(view);
    EXPECT_EQ(view->title, VRL_L("First"));
}

TEST(VideoWindowProtocolScreens, OpensOnTheScreenThatTheDisplayNames) {
    const CFreshServer server;
    if (!server.IsThere()) GTEST_SKIP() << "no server to start";
    const CLibraryScope library;
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(server.GetConnection()));
    ASSERT_EQ(screens.rem, 2);
    for (int number = 0; screens.rem > 0; xcb_screen_next(&screens), ++number) {
        const CDisplayScope display((server.GetDisplay() + ("." + std::to_string(number))).c_str());
        const auto window = CreateAs<IVideoWindow>(classid::CVideoWindow);
        window->Open();
        const auto handle = static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(window->GetHandle()));
        const auto asked = xcb_get_geometry(server.GetConnection(), handle);
        const auto reply = OwnReply(xcb_get_geometry_reply(server.GetConnection(), asked, nullptr));
        ASSERT_TRUE(reply) << number;
        EXPECT_EQ(reply->root, screens.data->root) << number;
    }
    const CDisplayScope display((server.GetDisplay() + std::string(".2")).c_str());
    const auto window = CreateAs<IVideoWindow>(classid::CVideoWindow);
    window->Open();
    EXPECT_EQ(window->GetHandle(), nullptr);
}

} // namespace
} // namespace vorlund::test
