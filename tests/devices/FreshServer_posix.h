/// \file
/// An X server of a test's own.
#pragma once

#include <cstdio>
#include <cstring>
#include <string>
#include <xcb/xcb.h>

namespace vorlund::test {

/// An X server with two screens that nobody has used yet. It ends with its last client; this object is one.
class CFreshServer {
public:
    CFreshServer() {
        char number[16] = {};
        if (server_ && std::fgets(number, sizeof number, server_)) {
            number[std::strcspn(number, "\n")] = 0;
            display_ = std::string(":") + number;
            connection_ = xcb_connect(display_.c_str(), nullptr);
        }
    }
    CFreshServer(const CFreshServer&) = delete;
    CFreshServer& operator=(const CFreshServer&) = delete;
    ~CFreshServer() {
        if (connection_) xcb_disconnect(connection_);
        if (server_) pclose(server_);
    }

    xcb_connection_t* GetConnection() const { return connection_; }
    bool IsThere() const { return connection_ && xcb_connection_has_error(connection_) == 0; }
    const char* GetDisplay() const { return display_.c_str(); }

private:
    std::FILE* server_ = popen("exec Xvfb -displayfd 1 -terminate -nolisten tcp -screen 0 640x480x24 "
                               "-screen 1 800x600x24 2>/dev/null",
                               "r");
    std::string display_;
    xcb_connection_t* connection_ = nullptr;
};

} // namespace vorlund::test
