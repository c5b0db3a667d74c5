#include "vorlund/devices/audio/SteppedSystem.h"

#include "vorlund/devices/audio/DeviceInfo.h"
#include "vorlund/devices/audio/SteppedPort.h"

#include <vorlund/AudioPort.h>
#include <vorlund/ClassIds.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>

namespace vorlund {
namespace {

/// Behind the name of a device: what it plays, as an input.
constexpr const wchar* kLoopback = VRL_L(".loopback");

CRefPtr<CSteppedPort> MakePort(const std::shared_ptr<CSteppedWorld>& world, const wchar* name,
                               TAudioDirection direction) {
    auto port = CRefPtr<CSteppedPort>::Adopt(static_cast<CSteppedPort*>(NewObject<CSteppedPort>()));
    port->SetDevice(world, name, direction);
    return port;
}

bool IsDefault(const wchar* id) {
    return !id || !*id;
}

} // namespace

CSteppedSystem::~CSteppedSystem() {
    if (world_) world_->RemoveWatcher(change_);
}

void CSteppedSystem::SetWorld(const std::shared_ptr<CSteppedWorld>& world) {
    world->AddWatcher(change_);
    world_ = world;
}

IObjectList* CSteppedSystem::EnumerateDevices(TAudioDirection direction) {
    change_.SetState(false);
    auto list = CreateAs<IObjectList>(classid::CObjectList);
    for (const CSteppedWorld::TListed& device : world_->List()) {
        TAudioDeviceRecord record;
        record.id = record.name = CSteppedWorld::GetName(device.device);
        if (direction == AUDIO_DIRECTION_LOOPBACK) record.id += kLoopback;
        record.direction = direction;
        record.isDefault = device.isDefault;
        if (device.hasFormat) {
            record.channels = device.format.channels;
            record.samplesPerSec = device.format.samplesPerSec;
        }
        list->AddObject(MakeAudioDeviceInfo(record).Get());
    }
    return list.Detach();
}

IAudioOutput* CSteppedSystem::CreateOutput(const wchar* id) {
    return CreateAudioOutput(MakePort(world_, id, AUDIO_DIRECTION_OUTPUT).Get(), IsDefault(id));
}

IAudioInput* CSteppedSystem::CreateInput(const wchar* id) {
    const wstring name = id ? id : VRL_L("");
    const wstring loopback = kLoopback;
    if (!name.ends_with(loopback))
        return CreateAudioInput(MakePort(world_, id, AUDIO_DIRECTION_INPUT).Get(), IsDefault(id));
    const wstring device = name.substr(0, name.size() - loopback.size());
    return CreateAudioInput(MakePort(world_, device.c_str(), AUDIO_DIRECTION_LOOPBACK).Get(), device.empty());
}

} // namespace vorlund
