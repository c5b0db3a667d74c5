/// \file
/// What is done while calls fail: one small piece of an application each.
#pragma once

#include <vorlund/Platform.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace vorlund::faults {

/// What a scenario has seen, as text that every run without a fault repeats. Takes no memory of the heap.
class CResult {
public:
    [[gnu::format(printf, 2, 3)]] void Add(const char* format, ...);
    /// A digest of bytes.
    void AddBytes(const void* bytes, std::size_t size);
    void AddText(const wchar* text);
    const char* GetText() const { return text_; }

private:
    char text_[4096] = {};
    std::size_t size_ = 0;
};

struct TScenario {
    const char* name;
    /// Raises whatever the library raises.
    void (*run)(CResult& result);
    /// It opens and closes the library itself, and both are under fault.
    bool opensItself = false;
    /// It must not give another result than usual under a fault, other than one that says so.
    const char* success = nullptr;
    /// It runs in the program of the folder "faultshost", which has plug-ins beside it.
    bool hasPlugins = false;
};

/// Raised by a scenario: what the library or the program must not do, whatever fails.
struct TBroken {
    std::string text;
};

/// The files of the scenarios: made by `PrepareFiles`, in a folder of this process.
struct TFiles {
    std::filesystem::path folder;
    wstring folderPath;
    wstring wav;
    wstring sample; ///< for the decoder of the sample plug-in
    wstring output;
    wstring text;
    wstring records;
    wstring plugins; ///< the folder of the sample plug-in
};
extern TFiles files;

void PrepareFiles(const std::filesystem::path& folder, const std::filesystem::path& programFolder);
wstring ToVorlundPath(const std::filesystem::path& path);

/// Seconds to wait for what comes at once when nothing fails, and perhaps never under a fault.
float GetWaitLimit();

// The scenarios by area.
void RunOpenAndClose(CResult& result);
void RunPlugins(CResult& result);
void RunPluginsScanned(CResult& result);
void RunDecode(CResult& result);
void RunConvert(CResult& result);
void RunSave(CResult& result);
void RunResource(CResult& result);
void RunText(CResult& result);
void RunStrings(CResult& result);
void RunRecordsWrite(CResult& result);
void RunRecordsRead(CResult& result);
void RunEnumerate(CResult& result);
void RunObjects(CResult& result);
void RunSources(CResult& result);
void RunWavWrite(CResult& result);
void RunWavEdit(CResult& result);
void RunWavRepair(CResult& result);
void RunAudioOutput(CResult& result);
void RunAudioFile(CResult& result);
void RunAudioInput(CResult& result);
void RunEvents(CResult& result);
void RunAsyncWaits(CResult& result);
void RunWaitSet(CResult& result);
void RunTimers(CResult& result);
void RunLocks(CResult& result);
void RunWindow(CResult& result);
void RunProgramDecode(CResult& result);
void RunProgramDecodeConverted(CResult& result);
void RunProgramRandom(CResult& result);
void RunProgramPlasma(CResult& result);
void RunProgramWindow(CResult& result);
void RunProgramConvert(CResult& result);
void RunProgramInfo(CResult& result);
void RunProgramPlay(CResult& result);
void RunProgramRecord(CResult& result);
void RunProgramDevices(CResult& result);
void RunProgramPlugins(CResult& result);
void RunProgramRepair(CResult& result);
void RunProgramTag(CResult& result);
void RunProgramHelp(CResult& result);

/// How the results of a program begin that reports success.
inline constexpr const char* kProgramSuccess = "code 0 ";

inline const std::vector<TScenario>& GetScenarios() {
    static const std::vector<TScenario> scenarios{
        {"open-and-close", &RunOpenAndClose, true},
        {"open-and-close-plugins", &RunOpenAndClose, true, nullptr, true},
        {"plugins", &RunPlugins},
        {"plugins-scanned", &RunPluginsScanned},
        {"decode", &RunDecode},
        {"convert", &RunConvert},
        {"save", &RunSave},
        {"resource", &RunResource},
        {"text", &RunText},
        {"strings", &RunStrings},
        {"records-write", &RunRecordsWrite},
        {"records-read", &RunRecordsRead},
        {"enumerate", &RunEnumerate},
        {"objects", &RunObjects},
        {"sources", &RunSources},
        {"wav-write", &RunWavWrite},
        {"wav-edit", &RunWavEdit},
        {"wav-repair", &RunWavRepair},
        {"audio-output", &RunAudioOutput},
        {"audio-file", &RunAudioFile},
        {"audio-input", &RunAudioInput},
        {"events", &RunEvents},
        {"async-waits", &RunAsyncWaits},
        {"wait-set", &RunWaitSet},
        {"timers", &RunTimers},
        {"locks", &RunLocks},
        {"program-decode", &RunProgramDecode, true, kProgramSuccess},
        {"program-decode-converted", &RunProgramDecodeConverted, true, kProgramSuccess},
        {"program-random", &RunProgramRandom, true, kProgramSuccess},
        {"program-plasma", &RunProgramPlasma, true, kProgramSuccess},
        {"program-convert", &RunProgramConvert, true, kProgramSuccess},
        {"program-info", &RunProgramInfo, true, kProgramSuccess},
        {"program-play", &RunProgramPlay, true, kProgramSuccess},
        {"program-record", &RunProgramRecord, true, kProgramSuccess},
        {"program-devices", &RunProgramDevices, true, kProgramSuccess},
        {"program-plugins", &RunProgramPlugins, true, kProgramSuccess},
        {"program-repair", &RunProgramRepair, true, kProgramSuccess},
        {"program-tag", &RunProgramTag, true, kProgramSuccess},
#ifdef VORLUND_FAULTS_HAVE_WINDOWS
        {"window", &RunWindow},
        {"program-window", &RunProgramWindow, true, kProgramSuccess, true},
#endif
        {"program-help", &RunProgramHelp, true, kProgramSuccess},
    };
    return scenarios;
}

} // namespace vorlund::faults
