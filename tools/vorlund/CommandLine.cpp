// The only file that includes the parser, whose templates take longer to compile than the rest of the
// program.
#include "CommandLine.h"

#include "Commands.h"

#include <vorlund/DataFormat.h>
#include <vorlund/Version.h>

#include <CLI/CLI.hpp>

#include <charconv>
#include <map>
#include <memory>

namespace {

using TCommand = std::function<void(CDiagnostics&)>;

const std::map<std::string, std::uint32_t> kSampleFormats{{"u8", vorlund::SAMPLE_FORMAT_8BIT},
                                                          {"s16", vorlund::SAMPLE_FORMAT_16BIT},
                                                          {"s32", vorlund::SAMPLE_FORMAT_32BIT},
                                                          {"f32", vorlund::SAMPLE_FORMAT_FLOAT}};

/// The parser's own conversion takes -1, and numbers that are too large, for very large ones.
std::string CheckCount(const std::string& text) {
    std::uint64_t count = 0;
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, count);
    return error == std::errc() && next == end ? "" : "needs a number of bytes, not " + text;
}

std::string CheckSize(const std::string& text) {
    return ParseVideoSize(text) ? "" : "needs a size like 640x480, at most 16384x16384, not " + text;
}

std::string CheckVideoName(const std::string& name) {
    return IsPngName(name) || IsY4mName(name) ? "" : "needs a name that ends in .png or .y4m, not " + name;
}

/// `size` holds the default, which the help tells.
CLI::Option* AddVideoSizeOption(CLI::App& command, TVideoSize& size) {
    const std::string defaultText = std::to_string(size.width) + "x" + std::to_string(size.height);
    return command
        .add_option_function<std::string>(
            "--size", [&size](const std::string& text) { size = *ParseVideoSize(text); },
            "Width and height in pixels (default " + defaultText + ")")
        ->check(CLI::Validator(&CheckSize, "WxH"));
}

// Each adds its subcommand to the program. When the command line chooses it, `command` is set.

void AddDecodeCommand(CLI::App& program, TCommand& command) {
    const auto options = std::make_shared<TDecodeOptions>();
    CLI::App* const decode = program.add_subcommand("decode", "Decode an audio file to PCM");
    decode->add_option("input", options->input, "File to decode")->required();
    decode->add_option("-o,--output", options->output,
                       "Write the PCM to this file: with a WAV header when its name ends in .wav, else as "
                       "raw bytes; - for raw bytes on standard output");
    decode->add_flag("--raw", options->raw, "Write raw bytes whatever the file is called");
    decode
        ->add_option_function<std::string>(
            "--format",
            [options](const std::string& name) { options->target.sampleFormat = kSampleFormats.at(name); },
            "Convert the samples: unsigned 8, signed 16 or 32 bits, or 32-bit float")
        ->check(CLI::IsMember(kSampleFormats))
        ->type_name("NAME");
    decode->add_option("--channels", options->target.channels, "Mix to mono, stereo or 5.1")
        ->check(CLI::IsMember({"1", "2", "6"}))
        ->type_name("COUNT");
    decode->callback([options, &command] {
        command = [options](CDiagnostics& diagnostics) { RunDecode(*options, diagnostics); };
    });
}

void AddPlasmaCommand(CLI::App& program, TCommand& command) {
    const auto options = std::make_shared<TPlasmaOptions>();
    CLI::App* const plasma =
        program.add_subcommand("plasma", "Make an animated plasma, 30 frames per second");
    AddVideoSizeOption(*plasma, options->size);
    plasma->add_option("--frames", options->frames, "Number of frames (default 30)")
        ->check(CLI::Range(1u, kMaxPlasmaFrames));
    plasma
        ->add_option(
            "-o,--output", options->output,
            "Write numbered PNG files when the name ends in .png (plasma.png: plasma-0001.png, ...), or one "
            "YUV4MPEG2 file when it ends in .y4m")
        ->required()
        ->check(CLI::Validator(&CheckVideoName, "NAME"));
    plasma->callback([options, &command] { command = [options](CDiagnostics&) { RunPlasma(*options); }; });
}

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
        ->check(CLI::Range(1u, kMaxRandomRepeat));
    random->add_option("-o,--output", options->output,
                       "Write the bytes to this file; - for standard output, which is the default");
    random->callback([options, &command] { command = [options](CDiagnostics&) { RunRandom(*options); }; });
}

void AddWindowCommand(CLI::App& program, TCommand& command) {
    const auto options = std::make_shared<TWindowOptions>();
    CLI::App* const window =
        program.add_subcommand("window", "Show a picture, a video or moving plasma in a window");
    CLI::Option* const input =
        window->add_option("input", options->input, "Picture or video to show; plasma without it");
    AddVideoSizeOption(*window, options->size)->excludes(input);
    window->add_option("--frames", options->frames,
                       "End after this many frames; 0 for until the window is closed or the video ends");
    window->callback([options, &command] {
        command = [options](CDiagnostics& diagnostics) { RunWindow(*options, diagnostics); };
    });
}

} // namespace

TCommandLine ReadCommandLine(const std::vector<std::string>& arguments) {
    TCommandLine line;
    CLI::App app{"Decodes and makes media files with the Vorlund library.", "vorlund"};
    app.require_subcommand(1);
    app.set_version_flag("--version", std::string("vorlund ") + vorlund::GetVersion().text,
                         "Print the version of the library and exit");
    // A word that begins with "/" is a path on every system.
    app.allow_windows_style_options(false);

    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return "vorlund: " + std::string(error.what()) + "; --help tells the options\n";
    });

    app.add_option("--plugin-path", line.pluginPaths,
                   "Load the plug-ins of this folder too; may be given several times")
        ->allow_extra_args(false);
    app.add_flag("--scan-plugins", line.arePluginsScanned,
                 "Try each plug-in in a process of its own first, and leave out those that end it");
    AddDecodeCommand(app, line.command);
    AddPlasmaCommand(app, line.command);
    AddRandomCommand(app, line.command);
    AddWindowCommand(app, line.command);

    try {
        // The parser takes the arguments last first.
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::ParseError& error) {
        line.command = nullptr;
        line.exitCode = app.exit(error) == 0 ? 0 : kExitUsage;
    }
    return line;
}
