// The child program that loads damaged plug-ins: the bytes FIRST, FIRST + STEP ... up to END of a file,
// turned over one at a time. Prints "L" for each that loaded, "R" for each that was refused, and "." at the
// end. One that ends the process, or does not come back, is the parent's to count.
//   damage_child FILE FOLDER FIRST END STEP [scan]
// With "scan" each is scanned by a process of its own first.
#include "api/plugins/LoadedModules.h"
#include "data/file/TemporaryFolder.h"
#include "support/DebugRecorder.h"
#include "support/EndProcess.h"

#include <vorlund/PluginStore.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

namespace vorlund::test {
namespace {

/// Ends the process when a trial takes far too long: its code runs in circles.
class CWatchdog {
public:
    explicit CWatchdog(std::chrono::seconds limit) : limit_(limit) {
        std::thread([this] {
            for (int last = -1; last != trial_;) {
                last = trial_;
                std::this_thread::sleep_for(limit_);
            }
            EndProcess(3);
        }).detach();
    }

    void Reset() { ++trial_; }

private:
    const std::chrono::seconds limit_;
    std::atomic<int> trial_ = 0;
};

int Run(const fs::path& file, const fs::path& folder, std::size_t first, std::size_t end, std::size_t step,
        TPluginScanMode mode) {
    EndProcessAtFaults();
    SilenceDebugMessages();
    const std::string image = ReadFile(file);
    // A scan has a limit of its own.
    auto& watchdog = *new CWatchdog(std::chrono::seconds(mode == PLUGIN_SCAN_CHILD ? 15 : 5));
    v.Init();
    for (std::size_t at = first; at < end; at += step) {
        // A name each: one that stayed in the process must not be taken for the next.
        const std::string name = "damaged" + std::to_string(at);
        const fs::path damaged = folder / (name + kPluginEnding);
        std::string bytes = image;
        bytes[at] = static_cast<char>(~bytes[at]);
        std::ofstream(damaged, std::ios::binary)
            .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        CPluginStore store;
        store.SetScanMode(mode);
        store.AddPluginPath(ToVorlund(folder).c_str());
        const wstring wide(name.begin(), name.end());
        store.LoadPlugin(wide.c_str());
        const bool isLoaded = store.IsPluginLoaded(wide.c_str());
        store.Close();
        std::fputs(isLoaded ? "L" : "R", stdout);
        std::fflush(stdout);
        watchdog.Reset();
        std::error_code ignored;
        fs::remove(damaged, ignored);
    }
    v.Close();
    std::fputs(".", stdout);
    std::fflush(stdout);
    EndProcess(0);
}

} // namespace
} // namespace vorlund::test

int main(int argc, char** argv) {
    if (argc != 6 && argc != 7) return 64;
    return vorlund::test::Run(argv[1], argv[2], std::stoul(argv[3]), std::stoul(argv[4]), std::stoul(argv[5]),
                              argc == 7 ? vorlund::PLUGIN_SCAN_CHILD : vorlund::PLUGIN_SCAN_NONE);
}
