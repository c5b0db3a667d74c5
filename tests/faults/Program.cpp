// The subcommands of the program. A run under fault either gives the whole output and 0, or says that it
// failed and leaves no output behind; all of it only when its report could not be printed.
#include "faults/ProgramRun.h"

#include "faults/FaultPoints.h"
#include "faults/Program.h"
#include "support/ChildProcess.h"
#include "support/DebugRecorder.h"

#include <vorlund/Exception.h>
#include <vorlund/ObjectServices.h>
#include <vorlund/Vorlund.h>

#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace vorlund::faults {
namespace {

namespace fs = std::filesystem;

/// What a run without a fault has written.
std::string wholeOutput;

std::string ReadOutput(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void AddOutput(const std::string& bytes, CResult& result) {
    if (bytes.empty()) {
        result.Add("none ");
    } else {
        result.AddBytes(bytes.data(), bytes.size());
    }
}

template <class TAct> bool IsRefused(TAct act) {
    try {
        act();
        return false;
    } catch (const CBugException&) {
        return true;
    }
}

/// Leaving the program while one of these is open would end it by an exception that nobody catches.
bool IsLibraryClosed() {
    return IsRefused([] { v.GetClassStore().GetClassInfo(CId::Null()); }) &&
           IsRefused([] { v.GetCodecClassStore().EnumerateDecoders(); }) &&
           IsRefused([] { services::OnDestroyObject(CId::Null()); });
}

/// The exit code. What leaves `main` would end the process by SIGABRT.
int RunMain(int count, char** arguments) {
    // The program takes the handlers with it, and a message box would wait for ever.
    struct TSilence {
        ~TSilence() { test::SilenceDebugMessages(); }
    } const silence;
    try {
        return RunVorlundProgram(count, arguments);
    } catch (const std::exception& error) {
        Disarm();
        throw TBroken{std::string("an exception leaves the program: ") + error.what()};
    } catch (const CException&) {
        Disarm();
        throw TBroken{"an exception of the library leaves the program"};
    }
}

} // namespace

void RunProgram(CResult& result, const std::vector<std::string>& words, const std::string& output,
                TOutputUse use) {
    std::vector<std::string> arguments;
    std::vector<char*> pointers;
    const fs::path path = files.folder / output;
    {
        const CPause pause;
        // The plug-ins beside this program, and not those beside the library of the build.
        arguments = {"vorlund", "--no-plugins"};
        if (const fs::path plugins = test::BesideProgram("plugins"); fs::exists(plugins))
            arguments.insert(arguments.end(), {"--plugin-path", plugins.string()});
        arguments.insert(arguments.end(), words.begin(), words.end());
        for (std::string& argument : arguments) pointers.push_back(argument.data());
        pointers.push_back(nullptr);
        if (!output.empty() && use != TOutputUse::Changed) fs::remove(path);
    }
    const int code = RunMain(static_cast<int>(arguments.size()), pointers.data());
    const bool wasArmed = IsArmed();
    const bool failed = HasFailed();
    Disarm();
    std::fflush(stdout);
    result.Add("code %d ", code);
    bool isWhole = false;
    if (!output.empty()) {
        const CPause pause;
        const std::string written = ReadOutput(path);
        AddOutput(written, result);
        if (!wasArmed) wholeOutput = written;
        isWhole = written == wholeOutput;
    }
    if (!IsLibraryClosed()) throw TBroken{"the program ends with the library open"};
    if (code != 0 && !(wasArmed && failed)) throw TBroken{"the program fails without a fault"};
    const bool mayStay = use != TOutputUse::Made || (GetArmedKind() == TFaultKind::Write && isWhole);
    if (code != 0 && !output.empty() && fs::exists(path) && !mayStay) {
        throw TBroken{"a failed run leaves its output"};
    }
    if (code != 0 && !output.empty() && fs::exists(path.string() + ".part")) {
        throw TBroken{"a failed run leaves a part of its output"};
    }
}

std::string InFolder(const char* name) {
    return (files.folder / name).string();
}

void RunProgramDecode(CResult& result) {
    RunProgram(result, {"decode", InFolder("input.wav"), "-o", InFolder("decoded.wav")}, "decoded.wav");
}

void RunProgramDecodeConverted(CResult& result) {
    RunProgram(result,
               {"decode", InFolder("input.wav"), "-o", InFolder("converted.raw"), "--format", "s32",
                "--channels", "1"},
               "converted.raw");
}

void RunProgramRandom(CResult& result) {
    RunProgram(result, {"random", "100000", "--seed", "3", "-o", InFolder("random.bin")}, "random.bin");
}

void RunProgramPlasma(CResult& result) {
    RunProgram(result, {"plasma", "--size", "40x30", "--frames", "3", "-o", InFolder("plasma.y4m")},
               "plasma.y4m");
}

void RunProgramWindow(CResult& result) {
    RunProgram(result, {"window", "--size", "40x30", "--frames", "2"}, "");
}

void RunProgramHelp(CResult& result) {
    RunProgram(result, {"--help"}, "");
}

} // namespace vorlund::faults
