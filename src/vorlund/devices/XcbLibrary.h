// libxcb, loaded when the first window opens, so that the library runs on systems without X packages.
#pragma once

#include <xcb/xcb.h>

namespace vorlund {

/// The functions of libxcb that are used here, under their own names.
struct TXcbLibrary {
#define VRL_XCB_FUNCTIONS(X)                                                                                 \
    X(xcb_change_property)                                                                                   \
    X(xcb_configure_window)                                                                                  \
    X(xcb_connect)                                                                                           \
    X(xcb_connection_has_error)                                                                              \
    X(xcb_create_window)                                                                                     \
    X(xcb_destroy_window)                                                                                    \
    X(xcb_disconnect)                                                                                        \
    X(xcb_flush)                                                                                             \
    X(xcb_generate_id)                                                                                       \
    X(xcb_get_geometry)                                                                                      \
    X(xcb_get_geometry_reply)                                                                                \
    X(xcb_get_keyboard_mapping)                                                                              \
    X(xcb_get_keyboard_mapping_keysyms)                                                                      \
    X(xcb_get_keyboard_mapping_keysyms_length)                                                               \
    X(xcb_get_keyboard_mapping_reply)                                                                        \
    X(xcb_get_setup)                                                                                         \
    X(xcb_intern_atom)                                                                                       \
    X(xcb_intern_atom_reply)                                                                                 \
    X(xcb_map_window)                                                                                        \
    X(xcb_poll_for_event)                                                                                    \
    X(xcb_request_check)                                                                                     \
    X(xcb_screen_next)                                                                                       \
    X(xcb_send_event)                                                                                        \
    X(xcb_setup_roots_iterator)                                                                              \
    X(xcb_wait_for_event)
#define VRL_XCB_DECLARE(name) decltype(&::name) name;
    VRL_XCB_FUNCTIONS(VRL_XCB_DECLARE)
#undef VRL_XCB_DECLARE
};

/// The loaded library, which stays loaded, or null when this system has none. Any thread.
const TXcbLibrary* LoadXcb() noexcept;

} // namespace vorlund
