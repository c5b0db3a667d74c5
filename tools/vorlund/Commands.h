// The commands of the program: what the command line can ask of each, and its work. A command runs with the
// library open; it raises `TProgramError` and the library's exceptions. File names are UTF-8.
#pragma once

#include "ConvertFile.h"
#include "PcmPipeline.h"
#include "VideoSize.h"

#include <vorlund/AudioPictures.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class CDiagnostics;

struct TConvertOptions {
    /// Files and folders; "-" for the standard input.
    std::vector<std::string> inputs;
    /// As `MakeConvertPlan` takes it.
    std::string output;
    std::string type;
    TConvertTarget target = {};
    /// Files at a time; 0 for as many as there are processors.
    std::uint32_t jobs = 0;
};

constexpr std::uint32_t kMaxConvertJobs = 256;

/// Converts sound files at true scale. A file that fails is told of, the others are converted all the same,
/// and the command fails at its end. No partial output is left behind.
void RunConvert(const TConvertOptions& options, CDiagnostics& diagnostics);

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

struct TInfoOptions {
    std::vector<std::string> inputs;
    bool isJson = false;
    bool hasLevels = false;
    /// Names of files, or "-"; empty for none.
    std::string picture;
    std::string peaks;
    /// 1 to `kMaxPeakPoints`.
    std::uint32_t points = 1000;
};

constexpr std::uint32_t kMaxPeakPoints = 1000000;

/// Tells what is in media files, without writing anything but what is asked for. A file that cannot be
/// decoded is told of, and the command fails at its end.
void RunInfo(const TInfoOptions& options, CDiagnostics& diagnostics);

struct TPlasmaOptions {
    TVideoSize size{400, 300};
    /// 1 to `kMaxPlasmaFrames`; one second.
    std::uint32_t frames = 30;
    /// Ends in ".png" or ".y4m", or is "-".
    std::string output;
};

constexpr std::uint32_t kMaxPlasmaFrames = 1000000;

/// Whether a name has an extension of these, in letters of either case, and something before it.
bool IsPngName(const std::string& name);
bool IsY4mName(const std::string& name);

void RunPlasma(const TPlasmaOptions& options);

struct TPlayOptions {
    /// "-": the standard input.
    std::vector<std::string> files;
    /// As `MakeAudioOutput` takes it.
    std::string device;
    /// How often; 0 for without end.
    std::uint64_t times = 1;
    /// Where the first file begins, in seconds.
    double from = 0;
    /// In seconds; 0 for what the device likes.
    double latency = 0;
    /// 0 to 16.
    double volume = 1;
    /// What a window shows; nothing for no window.
    std::optional<vorlund::TAudioPictureKind> picture = {};
};

/// Plays sound files one after the other. A file that fails is told of, the others are played all the same,
/// and the command fails at its end.
void RunPlay(const TPlayOptions& options, CDiagnostics& diagnostics);

struct TRandomOptions {
    std::uint64_t count = 0;
    std::uint32_t seed = 0;
    /// 1 to `kMaxRandomRepeat`.
    std::uint32_t repeat = 1;
    /// "-": the standard output. A WAV file of 8 bits, mono, 44,100 Hz, when it ends in ".wav".
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

struct TRepairOptions {
    std::vector<std::string> files;
    /// Only tells what is wrong; a failure when something is.
    bool isTrial = false;
};

/// Mends the sizes in WAV files, and says what it changed.
void RunRepair(const TRepairOptions& options, const CDiagnostics& diagnostics);

struct TRecordOptions {
    /// "-": the standard output.
    std::string output;
    /// As `MakeAudioInput` takes it.
    std::string device;
    bool isLoopback = false;
    /// In seconds; nothing for until somebody ends it.
    std::optional<double> duration = {};
    /// What is not set is as the device has it.
    std::optional<std::uint32_t> rate = {};
    std::optional<std::uint32_t> channels = {};
    /// "8", "16", "24", "32" or "float".
    std::string bits = "16";
    /// In seconds; 0 for what the device likes.
    double latency = 0;
};

/// Records into a WAV file, which opens at every moment.
void RunRecord(const TRecordOptions& options, CDiagnostics& diagnostics);

struct TTagChange {
    std::string key;
    std::string text;
};

struct TTagOptions {
    std::string file;
    /// Removed first, then set.
    std::vector<std::string> removed;
    std::vector<TTagChange> changes;
};

/// What is wrong with the key of a tag, or with "KEY=TEXT"; empty when nothing is.
std::string CheckTagKey(const std::string& key);
std::string CheckTagChange(const std::string& text);

/// Changes the metadata of a WAV file where something is to be changed, and shows them.
void RunTag(const TTagOptions& options, const CDiagnostics& diagnostics);
