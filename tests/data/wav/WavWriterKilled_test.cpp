// What is left of a recording whose process is killed.
#include "data/file/TemporaryFolder.h"
#include "data/wav/WavFile.h"
#include "support/ChildProcess.h"

#include <vorlund/WavRepair.h>

#include <chrono>
#include <random>
#include <thread>

namespace vorlund::test {
namespace {

class WavWriterKilled : public CFileTest {};

/// Header of the child's file.
constexpr std::size_t kHeader = 104;
constexpr std::size_t kFrame = 8;
/// How long the writer takes to see the time after the child did, on a busy machine.
constexpr std::uint32_t kSlack = 500;

struct TFrame {
    std::uint32_t number;
    std::uint32_t time;
};

/// The whole frames that are in the file.
std::vector<TFrame> ReadFrames(const TBytes& bytes) {
    std::vector<TFrame> frames((bytes.size() - kHeader) / kFrame);
    if (!frames.empty()) std::memcpy(frames.data(), bytes.data() + kHeader, frames.size() * kFrame);
    return frames;
}

TBytes Record(const fs::path& path, std::chrono::milliseconds length) {
    {
        const CChildProcess child("vorlund_wav_child", {.arguments = {path.string()}});
        const auto limit = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        std::error_code none;
        while (!fs::exists(path, none) || fs::file_size(path, none) < kHeader) {
            if (std::chrono::steady_clock::now() > limit) {
                ADD_FAILURE() << "The child writes no header";
                return {};
            }
            std::this_thread::yield();
        }
        // The moment of the kill is what is tested.
        std::this_thread::sleep_for(length);
    }
    const std::string text = ReadFile(path);
    return {text.begin(), text.end()};
}

TEST_F(WavWriterKilled, LosesAtMostASecond) {
    std::mt19937 random(std::random_device{}());
    for (int run = 0; run < 5; ++run) {
        const std::chrono::milliseconds length(std::uniform_int_distribution<int>(0, 2500)(random));
        SCOPED_TRACE(length.count());
        const fs::path path = At("recording-" + std::to_string(run) + ".wav");
        TBytes bytes = Record(path, length);
        ASSERT_GE(bytes.size(), kHeader);
        const std::size_t size = Number(bytes, kHeader - 4, 4);
        ASSERT_LE(kHeader + size, bytes.size());
        ASSERT_EQ(size % kFrame, 0u);
        EXPECT_EQ(Number(bytes, 4, 4), kHeader - 8 + size);

        const std::vector<TFrame> frames = ReadFrames(bytes);
        std::size_t wrong = 0;
        for (std::size_t i = 0; i < frames.size(); ++i) wrong += frames[i].number != i;
        EXPECT_EQ(wrong, 0u);
        const std::size_t told = size / kFrame;
        if (told < frames.size()) {
            EXPECT_LE(frames.back().time, (told == 0 ? 0 : frames[told - 1].time) + 1000 + kSlack);
        }

        // The rest is there, too, after a repair.
        RepairWav(ToVorlund(path).c_str());
        const std::string text = ReadFile(path);
        const TBytes mended(text.begin(), text.end());
        ASSERT_EQ(mended.size(), bytes.size());
        EXPECT_EQ(Number(mended, kHeader - 4, 4), frames.size() * kFrame);
        EXPECT_TRUE(std::equal(bytes.begin() + kHeader, bytes.end(), mended.begin() + kHeader));
        EXPECT_TRUE(RepairWav(ToVorlund(path).c_str()).changes.empty());
    }
}

} // namespace
} // namespace vorlund::test
