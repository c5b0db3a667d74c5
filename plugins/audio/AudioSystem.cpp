#include "AudioSystem.h"

#include "SdlPort.h"
#include "Texts.h"

#include <vorlund/AudioPort.h>
#include <vorlund/ClassIds.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectList.h>
#include <vorlund/Path.h>
#include <vorlund/RefPtr.h>

#include <string_view>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/audio/AudioSystem");
constexpr TFailure kUnknownDirection{VRL_L("CSdlAudioSystem::EnumerateDevices"), kFile, 1,
                                     VRL_L("Unknown direction")};

struct TDriverName {
    std::string_view driver;
    const wchar* name;
};
constexpr TDriverName kDriverNames[] = {{"pulseaudio", VRL_L("PulseAudio")},
                                        {"pipewire", VRL_L("PipeWire")},
                                        {"alsa", VRL_L("ALSA")},
                                        {"wasapi", VRL_L("WASAPI")},
                                        {"directsound", VRL_L("DirectSound")},
                                        {"winmm", VRL_L("WinMM")},
                                        {"dummy", VRL_L("SDL dummy")},
                                        {"disk", VRL_L("SDL disk")}};

std::string ToName(const wchar* id) {
    return id ? PathToUtf8(id) : std::string();
}

} // namespace

void CAudioDeviceInfo::Set(const TSdlDeviceInfo& info, TAudioDirection direction) {
    id_ = PathFromUtf8(info.name.c_str());
    name_ = MakeText(info.name.c_str());
    direction_ = direction;
    isDefault_ = info.isDefault;
    channels_ = static_cast<std::uint32_t>(info.channels);
    samplesPerSec_ = static_cast<std::uint32_t>(info.samplesPerSec);
}

CSdlAudioSystem::CSdlAudioSystem() {
    try {
        CSdlThread& sdl = UseSdl();
        sdl.Run([&] { sdl.Begin(); });
    } catch (...) {
        // `EnumerateDevices` says why.
    }
}

CSdlAudioSystem::~CSdlAudioSystem() {
    if (sdl_) sdl_->Run([&] { sdl_->RemoveWatcher(change_); });
}

CSdlThread& CSdlAudioSystem::UseSdl() {
    const std::scoped_lock lock(mutex_);
    if (!sdl_) {
        sdl_.Acquire();
        try {
            sdl_->Run([&] { sdl_->AddWatcher(change_); });
        } catch (...) {
            sdl_.Release();
            throw;
        }
    }
    return *sdl_.Get();
}

const wchar* CSdlAudioSystem::GetName() {
    const char* driver = nullptr;
    try {
        CSdlThread& sdl = UseSdl();
        sdl.Run([&] { driver = sdl.GetDriver(); });
    } catch (const CFailedException&) {
        // There is none.
    }
    for (const TDriverName& row : kDriverNames) {
        if (driver && row.driver == driver) return row.name;
    }
    return VRL_L("SDL");
}

IObjectList* CSdlAudioSystem::EnumerateDevices(TAudioDirection direction) {
    if (direction > AUDIO_DIRECTION_LOOPBACK) Raise<CInvalidParameterException>(kUnknownDirection);
    CSdlThread& sdl = UseSdl();
    std::vector<TSdlDeviceInfo> devices;
    sdl.Run([&] {
        sdl.Begin();
        change_.SetState(false);
        devices = sdl.List(direction != AUDIO_DIRECTION_OUTPUT);
    });
    auto list = CreateAs<IObjectList>(classid::CObjectList);
    for (const TSdlDeviceInfo& device : devices) {
        if (device.isLoopback != (direction == AUDIO_DIRECTION_LOOPBACK)) continue;
        const auto info =
            CRefPtr<CAudioDeviceInfo>::Adopt(static_cast<CAudioDeviceInfo*>(NewObject<CAudioDeviceInfo>()));
        info->Set(device, direction);
        list->AddObject(info.Get());
    }
    return list.Detach();
}

IAudioOutput* CSdlAudioSystem::CreateOutput(const wchar* id) {
    std::string name = ToName(id);
    const bool isDefault = name.empty();
    const auto port = CRefPtr<CSdlPort>::Adopt(CreateSdlPort(std::move(name), false));
    return CreateAudioOutput(port.Get(), isDefault);
}

IAudioInput* CSdlAudioSystem::CreateInput(const wchar* id) {
    std::string name = ToName(id);
    const bool isDefault = name.empty();
    const auto port = CRefPtr<CSdlPort>::Adopt(CreateSdlPort(std::move(name), true));
    return CreateAudioInput(port.Get(), isDefault);
}
