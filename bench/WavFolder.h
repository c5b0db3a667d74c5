// The WAV files of the benchmarks.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include <unistd.h>

namespace vorlund::bench {

/// A folder of WAV files among the system's temporary ones, removed at the end.
class CWavFolder {
public:
    CWavFolder()
        : path_(std::filesystem::temp_directory_path() / ("vorlund-bench-" + std::to_string(getpid()))) {
        std::filesystem::create_directory(path_);
    }
    CWavFolder(const CWavFolder&) = delete;
    CWavFolder& operator=(const CWavFolder&) = delete;
    ~CWavFolder() { std::filesystem::remove_all(path_); }

    /// Writes `data` as stereo integer samples of `bits` bits at 44100 Hz, after `extraChunks` other chunks;
    /// gives the path.
    std::string Write(const std::string& name, std::uint32_t bits, std::string_view data,
                      int extraChunks = 0) const {
        constexpr std::uint32_t kPcm = 1, kChannels = 2, kRate = 44100;
        const std::uint32_t align = kChannels * bits / 8;
        std::string head = "WAVEfmt " + Word(16) + Word(kPcm | kChannels << 16) + Word(kRate) +
                           Word(kRate * align) + Word(align | bits << 16);
        for (int i = 0; i < extraChunks; ++i) head += "note" + Word(64) + std::string(64, 'n');
        head += "data" + Word(data.size());
        return WriteBytes(name, "RIFF" + Word(head.size() + data.size()) + head + std::string(data));
    }

    /// Writes a file of anything.
    std::string WriteBytes(const std::string& name, std::string_view bytes) const {
        const std::string path = (path_ / name).string();
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }

private:
    /// Four bytes, the lowest first.
    static std::string Word(std::size_t value) {
        std::string bytes;
        for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(value >> shift & 0xFF);
        return bytes;
    }

    std::filesystem::path path_;
};

} // namespace vorlund::bench
