#include "CommandParser.h"

#include "Commands.h"
#include "ConvertPlan.h"
#include "Listings.h"
#include "OptionTexts.h"

#include <vorlund/DataFormat.h>

#include <functional>
#include <map>
#include <memory>

namespace {

using TCommand = std::function<void(CDiagnostics&)>;

const std::map<std::string, std::uint32_t> kSampleFormats{{"u8", vorlund::SAMPLE_FORMAT_8BIT},
                                                          {"s16", vorlund::SAMPLE_FORMAT_16BIT},
                                                          {"s32", vorlund::SAMPLE_FORMAT_32BIT},
                                                          {"f32", vorlund::SAMPLE_FORMAT_FLOAT}};

const std::map<std::string, vorlund::TAudioPictureKind> kPictures{
    {"oscilloscope", vorlund::AUDIO_PICTURE_OSCILLOSCOPE},
    {"spectrum", vorlund::AUDIO_PICTURE_SPECTRUM},
    {"both", vorlund::AUDIO_PICTURE_BOTH}};

/// `size` holds the default, which the help tells.
CLI::Option* AddVideoSizeOption(CLI::App& command, TVideoSize& size) {
    const std::string defaultText = std::to_string(size.width) + "x" + std::to_string(size.height);
    return command
        .add_option_function<std::string>(
            "--size", [&size](const std::string& text) { size = *ParseVideoSize(text); },
            "Width and height in pixels (default " + defaultText + ")")
        ->check(CLI::Validator(&CheckSize, ""))
        ->type_name("WxH");
}

// Each adds its subcommand to the program. When the command line chooses it, `command` is set.

void AddConvertCommand(CLI::App& program, TCommand& command) {
    const auto options = std::make_shared<TConvertOptions>();
    TConvertTarget& target = options->target;
    CLI::App* const convert = program.add_subcommand("convert", "Convert sound files");
    convert->add_option("inputs", options->inputs, "Files and folders; - for standard input")
        ->required()
        ->type_name("FILE");
    convert
        ->add_option("-o,--output", options->output,
                     "File to write; a folder; a pattern in which {name} is the input's name without its "
                     "ending; - for "
                     "standard output")
        ->required()
        ->type_name("FILE");
    std::vector<std::string> types;
    for (const TWrittenType& type : GetWrittenTypes()) types.emplace_back(type.name);
    convert
        ->add_option("--type", options->type, "Kind of file (default: by the ending of the output, else wav)")
        ->check(CLI::IsMember(types))
        ->type_name("TYPE");
    convert->add_option("--rate", target.rate, "Frames per second")->check(CLI::Range(1u, 1000000u));
    convert->add_option("--channels", target.channels, "Mix to this many channels, 1 to 8")
        ->check(CLI::Range(1u, 8u));
    convert->add_option("--bits", target.bits, "Bits of a sample: 8, 16, 24, 32 or float")
        ->check(CLI::IsMember({"8", "16", "24", "32", "float"}))
        ->type_name("BITS");
    convert
        ->add_option_function<std::string>(
            "--from", [&target](const std::string& text) { target.from = *ParseTime(text); },
            "Begin at this time, like 90 or 1:30")
        ->check(CLI::Validator(&CheckTime, ""))
        ->type_name("TIME");
    convert
        ->add_option_function<std::string>(
            "--to", [&target](const std::string& text) { target.to = *ParseTime(text); }, "End at this time")
        ->check(CLI::Validator(&CheckTime, ""))
        ->type_name("TIME");
    convert
        ->add_option(
            "--normalise", target.loudness,
            "Bring to this loudness, in LUFS, with true peaks of at most -1 dB (needs the plug-in measure)")
        ->check(CLI::Range(-70.0, 0.0));
    convert->add_option("--quality", target.quality, "Of lossy files, from 0 to 1, the best");
    convert->add_flag("--dither", target.isDithered, "Add triangular noise where bits are lost");
    convert->add_option("--jobs", options->jobs, "Files at a time (default: as many as there are processors)")
        ->check(CLI::Range(1u, kMaxConvertJobs));
    convert->callback([options, &command] {
        command = [options](CDiagnostics& diagnostics) { RunConvert(*options, diagnostics); };
    });
}

void AddDecodeCommand(CLI::App& program, TCommand& command) {
    const auto options = std::make_shared<TDecodeOptions>();
    CLI::App* const decode = program.add_subcommand("decode", "Decode an audio file to PCM");
    decode->add_option("input", options->input, "File to decode")->required()->type_name("FILE");
    decode
        ->add_option("-o,--output", options->output,
                     "Write the PCM to this file: with a WAV header when its name ends in .wav, else as "
                     "raw bytes; - for raw bytes on standard output")
        ->type_name("FILE");
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

void AddInfoCommand(CLI::App& program, TCommand& command) {
    const auto options = std::make_shared<TInfoOptions>();
    CLI::App* const info = program.add_subcommand("info", "Tell what is in media files");
    info->add_option("inputs", options->inputs, "Files to look into")->required()->type_name("FILE");
    info->add_flag("--json", options->isJson, "Print JSON for scripts instead of lines");
    info->add_flag("--levels", options->hasLevels,
                   "Measure peaks, loudness, silence and clipping (needs the plug-in measure)");
    info->add_option("--picture", options->picture,
                     "Write waveform and spectrogram of one file as a PNG file")
        ->type_name("FILE");
    CLI::Option* const peaks =
        info->add_option("--peaks", options->peaks,
                         "Write the peaks of one file for web players, as JSON; - for standard output")
            ->type_name("FILE");
    info->add_option("--points", options->points, "At most that many points of peaks (default 1000)")
        ->check(CLI::Range(1u, kMaxPeakPoints))
        ->needs(peaks);
    info->callback([options, &command] {
        command = [options](CDiagnostics& diagnostics) { RunInfo(*options, diagnostics); };
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
            "YUV4MPEG2 file when it ends in .y4m, and to standard output when it is -")
        ->required()
        ->check(CLI::Validator(&CheckVideoName, ""))
        ->type_name("FILE");
    plasma->callback([options, &command] { command = [options](CDiagnostics&) { RunPlasma(*options); }; });
}

/// In seconds; without it the device decides.
void AddLatencyOption(CLI::App& command, double& latency) {
    command
        .add_option("--latency", latency, "Seconds that the device may keep, 0.001 to 10 (default: its own)")
        ->check(CLI::Range(0.001, 10.0));
}

void AddPlayCommand(CLI::App& program, TCommandLine& line) {
    const auto options = std::make_shared<TPlayOptions>();
    CLI::App* const play = program.add_subcommand("play", "Play sound files");
    play->add_option("files", options->files, "Files to play, one after the other; - for standard input")
        ->required()
        ->type_name("FILE");
    play->add_option("--device", options->device,
                     "One that 'vorlund devices' lists; null, or file:OUT.wav (default: the system's)")
        ->type_name("ID");
    // A flag that counts would begin with 0.
    const auto rounds = std::make_shared<std::string>();
    play->add_flag("--loop{endless}", *rounds, "Play the list without end, or with --loop=COUNT so often")
        ->check(CLI::Validator(&CheckRounds, ""));
    play->add_option_function<std::string>(
            "--from", [options](const std::string& text) { options->from = *ParseTime(text); },
            "Begin the first file at this time, like 90 or 1:30")
        ->check(CLI::Validator(&CheckTime, ""))
        ->type_name("TIME");
    play->add_option("--volume", options->volume, "Factor for every sample, 0 to 16 (default 1)")
        ->check(CLI::Range(0.0, 16.0));
    AddLatencyOption(*play, options->latency);
    CLI::Option* const window = play->add_flag_callback(
        "--window",
        [options] {
            if (!options->picture) options->picture = vorlund::AUDIO_PICTURE_BOTH;
        },
        "Show live pictures in a window (needs the plug-ins visual and window-output)");
    play->add_option_function<std::string>(
            "--picture", [options](const std::string& name) { options->picture = kPictures.at(name); },
            "What the window shows (default both)")
        ->check(CLI::IsMember(kPictures))
        ->type_name("NAME")
        ->needs(window);
    play->footer("Keys on a terminal and in the window: space pauses, left and right move by 5 s, up or n "
                 "and down or p go to the "
                 "next file and the one before, + and - change the volume, q or Escape ends.");
    play->callback([options, rounds, &line] {
        if (!rounds->empty()) options->times = *ParseRounds(*rounds);
        line.command = [options](CDiagnostics& diagnostics) { RunPlay(*options, diagnostics); };
        line.needsDevices = true;
    });
}

void AddRecordCommand(CLI::App& program, TCommandLine& line) {
    const auto options = std::make_shared<TRecordOptions>();
    CLI::App* const record = program.add_subcommand("record", "Record sound into a WAV file");
    record
        ->add_option("-o,--output", options->output,
                     "File to write, in place of what is there; - for standard output")
        ->required()
        ->check(CLI::Validator(&CheckRecording, ""))
        ->type_name("FILE");
    record
        ->add_option("--device", options->device,
                     "One that 'vorlund devices' lists, or null (default: the system's)")
        ->type_name("ID");
    record
        ->add_option_function<std::string>(
            "--duration", [options](const std::string& text) { options->duration = *ParseTime(text); },
            "End after this time, like 90 or 1:30 (default: at Ctrl-C)")
        ->check(CLI::Validator(&CheckTime, ""))
        ->type_name("TIME");
    record->add_option("--rate", options->rate, "Frames per second (default: as the device)")
        ->check(CLI::Range(1000u, 768000u));
    record->add_option("--channels", options->channels, "1 to 8 (default: as the device, at most 2)")
        ->check(CLI::Range(1u, 8u));
    record->add_option("--bits", options->bits, "Bits of a sample: 8, 16, 24, 32 or float (default 16)")
        ->check(CLI::IsMember({"8", "16", "24", "32", "float"}))
        ->type_name("BITS");
    record->add_flag("--loopback", options->isLoopback, "Record what an output plays");
    AddLatencyOption(*record, options->latency);
    record->footer("Keys on a terminal: space pauses, q or Escape ends, as Ctrl-C does.");
    record->callback([options, &line] {
        line.command = [options](CDiagnostics& diagnostics) { RunRecord(*options, diagnostics); };
        line.needsDevices = true;
    });
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
    random
        ->add_option("-o,--output", options->output,
                     "Write the bytes to this file, as a WAV file of 8 bits when its name ends in .wav; - "
                     "for standard "
                     "output, which is the default")
        ->type_name("FILE");
    random->callback([options, &command] { command = [options](CDiagnostics&) { RunRandom(*options); }; });
}

void AddRepairCommand(CLI::App& program, TCommand& command) {
    const auto options = std::make_shared<TRepairOptions>();
    CLI::App* const repair =
        program.add_subcommand("repair", "Mend the sizes in WAV files, without touching the sound");
    repair->add_option("files", options->files, "Files to mend")->required()->type_name("FILE");
    repair->add_flag("--dry-run", options->isTrial,
                     "Only tell what is wrong; the exit code is 1 when something is");
    repair->callback([options, &command] {
        command = [options](CDiagnostics& diagnostics) { RunRepair(*options, diagnostics); };
    });
}

void AddTagCommand(CLI::App& program, TCommand& command) {
    const auto options = std::make_shared<TTagOptions>();
    CLI::App* const tag =
        program.add_subcommand("tag", "Show and change the metadata of a WAV file, without moving the sound");
    tag->add_option("file", options->file, "File to show or change")->required()->type_name("FILE");
    tag->add_option_function<std::vector<std::string>>(
           "--set",
           [options](const std::vector<std::string>& texts) {
               for (const std::string& text : texts)
                   options->changes.push_back(
                       {text.substr(0, text.find('=')), text.substr(text.find('=') + 1)});
           },
           "Set a text of INFO (INAM=Title, IART=Artist) or of bext (description=...); may be given several "
           "times")
        ->check(CLI::Validator(&CheckTagChange, ""))
        ->type_name("KEY=TEXT")
        ->type_size(1)
        ->allow_extra_args(false);
    tag->add_option("--remove", options->removed,
                    "Remove a text of INFO, or all of INFO, bext or cue; may be given several times")
        ->type_name("KEY")
        ->allow_extra_args(false);
    tag->callback([options, &command] {
        command = [options](CDiagnostics& diagnostics) { RunTag(*options, diagnostics); };
    });
}

void AddWindowCommand(CLI::App& program, TCommandLine& line) {
    const auto options = std::make_shared<TWindowOptions>();
    CLI::App* const window =
        program.add_subcommand("window", "Show a picture, a video or moving plasma in a window");
    CLI::Option* const input =
        window->add_option("input", options->input, "Picture or video to show; plasma without it")
            ->type_name("FILE");
    AddVideoSizeOption(*window, options->size)->excludes(input);
    window->add_option("--frames", options->frames,
                       "End after this many frames; 0 for until the window is closed or the video ends");
    window->callback([options, &line] {
        line.command = [options](CDiagnostics& diagnostics) { RunWindow(*options, diagnostics); };
        line.needsDevices = true;
    });
}

using TListing = void (*)(const TListOptions&);

void AddListing(CLI::App& program, TCommandLine& line, const char* name, const char* help, TListing run) {
    const auto options = std::make_shared<TListOptions>();
    CLI::App* const listing = program.add_subcommand(name, help);
    listing->add_flag("--json", options->isJson, "Print JSON for scripts instead of a table");
    listing->callback([options, run, &line] {
        line.command = [options, run](CDiagnostics&) { run(*options); };
        line.isListing = true;
    });
}

} // namespace

CCommandParser::CCommandParser(TCommandLine& line)
    : app("Decodes and makes media files with the Vorlund library.", "vorlund") {
    // An option of the program may stand behind the command too.
    app.fallthrough();
    app.require_subcommand(0, 1);
    app.add_flag("--version", isVersion, "Print the version of the library and exit");
    app.add_flag("-v,--verbose", isVerbose,
                 "With --version: the build, the plug-ins and the libraries that they use, too");
    // A word that begins with "/" is a path on every system.
    app.allow_windows_style_options(false);

    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return "vorlund: " + std::string(error.what()) + "; --help tells the options\n";
    });

    app.add_option("--plugin-path", line.pluginPaths,
                   "Load the plug-ins of this folder too; may be given several times")
        ->type_name("FOLDER")
        ->allow_extra_args(false);
    app.add_flag("--scan-plugins", line.arePluginsScanned,
                 "Try each plug-in in a process of its own first, and leave out those that end it");
    app.add_flag("--no-plugins", line.areFoldersForgotten, "Load no plug-ins but those of --plugin-path");
    app.add_flag("--isolate", line.areDecodersIsolated,
                 "Decode in a process that can write no file and use no network");
    AddListing(app, line, "classes", "List the classes that objects can be made of", &RunClasses);
    AddListing(app, line, "codecs", "List the decoders, and who reads which kind of file", &RunCodecs);
    AddConvertCommand(app, line.command);
    AddDecodeCommand(app, line.command);
    AddListing(app, line, "devices", "List what plays and records sound", &RunDevices);
    AddInfoCommand(app, line.command);
    AddPlasmaCommand(app, line.command);
    AddPlayCommand(app, line);
    AddListing(app, line, "plugins", "List the plug-ins, and why others are not loaded", &RunPlugins);
    AddRandomCommand(app, line.command);
    AddRecordCommand(app, line);
    AddRepairCommand(app, line.command);
    AddTagCommand(app, line.command);
    AddWindowCommand(app, line);
    // Behind the commands, which would take it over.
    app.footer("FILE alone is decoded. These options may stand behind the command too.");
}
