// Plug-in files that are damaged. What their headers show is refused before they are loaded; nothing is
// promised about damaged code, so those files are tried in child processes, which must only end.
#include <vorlund/PluginStore.h>

#include "api/plugins/TestPlugins.h"
#include "support/ChildProcess.h"
#include "support/DebugRecorder.h"
#include "support/LibraryScope.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

/// Whether these bytes are loaded as a plug-in, by this process.
bool Loads(const std::string& bytes) {
    const CPluginFolder folder;
    WriteFile(folder.PathOf("damaged"), bytes);
    CPluginStore store;
    store.AddPluginPath(folder.GetPath().c_str());
    store.LoadPlugin(VRL_L("damaged"));
    const bool isLoaded = store.IsPluginLoaded(VRL_L("damaged"));
    store.Close();
    return isLoaded;
}

class PluginDamage : public testing::Test {
protected:
    CLibraryScope library_;
    const std::string image_ = ReadFile(PluginFile("accepting"));
};

TEST_F(PluginDamage, WholeFileLoads) {
    EXPECT_TRUE(Loads(image_));
    EXPECT_TRUE(Loads(image_ + std::string(1000, 'x')));
}

TEST_F(PluginDamage, FilesThatWereCutShortAreRefused) {
    // What is loaded ends where the tables for linkers and debuggers begin, in the second half at the latest.
    const CDebugRecorder recorder;
    for (std::size_t size = 0; size < 1024; size += 13) EXPECT_FALSE(Loads(image_.substr(0, size))) << size;
    const std::size_t step = image_.size() / 64 + 1;
    for (std::size_t size = 1024; size < image_.size() / 4; size += step)
        EXPECT_FALSE(Loads(image_.substr(0, size))) << size;
    EXPECT_TRUE(recorder.GetEntries().empty());
}

TEST_F(PluginDamage, FilesOfOtherSystemsAreRefused) {
    const std::string heads[] = {
        std::string("\x7f"
                    "ELF\x01\x01\x01",
                    7),
        std::string("\x7f"
                    "ELF\x02\x01\x01",
                    7),
        std::string("\x7f"
                    "ELF\x01\x02\x01",
                    7),
        "MZ",
        "#!/bin/sh\n",
        std::string("\xCF\xFA\xED\xFE"),
    };
    for (const std::string& head : heads) {
        std::string bytes = image_;
        bytes.replace(0, head.size(), head);
        // The one that changes nothing is this system's own.
        EXPECT_EQ(Loads(bytes), bytes == image_) << head;
        EXPECT_FALSE(Loads(head + std::string(4096, '\0'))) << head;
    }
}

/// What came of damaged files 0, `step`, 2 * `step` ... in child processes.
struct TTally {
    int loaded = 0;
    int refused = 0;
    int ended = 0;
};

/// Damages one byte at a time from `first` on, `step` bytes apart, up to `end`. A child that the damage keeps
/// from ending is killed and counts as ended: the loader's own locks may be held for ever.
TTally Try(const fs::path& image, std::size_t first, std::size_t end, std::size_t step,
           TPluginScanMode mode = PLUGIN_SCAN_NONE) {
    const CPluginFolder folder;
    TTally tally;
    // A few trials at a time, so that a limit for them can be short.
    constexpr std::size_t kBatch = 64;
    const bool isScanned = mode == PLUGIN_SCAN_CHILD;
    // Each scan may take its own limit of 10 s.
    const std::chrono::seconds limit(isScanned ? 15 + 11 * kBatch : 15);
    while (first < end) {
        const std::size_t stop = std::min(end, first + kBatch * step);
        std::vector<std::string> arguments = {image.string(), folder.GetFolder().string(),
                                              std::to_string(first), std::to_string(stop),
                                              std::to_string(step)};
        if (isScanned) arguments.push_back("scan");
        const TChildEnd child = RunChild("damage_child", {.arguments = arguments, .limit = limit});
        const auto count = [&child](char mark) {
            return static_cast<int>(std::count(child.output.begin(), child.output.end(), mark));
        };
        const int loaded = count('L');
        const int refused = count('R');
        tally.loaded += loaded;
        tally.refused += refused;
        first += static_cast<std::size_t>(loaded + refused) * step;
        if (first >= stop) continue;
        // The child ended at this one, in any way: code that is damaged may as well return 0.
        EXPECT_EQ(child.output.find('.'), std::string::npos) << child.output;
        ++tally.ended;
        first += step;
    }
    return tally;
}

TEST_F(PluginDamage, DamagedHeadersAreRefusedOrHarmless) {
    // Each byte of the headers, turned over. The loader does not use the damaged byte of a file that it
    // loads.
    const std::size_t size = GetHeaderSize(image_);
    const TTally tally = Try(PluginFile("accepting"), 0, size, 1);
    EXPECT_EQ(tally.loaded + tally.refused + tally.ended, static_cast<int>(size));
    EXPECT_GT(tally.refused, 0);
    // PE headers hold some addresses that only the linker could check, such as where the image was meant to
    // lie.
    EXPECT_LE(tally.ended, static_cast<int>(size / 100));
}

TEST_F(PluginDamage, EveryTrialOfADamagedImageEnds) {
    const TTally tally = Try(PluginFile("accepting"), 0, image_.size(), 64);
    EXPECT_EQ(tally.loaded + tally.refused + tally.ended, static_cast<int>((image_.size() + 63) / 64));
    EXPECT_GT(tally.loaded, 0);
    EXPECT_GT(tally.refused, 0);
    std::printf("%d loaded, %d refused, %d ended the process\n", tally.loaded, tally.refused, tally.ended);
}

TEST_F(PluginDamage, NoDamagedImageEndsAProcessThatScans) {
    // Bytes of the test above, so some of them are deadly without a scan.
    const TTally tally = Try(PluginFile("accepting"), 0, image_.size(), kScanStep, PLUGIN_SCAN_CHILD);
    const auto trials = static_cast<int>((image_.size() + kScanStep - 1) / kScanStep);
    EXPECT_EQ(tally.loaded + tally.refused + tally.ended, trials);
#if defined(__SANITIZE_ADDRESS__) || defined(__aarch64__)
    // A damaged address may lead to memory of this process that the scan's does not have. Reading that is
    // harmless, but not for the sanitizer. A damaged instruction of AArch64 is mostly one with another
    // register, and what the caller left there may be a good address in the scan's process alone.
    EXPECT_LE(tally.ended, trials / 100);
#else
    EXPECT_EQ(tally.ended, 0);
#endif
    EXPECT_GT(tally.loaded, 0);
    std::printf("%d loaded, %d refused, %d ended the process\n", tally.loaded, tally.refused, tally.ended);
}

} // namespace
} // namespace vorlund::test
