// Opens the library, lets several threads use it and closes it, again and again, and shows that memory,
// handles and threads stay as they are. Ends with 1 when they grow or when the library does not do what it
// should.
#include "soak/SoakUsage.h"
#include "soak/SoakWork.h"
#include "support/Leaks.h"

#include <vorlund/Debug.h>
#include <vorlund/Exception.h>
#include <vorlund/Vorlund.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>
#include <thread>
#include <vector>

namespace vorlund::soak {
namespace {

using TClock = std::chrono::steady_clock;

constexpr const char* kUsage =
    "usage: vorlund_soak [OPTION NUMBER]...\n"
    "  --decodes, --devices, --waits, --loads   until each has been done that often\n"
    "  --seconds                                for that long instead\n"
    "  --threads                                at once, 4 by default\n";

/// What a thread does in a round. Each round loads the plug-in once.
constexpr TCounts kPart{25, 3, 1, 0};
constexpr std::size_t kMaxSamples = 1000;
/// What the plug-in store keeps of each plug-in that it has loaded, with what an allocator adds; and what a
/// sanitizer keeps of each module and each thread.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr long long kBytesPerLoad = 65536;
#else
constexpr long long kBytesPerLoad = 160;
#endif

struct TOptions {
    TCounts goal{1000000, 10000, 10000, 10000};
    long long seconds = 0;
    long long threads = 4;
    long long leak = 0;
};

bool ReadOptions(int argc, char** argv, TOptions& options) {
    const struct {
        const char* name;
        long long& number;
    } all[] = {{"--decodes", options.goal.decodes},
               {"--devices", options.goal.devices},
               {"--waits", options.goal.waits},
               {"--loads", options.goal.loads},
               {"--seconds", options.seconds},
               {"--threads", options.threads},
               {"--leak", options.leak}};
    for (int index = 1; index < argc; index += 2) {
        const auto* const option = std::find_if(std::begin(all), std::end(all), [&](const auto& one) {
            return !std::strcmp(one.name, argv[index]);
        });
        if (option == std::end(all) || index + 1 == argc) return false;
        char* end = nullptr;
        option->number = std::strtoll(argv[index + 1], &end, 10);
        if (*end || option->number < 0) return false;
    }
    return options.threads > 0;
}

/// The reports of what fails, which is part of the work.
void Ignore(TDebugMessageType, const wchar*, void*) {}

std::string TextOf(const CException& error) {
    char text[1024];
    error.ToString().ToChar(text, sizeof text);
    return text;
}

/// One round; the text says what went wrong in a thread.
std::string DoRound(const CInputFile& file, long long threadCount) {
    v.Init();
    if (!v.GetPluginStore().IsPluginLoaded(VRL_L("soak_plugin"))) {
        v.Close();
        return "the plug-in is not loaded";
    }
    std::vector<std::string> errors(static_cast<std::size_t>(threadCount));
    {
        TShared shared(file);
        std::vector<std::thread> threads;
        for (std::string& error : errors) {
            threads.emplace_back([&] {
                try {
                    DoPart(shared, kPart);
                } catch (const CException& raised) {
                    error = TextOf(raised);
                } catch (const std::exception& raised) {
                    error = raised.what();
                }
            });
        }
        for (std::thread& thread : threads) thread.join();
    }
    v.Close();
    std::string all;
    for (const std::string& error : errors) all += error;
    return all;
}

bool IsDone(const TCounts& done, const TOptions& options, TClock::time_point start) {
    if (options.seconds) return TClock::now() - start >= std::chrono::seconds(options.seconds);
    const TCounts& goal = options.goal;
    return done.decodes >= goal.decodes && done.devices >= goal.devices && done.waits >= goal.waits &&
           done.loads >= goal.loads;
}

/// Time between two samples: rare enough to cost nothing, and often enough for a short run.
TClock::duration IntervalOf(const TOptions& options) {
    if (!options.seconds) return std::chrono::milliseconds(200);
    return std::chrono::milliseconds(options.seconds * 1000) / kMaxSamples + std::chrono::milliseconds(20);
}

/// Written to, so that the process has it.
void Leak(long long bytes) {
    const test::CExpectedLeak leak;
    if (bytes) std::memset(std::malloc(static_cast<std::size_t>(bytes)), 1, static_cast<std::size_t>(bytes));
}

int Run(const TOptions& options, const std::filesystem::path& program) {
    for (const TDebugMessageType type :
         {DEBUG_MESSAGE_OUTPUT, DEBUG_MESSAGE_BOX, DEBUG_MESSAGE_STDOUT, DEBUG_MESSAGE_STDERR})
        CDebug::SetHandler(type, &Ignore);
    v.GetPluginStore().AddPluginPath(WidePath(program.parent_path() / "soakplugins").c_str());
    const CInputFile file;
    CGrowth growth;
    TCounts done{};
    const auto start = TClock::now();
    auto nextSample = start;
    while (!IsDone(done, options, start)) {
        const std::string error = DoRound(file, options.threads);
        if (!error.empty()) {
            std::printf("failed in round %lld: %s\n", done.loads, error.c_str());
            return 1;
        }
        done.decodes += options.threads * (kPart.decodes + 1);
        done.devices += options.threads * kPart.devices;
        done.waits += options.threads * kPart.waits * 3;
        ++done.loads;
        if (TClock::now() < nextSample) continue;
        Leak(options.leak);
        growth.Sample();
        nextSample = TClock::now() + IntervalOf(options);
    }
    if (!growth.HasEnough()) {
        std::printf("too short a run to say anything\n");
        return 1;
    }
    const TUsage first = growth.GetFirst();
    const TUsage last = growth.GetLast();
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(TClock::now() - start).count();
    const std::string grown = growth.Describe(done.loads * kBytesPerLoad);
    std::printf("decodes %lld\tdevices %lld\twaits %lld\tloads %lld\tseconds %lld\tKiB %lld to %lld\t"
                "handles %lld to %lld\tthreads %lld to %lld\t%s\n",
                done.decodes, done.devices, done.waits, done.loads, static_cast<long long>(seconds),
                static_cast<long long>(first.memory / 1024), static_cast<long long>(last.memory / 1024),
                static_cast<long long>(first.handles), static_cast<long long>(last.handles),
                static_cast<long long>(first.threads), static_cast<long long>(last.threads),
                grown.empty() ? "flat" : "grown");
    std::fputs(grown.c_str(), stdout);
    return grown.empty() ? 0 : 1;
}

} // namespace
} // namespace vorlund::soak

int main(int argc, char** argv) {
    vorlund::soak::TOptions options;
    if (!vorlund::soak::ReadOptions(argc, argv, options)) {
        std::fputs(vorlund::soak::kUsage, stderr);
        return 2;
    }
    return vorlund::soak::Run(options, std::filesystem::absolute(argv[0]));
}
