#include "AudioDevice.h"

#include "Diagnostics.h"
#include "PluginTexts.h"
#include "Suggestion.h"

#include <vorlund/AudioDevices.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectList.h>
#include <vorlund/Path.h>
#include <vorlund/Vorlund.h>

#include <algorithm>
#include <string_view>

using namespace vorlund;

namespace {

wstring ExplainMissingPlugin() {
    const std::vector<TPluginReport> reports = GetFileReports();
    const TPluginReport* const report = FindPlugin(reports, VRL_L("audio"));
    if (!report) return VRL_L("the plug-in 'audio' is not there");
    return VRL_L("the plug-in 'audio' is left out: ") + wstring(report->Explain().GetBuffer());
}

[[noreturn]] void RefuseToPlay(const wstring& problem) {
    throw TProgramError{
        VRL_L("There is no sound device: ") + problem +
        VRL_L("; '--device null' plays without one, and '--device file:OUT.wav' into a file")};
}

[[noreturn]] void RefuseToRecord(const wstring& problem) {
    throw TProgramError{VRL_L("There is no sound device: ") + problem +
                        VRL_L("; '--device null' records silence without one")};
}

[[noreturn]] void RefuseToWrite(const std::string& device) {
    throw TProgramError{VRL_L("Cannot write '") + PathFromUtf8(GetFileOfDevice(device).value_or("").c_str()) +
                        VRL_L("'")};
}

/// Raises when the system has no device of that id, and tells what may be meant.
TAudioDevice FindDevice(const std::vector<TAudioDevice>& devices, const std::string& id) {
    const wstring wanted = PathFromUtf8(id.c_str());
    const auto found = std::find_if(devices.begin(), devices.end(),
                                    [&wanted](const TAudioDevice& device) { return device.id == wanted; });
    if (found != devices.end()) return *found;
    std::vector<std::string> ids{kNullDevice};
    for (const TAudioDevice& device : devices) ids.push_back(PathToUtf8(device.id.c_str()));
    const std::string nearest = FindSuggestion(id, ids);
    throw TProgramError{VRL_L("There is no device '") + wanted + VRL_L("'") +
                        (nearest.empty()
                             ? wstring(VRL_L("; "))
                             : VRL_L("; did you mean '") + PathFromUtf8(nearest.c_str()) + VRL_L("'? ")) +
                        VRL_L("'vorlund devices' lists them")};
}

/// The default one, or the first; nothing when there is none.
const TAudioDevice* FindDefault(const std::vector<TAudioDevice>& devices) {
    const auto found = std::find_if(devices.begin(), devices.end(),
                                    [](const TAudioDevice& device) { return device.isDefault; });
    if (found != devices.end()) return &*found;
    return devices.empty() ? nullptr : &devices.front();
}

} // namespace

std::optional<std::string> GetFileOfDevice(const std::string& device) {
    if (!device.starts_with(kFileDevice)) return {};
    return device.substr(std::string_view(kFileDevice).size());
}

TAudioSystem FindAudioSystem() {
    TAudioSystem found;
    try {
        found.system = CreateAs<IAudioSystem>(kAudioSystemClassId);
        if (!found.system) found.problem = VRL_L("the plug-in 'audio' has another kind of system");
    } catch (const CClassNotFoundException&) {
        found.problem = ExplainMissingPlugin();
    } catch (const CException& error) {
        found.problem = error.GetReason();
    }
    // A creation that fails leaves the store locked for the threads of devices.
    if (!found.system) v.GiveBackLocks();
    return found;
}

std::vector<TAudioDevice> ListDevices(IAudioSystem& system, TAudioDirection direction) {
    std::vector<TAudioDevice> devices;
    const auto list = CRefPtr<IObjectList>::Adopt(system.EnumerateDevices(direction));
    for (unsigned int i = 0; i < list->GetObjectCount(); ++i) {
        const auto info = CRefPtr<IObject>::Adopt(list->GetObject(i)).Query<IAudioDeviceInfo>();
        if (!info) continue;
        devices.push_back({info->GetId(), info->GetName(), info->GetDirection(), info->IsDefault(),
                           info->GetChannels(), info->GetSamplesPerSec()});
    }
    return devices;
}

CRefPtr<IAudioOutput> MakeAudioOutput(const std::string& device) {
    if (device == kNullDevice) return CRefPtr<IAudioOutput>::Adopt(CreateNullAudioOutput());
    if (const auto file = GetFileOfDevice(device)) {
        if (file->empty())
            throw TProgramError{VRL_L("The device 'file:' needs the name of a file: file:OUT.wav")};
        return CRefPtr<IAudioOutput>::Adopt(CreateFileAudioOutput(PathFromUtf8(file->c_str()).c_str()));
    }
    const TAudioSystem found = FindAudioSystem();
    if (!found.system) RefuseToPlay(found.problem);
    try {
        if (device.empty()) return CRefPtr<IAudioOutput>::Adopt(found.system->CreateOutput(nullptr));
        const TAudioDevice known = FindDevice(ListDevices(*found.system, AUDIO_DIRECTION_OUTPUT), device);
        return CRefPtr<IAudioOutput>::Adopt(found.system->CreateOutput(known.id.c_str()));
    } catch (const CFailedException& error) {
        RefuseToPlay(error.GetReason());
    }
}

void OpenAudioOutput(IAudioOutput& output, const std::string& device, const TDataFormat_AudioPcm& format,
                     double latency) {
    try {
        output.OpenOutput(format, latency);
    } catch (const CFailedException& error) {
        if (device == kNullDevice || GetFileOfDevice(device)) throw;
        RefuseToPlay(error.GetReason());
    } catch (const CFileAccessException&) {
        // It says more.
        throw;
    } catch (const CIOException&) {
        RefuseToWrite(device);
    }
}

void CloseAudioOutput(IAudioOutput& output, const std::string& device) {
    try {
        output.Close();
    } catch (const CIOException&) {
        RefuseToWrite(device);
    }
}

TFoundInput MakeAudioInput(const std::string& device, bool isLoopback) {
    if (device == kNullDevice) {
        if (isLoopback) throw TProgramError{VRL_L("The device 'null' plays nothing that could be recorded")};
        return {CRefPtr<IAudioInput>::Adopt(CreateNullAudioInput()), {}};
    }
    if (GetFileOfDevice(device))
        throw TProgramError{VRL_L("The device 'file:' only plays; 'vorlund convert' reads files")};
    const TAudioSystem found = FindAudioSystem();
    if (!found.system) RefuseToRecord(found.problem);
    try {
        std::vector<TAudioDevice> devices = ListDevices(*found.system, AUDIO_DIRECTION_LOOPBACK);
        if (!isLoopback) {
            const std::vector<TAudioDevice> inputs = ListDevices(*found.system, AUDIO_DIRECTION_INPUT);
            // Without a name, a loopback is never what is meant.
            if (device.empty()) devices.clear();
            devices.insert(devices.begin(), inputs.begin(), inputs.end());
        }
        if (!device.empty()) {
            const TAudioDevice known = FindDevice(devices, device);
            return {CRefPtr<IAudioInput>::Adopt(found.system->CreateInput(known.id.c_str())), known};
        }
        const TAudioDevice* const known = FindDefault(devices);
        if (isLoopback && !known) RefuseToRecord(VRL_L("no output can be recorded"));
        // A null id follows the default input.
        TFoundInput input{
            CRefPtr<IAudioInput>::Adopt(found.system->CreateInput(isLoopback ? known->id.c_str() : nullptr)),
            {}};
        if (known) input.device = *known;
        return input;
    } catch (const CFailedException& error) {
        RefuseToRecord(error.GetReason());
    }
}

void OpenAudioInput(IAudioInput& input, const std::string& device, const TDataFormat_AudioPcm& format,
                    double latency) {
    try {
        input.OpenInput(format, latency);
    } catch (const CFailedException& error) {
        if (device == kNullDevice) throw;
        RefuseToRecord(error.GetReason());
    }
}
