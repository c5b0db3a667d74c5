// The command "plasma".
#include "Command.h"
#include "Diagnostics.h"
#include "Interrupt.h"
#include "Progress.h"
#include "VideoFrames.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Generators.h>
#include <vorlund/RefPtr.h>

#include <CLI/CLI.hpp>

#include <charconv>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using namespace vorlund;

namespace {

constexpr std::uint32_t kLargestSide = 16384;
constexpr std::uint32_t kMostFrames = 1000000;

/// What the command line asked for.
struct TPlasmaOptions {
    std::string size = "400x300";
    /// One second.
    std::uint32_t frames = 30;
    /// UTF-8 file name.
    std::string output;
};

struct TSize {
    std::uint32_t width;
    std::uint32_t height;
};

/// "640x480".
std::optional<TSize> ParseSize(std::string_view text) {
    TSize size{};
    const char* const end = text.data() + text.size();
    const auto width = std::from_chars(text.data(), end, size.width);
    if (width.ec != std::errc() || width.ptr == end || *width.ptr != 'x') return std::nullopt;
    const auto height = std::from_chars(width.ptr + 1, end, size.height);
    if (height.ec != std::errc() || height.ptr != end) return std::nullopt;
    const auto isSide = [](std::uint32_t side) { return side >= 1 && side <= kLargestSide; };
    if (!isSide(size.width) || !isSide(size.height)) return std::nullopt;
    return size;
}

bool EndsWith(std::string_view name, std::string_view extension) {
    return name.size() > extension.size() && CLI::detail::to_lower(std::string(name)).ends_with(extension);
}

std::string CheckSize(const std::string& text) {
    return ParseSize(text) ? "" : "needs a size like 640x480, at most 16384x16384, not " + text;
}

std::string CheckOutput(const std::string& name) {
    return EndsWith(name, ".png") || EndsWith(name, ".y4m")
               ? ""
               : "needs a name that ends in .png or .y4m, not " + name;
}

void RunPlasma(const TPlasmaOptions& options) {
    const TSize size = *ParseSize(options.size);
    const auto generator = CreateAs<IPlasmaVideoGenerator>(classid::CPlasmaVideoGenerator);
    TDataFormat_VideoRgb format;
    format.SetDefaults();
    format.image.width = size.width;
    format.image.height = size.height;
    generator->SetFormat(&format);

    std::vector<std::uint32_t> frame(std::size_t{size.width} * size.height);
    const std::uint64_t frameSize = frame.size() * sizeof frame[0];
    const auto output = EndsWith(options.output, ".png")
                            ? MakePngFrames(options.output, size.width, size.height, options.frames)
                            : MakeY4mFrames(options.output, size.width, size.height);
    CProgress progress(options.frames * frameSize);
    const CInterrupt interrupt;
    for (std::uint32_t i = 0; i < options.frames; ++i) {
        generator->Read(frame.data(), frameSize);
        output->Write(frame.data());
        progress.Show((i + 1) * frameSize);
        if (interrupt.IsRaised()) throw TProgramError{VRL_L("Interrupted")};
    }
    output->Finish();
}

} // namespace

void AddPlasmaCommand(CLI::App& program, TCommand& command) {
    const auto options = std::make_shared<TPlasmaOptions>();
    CLI::App* const plasma =
        program.add_subcommand("plasma", "Make an animated plasma, 30 frames per second");
    plasma->add_option("--size", options->size, "Width and height in pixels (default 400x300)")
        ->check(CLI::Validator(&CheckSize, "WxH"));
    plasma->add_option("--frames", options->frames, "Number of frames (default 30)")
        ->check(CLI::Range(1u, kMostFrames));
    plasma
        ->add_option(
            "-o,--output", options->output,
            "Write numbered PNG files when the name ends in .png (plasma.png: plasma-0001.png, ...), or one "
            "YUV4MPEG2 file when it ends in .y4m")
        ->required()
        ->check(CLI::Validator(&CheckOutput, "NAME"));
    plasma->callback([options, &command] { command = [options](CDiagnostics&) { RunPlasma(*options); }; });
}
