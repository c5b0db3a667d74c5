// The command "plasma".
#include "Commands.h"
#include "Diagnostics.h"
#include "Interrupt.h"
#include "Progress.h"
#include "VideoFrames.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/PlasmaVideoGenerator.h>
#include <vorlund/RefPtr.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <string_view>
#include <vector>

using namespace vorlund;

namespace {

bool HasExtension(std::string_view name, std::string_view extension) {
    if (name.size() <= extension.size()) return false;
    return std::equal(extension.begin(), extension.end(),
                      name.end() - static_cast<std::ptrdiff_t>(extension.size()),
                      [](char lower, unsigned char letter) { return lower == std::tolower(letter); });
}

} // namespace

bool IsPngName(const std::string& name) {
    return HasExtension(name, ".png");
}
bool IsY4mName(const std::string& name) {
    return HasExtension(name, ".y4m");
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
    // The standard output takes a video.
    const auto output = IsPngName(options.output)
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
