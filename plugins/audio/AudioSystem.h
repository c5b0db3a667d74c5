// The devices of the system.
#pragma once

#include "SdlThread.h"

#include <vorlund/AudioSystem.h>
#include <vorlund/ObjectImpl.h>

#include <mutex>
#include <string>

class CAudioDeviceInfo : public vorlund::CObjectImpl<vorlund::IAudioDeviceInfo> {
public:
    static constexpr vorlund::CId ClassId{0xB1940E6D, 0x72C84F15, 0x8D3A6B90, 0x4E57F2C8};

    void Set(const TSdlDeviceInfo& info, vorlund::TAudioDirection direction);

    const vorlund::wchar* GetId() override { return id_.c_str(); }
    const vorlund::wchar* GetName() override { return name_.c_str(); }
    vorlund::TAudioDirection GetDirection() override { return direction_; }
    bool IsDefault() override { return isDefault_; }
    std::uint32_t GetChannels() override { return channels_; }
    std::uint32_t GetSamplesPerSec() override { return samplesPerSec_; }

protected:
    ~CAudioDeviceInfo() noexcept(false) = default;

private:
    vorlund::wstring id_;
    vorlund::wstring name_;
    vorlund::TAudioDirection direction_ = vorlund::AUDIO_DIRECTION_OUTPUT;
    bool isDefault_ = false;
    std::uint32_t channels_ = 0;
    std::uint32_t samplesPerSec_ = 0;
};

class CSdlAudioSystem : public vorlund::CObjectImpl<vorlund::IAudioSystem> {
public:
    static constexpr vorlund::CId ClassId = vorlund::kAudioSystemClassId;

    CSdlAudioSystem();

    const vorlund::wchar* GetName() override;
    vorlund::IObjectList* EnumerateDevices(vorlund::TAudioDirection direction) override;
    vorlund::CEvent& GetChangeEvent() override { return change_; }
    vorlund::IAudioOutput* CreateOutput(const vorlund::wchar* id) override;
    vorlund::IAudioInput* CreateInput(const vorlund::wchar* id) override;

protected:
    ~CSdlAudioSystem();

private:
    /// Has the thread run, and tell of changes. Raises what `CSdlUse::Acquire` raises.
    CSdlThread& UseSdl();

    vorlund::CEvent change_;
    std::mutex mutex_;
    CSdlUse sdl_;
};
