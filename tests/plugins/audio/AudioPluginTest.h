/// \file
/// The library with the plug-in audio.
#pragma once

#include "data/file/TemporaryFolder.h"
#include "plugins/audio/Environment.h"
#include "support/ChildProcess.h"
#include "support/Failures.h"
#include "support/LibraryScope.h"
#include "support/Streams.h"

#include <vorlund/AudioSystem.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Event.h>
#include <vorlund/ObjectList.h>
#include <vorlund/PluginStore.h>
#include <vorlund/RefPtr.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace vorlund::test {

/// The longest time for something that the sound system does.
inline constexpr float kSoundLimit = 60;

struct TListedDevice {
    std::string id;
    std::string name;
    bool isDefault;
    std::uint32_t channels;
    std::uint32_t samplesPerSec;
};

class CAudioPluginTest : public testing::Test {
protected:
    CAudioPluginTest() {
        store_.AddPluginPath(ToVorlund(BesideProgram("vorlund-plugins")).c_str());
        store_.LoadPlugin(VRL_L("audio"));
    }
    ~CAudioPluginTest() noexcept override {
        system_.Reset();
        store_.Close();
    }

    /// The plug-in's, made when it is asked for first.
    IAudioSystem& System() {
        if (!system_) system_ = CreateAs<IAudioSystem>(kAudioSystemClassId);
        return *system_;
    }

    std::vector<TListedDevice> List(TAudioDirection direction) {
        const auto list = CRefPtr<IObjectList>::Adopt(System().EnumerateDevices(direction));
        std::vector<TListedDevice> devices;
        for (unsigned int i = 0; i < list->GetObjectCount(); ++i) {
            const auto object = CRefPtr<IObject>::Adopt(list->GetObject(i));
            const auto info = object.Query<IAudioDeviceInfo>();
            EXPECT_EQ(info->GetDirection(), direction);
            devices.push_back({Narrow(info->GetId()), Narrow(info->GetName()), info->IsDefault(),
                               info->GetChannels(), info->GetSamplesPerSec()});
        }
        return devices;
    }

    /// Names, the default one with a star behind it.
    std::string Names(TAudioDirection direction) {
        std::string names;
        for (const TListedDevice& device : List(direction))
            names += (names.empty() ? "" : ", ") + device.name + (device.isDefault ? "*" : "");
        return names;
    }

    CRefPtr<IAudioOutput> MakeOutput(const char* id = nullptr) {
        return CRefPtr<IAudioOutput>::Adopt(System().CreateOutput(id ? PathFromUtf8(id).c_str() : nullptr));
    }
    CRefPtr<IAudioInput> MakeInput(const char* id = nullptr) {
        return CRefPtr<IAudioInput>::Adopt(System().CreateInput(id ? PathFromUtf8(id).c_str() : nullptr));
    }

    /// Waits until devices have changed.
    void WaitForChange() { System().GetChangeEvent().Wait(kSoundLimit); }

    CLibraryScope library_;
    CPluginStore store_;
    CRefPtr<IAudioSystem> system_;
};

/// Bytes of `frames` frames that do not repeat; floats lie within full scale.
inline TBytes MakeNoise(const TDataFormat_AudioPcm& format, std::size_t frames, std::uint32_t seed = 1) {
    TBytes bytes(frames * format.GetBlockSize());
    std::uint32_t state = seed * 2654435761u + 1;
    const auto next = [&] { return state = state * 1664525u + 1013904223u; };
    if (format.sampleFormat == SAMPLE_FORMAT_FLOAT) {
        for (std::size_t at = 0; at < bytes.size(); at += sizeof(float)) {
            const float value = static_cast<float>(static_cast<std::int32_t>(next() & ~0xFFu)) * 0x1p-32f;
            std::memcpy(bytes.data() + at, &value, sizeof value);
        }
    } else {
        for (auto& byte : bytes) byte = static_cast<std::uint8_t>(next() >> 24);
    }
    return bytes;
}

/// Closes an output as soon as another thread writes to it.
inline void CloseWhileWriting(IAudioOutput& output) {
    while (output.GetWritable() > 0) std::this_thread::yield();
    output.Close();
}

/// Where `sound` begins in `recording`, at a whole frame; nothing when it is not there whole.
inline std::optional<std::size_t> FindSound(const TBytes& recording, const TBytes& sound,
                                            std::size_t frameSize) {
    for (auto at = recording.begin();; ++at) {
        at = std::search(at, recording.end(), sound.begin(), sound.end());
        if (at == recording.end()) return std::nullopt;
        const auto position = static_cast<std::size_t>(at - recording.begin());
        if (position % frameSize == 0) return position;
    }
}

} // namespace vorlund::test
