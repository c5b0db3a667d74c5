/// \file
/// A PulseAudio of a test's own, in a folder of its own, with outputs that nobody hears.
#pragma once

#include "data/file/TemporaryFolder.h"
#include "plugins/audio/Environment.h"

#include <optional>
#include <string>

namespace vorlund::test {

/// Programs of this process and that it starts find this server and no other. The outputs "One", the default
/// one, and "Two" have floats, two channels and 48,000 frames a second.
class CPulseServer {
public:
    CPulseServer();
    CPulseServer(const CPulseServer&) = delete;
    CPulseServer& operator=(const CPulseServer&) = delete;
    ~CPulseServer();

    /// Starts it again after `Kill`.
    void Start();
    /// Ends it as a crash would.
    void Kill();

    /// What `pactl` prints. The test fails when it fails.
    std::string Control(const std::string& arguments) const;
    /// Loads another output, which people see as `text`; returns the number of its module.
    std::string AddOutput(const std::string& name, const std::string& text) const;
    std::string AddOutput(const std::string& name) const { return AddOutput(name, name); }
    void RemoveModule(const std::string& number) const { Control("unload-module " + number); }

    /// The server's words, for tests that fail.
    std::string GetLog() const;

private:
    std::string GetServer() const { return "unix:" + (folder_.GetPath() / "socket").string(); }

    const CTemporaryFolder folder_;
    const CEnvironment environment_{{{"PULSE_SERVER", GetServer()},
                                     {"PULSE_RUNTIME_PATH", folder_.GetPath().string()},
                                     {"PULSE_COOKIE", (folder_.GetPath() / "cookie").string()},
                                     {"SDL_AUDIODRIVER", "pulseaudio"}}};
    int process_ = 0;
};

/// Runs a command of the shell; what it writes. The test fails when it fails.
std::string RunShell(const std::string& command);

} // namespace vorlund::test
