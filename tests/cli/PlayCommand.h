/// \file
/// What the tests of the commands that play and record share.
#pragma once

#include "cli/DecodeCommand.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace vorlund::test {

/// The data of a WAV file, chunk by chunk; empty when it has none.
inline TBytes GetWavData(const TBytes& file) {
    const auto read = [&file](std::size_t at) {
        std::uint32_t value = 0;
        for (std::size_t i = 4; i-- > 0;) value = value << 8 | file[at + i];
        return value;
    };
    for (std::size_t at = 12; at + 8 <= file.size();) {
        const std::size_t size = read(at + 4);
        const std::size_t begin = at + 8;
        const std::size_t end = std::min(begin + size, file.size());
        if (std::string(file.begin() + static_cast<std::ptrdiff_t>(at),
                        file.begin() + static_cast<std::ptrdiff_t>(at + 4)) == "data")
            return {file.begin() + static_cast<std::ptrdiff_t>(begin),
                    file.begin() + static_cast<std::ptrdiff_t>(end)};
        at = begin + size + size % 2;
    }
    return {};
}

/// Runs "vorlund play" and its like on files in a folder of the test's own.
class PlayCommand : public DecodeCommand {
protected:
    /// A WAV file of the data; its name.
    std::string MakeWav(const std::string& name, const TBytes& data, const TWavFormat& format = {}) const {
        return Make(name, PlainWav(format, data));
    }

    static TChildEnd RunPlay(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "play");
        return Run(std::move(arguments));
    }

    /// Plays into a file; what is in it.
    TBytes PlayIntoFile(std::vector<std::string> arguments) const {
        arguments.insert(arguments.end(), {"--device", "file:" + At("out.wav")});
        const TChildEnd end = RunPlay(std::move(arguments));
        EXPECT_TRUE(end.IsSuccess()) << end.errors;
        EXPECT_EQ(end.errors, "");
        return GetWavData(Load("out.wav"));
    }

    static TBytes Join(const std::vector<TBytes>& parts) {
        TBytes all;
        for (const TBytes& part : parts) all.insert(all.end(), part.begin(), part.end());
        return all;
    }

    static double SecondsSince(std::chrono::steady_clock::time_point begin) {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    }
};

} // namespace vorlund::test
