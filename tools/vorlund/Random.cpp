// The command "random".
#include "Command.h"
#include "Diagnostics.h"
#include "Interrupt.h"
#include "OutputFile.h"
#include "Progress.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/RandomGenerator.h>
#include <vorlund/RefPtr.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

using namespace vorlund;

namespace {

constexpr std::uint32_t kBlockSize = 64 * 1024;

/// What the command line asked for.
struct TRandomOptions {
    std::uint64_t count = 0;
    std::uint32_t seed = 0;
    std::uint32_t repeat = 1;
    /// UTF-8 file name, or "-" for the standard output.
    std::string output = "-";
};

/// The parser's own conversion takes -1, and numbers that are too large, for very large ones.
std::string CheckCount(const std::string& text) {
    std::uint64_t count = 0;
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, count);
    return error == std::errc() && next == end ? "" : "needs a number of bytes, not " + text;
}

void RunRandom(const TRandomOptions& options) {
    const auto generator = CreateAs<IRandomGenerator>(classid::CRandomGenerator);
    generator->SetSeed(options.seed)->SetRepeatCount(options.repeat);
    const auto output = COutputFile::Create(options.output, true, {});
    CProgress progress(options.count);
    const CInterrupt interrupt;
    // Whole runs, because each read begins a new one.
    std::vector<std::uint8_t> block(kBlockSize / options.repeat * options.repeat);
    for (std::uint64_t done = 0; done < options.count;) {
        const std::uint64_t size = std::min<std::uint64_t>(options.count - done, block.size());
        output->Write(block.data(), generator->Read(block.data(), size));
        done += size;
        progress.Show(done);
        if (interrupt.IsRaised()) throw TProgramError{VRL_L("Interrupted")};
    }
    output->Finish();
}

} // namespace

void AddRandomCommand(CLI::App& program, TCommand& command) {
    const auto options = std::make_shared<TRandomOptions>();
    CLI::App* const random =
        program.add_subcommand("random", "Write pseudo-random bytes, the same for the same seed");
    random->add_option("count", options->count, "Number of bytes")
        ->required()
        ->check(CLI::Validator(&CheckCount, ""));
    random->add_option("--seed", options->seed, "Where the generator begins, 0 to 4294967295 (default 0)");
    random
        ->add_option("--repeat", options->repeat,
                     "How many bytes in a row share a value, 1 to 65536 (default 1)")
        ->check(CLI::Range(1u, kBlockSize));
    random->add_option("-o,--output", options->output,
                       "Write the bytes to this file; - for standard output, which is the default");
    random->callback([options, &command] { command = [options](CDiagnostics&) { RunRandom(*options); }; });
}
