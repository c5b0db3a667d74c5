// The commands of the program: what the command line can ask of each, and its work. A command runs with the
// library open; it raises `TProgramError` and the library's exceptions. File names are UTF-8.
#pragma once

#include "PcmPipeline.h"
#include "VideoSize.h"

#include <cstdint>
#include <string>

class CDiagnostics;

struct TDecodeOptions {
    std::string input;
    /// Empty: decode and report, write nothing. "-": raw bytes on the standard output.
    std::string output;
    bool raw = false;
    TPcmTarget target = {};
};

/// Decodes the input to audio PCM, converts it, reports what came out and writes it. No partial output is
/// left behind.
void RunDecode(const TDecodeOptions& options, CDiagnostics& diagnostics);

struct TPlasmaOptions {
    TVideoSize size{400, 300};
    /// 1 to `kMaxPlasmaFrames`; one second.
    std::uint32_t frames = 30;
    /// Ends in ".png" or ".y4m".
    std::string output;
};

constexpr std::uint32_t kMaxPlasmaFrames = 1000000;

/// Whether a name has an extension of these, in letters of either case, and something before it.
bool IsPngName(const std::string& name);
bool IsY4mName(const std::string& name);

void RunPlasma(const TPlasmaOptions& options);

struct TRandomOptions {
    std::uint64_t count = 0;
    std::uint32_t seed = 0;
    /// 1 to `kMaxRandomRepeat`.
    std::uint32_t repeat = 1;
    /// "-": the standard output.
    std::string output = "-";
};

constexpr std::uint32_t kMaxRandomRepeat = 64 * 1024;

void RunRandom(const TRandomOptions& options);

struct TWindowOptions {
    /// A picture or a video. Empty: plasma.
    std::string input;
    TVideoSize size{640, 480};
    /// 0: until the window is closed, or the video ends.
    std::uint64_t frames = 0;
};

/// The plasma generator, live, or a file, through the first video device.
void RunWindow(const TWindowOptions& options, CDiagnostics& diagnostics);
