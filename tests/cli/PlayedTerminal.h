/// \file
/// Commands that play and record on a terminal of their own.
#pragma once

#include "cli/PlayCommand.h"

#include <csignal>
#include <sys/types.h>

namespace vorlund::test {

class PlayedTerminal : public PlayCommand {
protected:
    /// Silence of so many seconds; its name.
    std::string MakeLong(const std::string& name, std::size_t seconds = 600) const {
        return MakeWav(name, TBytes(seconds * kRate, 128), {.samplesPerSec = kRate, .bits = 8});
    }

    static TChildOptions OnTerminal(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "--no-plugins");
        return {.arguments = std::move(arguments), .hasTerminal = true, .isErrorTerminal = true};
    }

    /// The terminal of a child that has begun, before and while it reads keys.
    static void ExpectRaw(const CChildProcess& program, const std::string& before) {
        EXPECT_NE(program.GetTerminalSettings(), before);
    }

    static void Send(const CChildProcess& program, int signal) {
        EXPECT_EQ(kill(static_cast<pid_t>(program.GetProcessId()), signal), 0);
    }

    static constexpr std::uint32_t kRate = 1000;
};

} // namespace vorlund::test
