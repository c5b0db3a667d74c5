// The command "plasma".
#include "Command.h"
#include "Diagnostics.h"
#include "Interrupt.h"
#include "Progress.h"
#include "VideoFrames.h"
#include "VideoSize.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/PlasmaVideoGenerator.h>
#include <vorlund/RefPtr.h>

#include <CLI/CLI.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

using namespace vorlund;

namespace {

constexpr std::uint32_t kMaxFrames = 1000000;

/// What the command line asked for.
struct TPlasmaOptions {
    TVideoSize size{400, 300};
    /// One second.
    std::uint32_t frames = 30;
    /// UTF-8 file name.
    std::string output;
};

bool EndsWith(std::string_view name, std::string_view extension) {
    return name.size() > extension.size() && CLI::detail::to_lower(std::string(name)).ends_with(extension);
}

std::string CheckOutput(const std::string& name) {
    return EndsWith(name, ".png") || EndsWith(name, ".y4m")
               ? ""
               : "needs a name that ends in .png or .y4m, not " + name;
}

void RunPlasma(const TPlasmaOptions& options) {
    const TVideoSize size = options.size;
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
    AddVideoSizeOption(*plasma, options->size);
    plasma->add_option("--frames", options->frames, "Number of frames (default 30)")
        ->check(CLI::Range(1u, kMaxFrames));
    plasma
        ->add_option(
            "-o,--output", options->output,
            "Write numbered PNG files when the name ends in .png (plasma.png: plasma-0001.png, ...), or one "
            "YUV4MPEG2 file when it ends in .y4m")
        ->required()
        ->check(CLI::Validator(&CheckOutput, "NAME"));
    plasma->callback([options, &command] { command = [options](CDiagnostics&) { RunPlasma(*options); }; });
}
