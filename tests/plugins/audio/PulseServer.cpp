#include "plugins/audio/PulseServer.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace vorlund::test {
namespace {

constexpr const char* kOutputOptions = " format=float32le channels=2 rate=48000 norewinds=1";

std::string MakeOutput(const std::string& name, const std::string& text) {
    return "module-null-sink sink_name=" + name + " sink_properties=device.description=" + text +
           kOutputOptions;
}

} // namespace

std::string RunShell(const std::string& command) {
    std::FILE* const pipe = popen(command.c_str(), "r");
    std::string text;
    std::array<char, 4096> block;
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), pipe))
        text.append(block.data(), count);
    EXPECT_EQ(pclose(pipe), 0) << command;
    return text;
}

CPulseServer::CPulseServer() {
    Start();
}

CPulseServer::~CPulseServer() {
    Kill();
}

void CPulseServer::Start() {
    const std::string folder = folder_.GetPath().string();
    fs::remove(folder_.GetPath() / "pid");
    fs::remove(folder_.GetPath() / "socket");
    // It returns when the server has started. One that a test has left ends when it has had no client for a
    // while.
    RunShell("env -u LD_PRELOAD HOME=" + folder + " XDG_RUNTIME_DIR=" + folder +
             " DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent pulseaudio -n --daemonize=yes"
             " --exit-idle-time=60 --disable-shm=yes --realtime=no --high-priority=no"
             " --log-target=newfile:" +
             folder + "/log -L \"module-native-protocol-unix socket=" + folder +
             "/socket auth-anonymous=1\" -L \"" + MakeOutput("One", "One") + "\" -L \"" +
             MakeOutput("Two", "Two") + "\" 2>>" + folder + "/start.log");
    process_ = std::atoi(ReadFile(folder_.GetPath() / "pid").c_str());
    EXPECT_GT(process_, 0) << GetLog();
}

void CPulseServer::Kill() {
    if (process_ <= 0) return;
    kill(process_, SIGKILL);
    process_ = 0;
}

std::string CPulseServer::Control(const std::string& arguments) const {
    return RunShell("pactl " + arguments);
}

std::string CPulseServer::AddOutput(const std::string& name, const std::string& text) const {
    return Control("load-module " + MakeOutput(name, text));
}

std::string CPulseServer::GetLog() const {
    return ReadFile(folder_.GetPath() / "start.log") + ReadFile(folder_.GetPath() / "log");
}

} // namespace vorlund::test
