// The port to a device of SDL.
#pragma once

#include "SdlThread.h"

#include <vorlund/AudioPort.h>
#include <vorlund/ObjectImpl.h>

#include <atomic>
#include <cstdint>
#include <string>

class CSdlPort : public vorlund::CObjectImpl<vorlund::IAudioPort>, private ISdlDevice {
public:
    static constexpr vorlund::CId ClassId{0x5C2E90B7, 0x1F6A4D38, 0x9B07E5A4, 0xC83D16F2};

    /// Of which device: `name` is SDL's, empty for the default one. Before the first `Open`.
    void SetDevice(std::string name, bool isInput);

    vorlund::TAudioPortFormat Open(const vorlund::TAudioPortFormat& wish,
                                   vorlund::IAudioPortClient& client) override;
    void Close() override;
    void Start() override;
    void Stop() override;
    std::uint32_t GetDelay() override;

protected:
    ~CSdlPort() { Close(); }

private:
    static void SDLCALL OnFrames(void* self, Uint8* stream, int size);
    void Move(Uint8* stream, int size) noexcept;
    void OnLost() noexcept override;

    std::string name_;
    bool isInput_ = false;
    CSdlUse sdl_;
    vorlund::IAudioPortClient* client_ = nullptr;
    /// The rest is written while no call comes.
    const TSdlLibrary* library_ = nullptr;
    SDL_AudioDeviceID id_ = 0;
    SDL_AudioSpec spec_{};
    std::uint32_t frameSize_ = 0;
    /// What lies between the client and the device behind a call, or before one, in frames.
    std::uint32_t room_ = 0;
    /// When the last call came, in nanoseconds; 0 before the first one.
    std::atomic<std::int64_t> lastCall_ = 0;
};

/// A port with one reference for the caller.
CSdlPort* CreateSdlPort(std::string name, bool isInput);
