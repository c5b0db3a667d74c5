#include "SdlPort.h"

#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstring>
#include <string_view>
#include <utility>

using namespace vorlund;

namespace {

constexpr std::uint32_t kUsualPeriod = 2048;

/// What the client wishes to lie before the device, in frames; 0 when it leaves that to the device.
std::uint64_t GetWishedFrames(const TAudioPortFormat& wish) {
    return std::uint64_t{wish.periodFrames} * wish.periods;
}

/// Half of the wish, because one block is played while another one is made: the power of two that is nearest,
/// within what SDL can count. Some drivers take no other number, and SDL 2.26 then gives them more frames
/// than their buffer holds.
Uint16 ChoosePeriod(const TAudioPortFormat& wish) {
    constexpr std::uint64_t kMin = 32;
    constexpr std::uint64_t kMax = 32768;
    const std::uint64_t half = GetWishedFrames(wish) / 2;
    if (half == 0) return kUsualPeriod;
    if (half >= kMax) return kMax;
    const std::uint64_t below = std::bit_floor(std::max(half, kMin));
    return static_cast<Uint16>(half > below + below / 2 ? below * 2 : below);
}

SDL_AudioFormat ToSdl(std::uint32_t sampleFormat) {
    switch (sampleFormat) {
    case SAMPLE_FORMAT_8BIT:
        return AUDIO_U8;
    case SAMPLE_FORMAT_16BIT:
        return AUDIO_S16SYS;
    case SAMPLE_FORMAT_32BIT:
        return AUDIO_S32SYS;
    default:
        return AUDIO_F32SYS;
    }
}

std::uint32_t FromSdl(SDL_AudioFormat format) {
    switch (format) {
    case AUDIO_U8:
        return SAMPLE_FORMAT_8BIT;
    case AUDIO_S16SYS:
        return SAMPLE_FORMAT_16BIT;
    case AUDIO_S32SYS:
        return SAMPLE_FORMAT_32BIT;
    default:
        return SAMPLE_FORMAT_FLOAT;
    }
}

/// Blocks between the client and the device when a call returns: the one that SDL has in hand, and what its
/// driver keeps in front of it. The drivers without hardware keep nothing.
std::uint32_t CountPeriods(std::string_view driver) {
    if (driver == "dummy" || driver == "disk") return 1;
    return driver == "alsa" ? 3 : 2;
}

std::int64_t GetNow() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

} // namespace

CSdlPort* CreateSdlPort(std::string name, bool isInput) {
    auto* const port = static_cast<CSdlPort*>(NewObject<CSdlPort>());
    port->SetDevice(std::move(name), isInput);
    return port;
}

void CSdlPort::SetDevice(std::string name, bool isInput) {
    name_ = std::move(name);
    isInput_ = isInput;
}

TAudioPortFormat CSdlPort::Open(const TAudioPortFormat& wish, IAudioPortClient& client) {
    Close();
    sdl_.Acquire();
    client_ = &client;
    spec_ = {};
    spec_.freq = static_cast<int>(wish.samplesPerSec);
    spec_.format = ToSdl(wish.sampleFormat);
    spec_.channels = static_cast<Uint8>(std::clamp<std::uint32_t>(wish.channels, 1, 8));
    spec_.samples = ChoosePeriod(wish);
    spec_.callback = &OnFrames;
    spec_.userdata = this;
    lastCall_ = 0;
    std::uint32_t periods = 0;
    try {
        sdl_->Run([&] {
            library_ = &sdl_->GetLibrary();
            id_ = sdl_->Open(name_, isInput_, spec_, *this);
            periods = CountPeriods(sdl_->GetDriver());
            frameSize_ = SDL_AUDIO_BITSIZE(spec_.format) / 8U * spec_.channels;
            room_ = spec_.samples * periods;
        });
    } catch (...) {
        sdl_.Release();
        throw;
    }
    // What of a long wish SDL cannot keep lies with the client.
    const auto wished = static_cast<std::uint32_t>(GetWishedFrames(wish) / spec_.samples);
    return {FromSdl(spec_.format), spec_.channels, static_cast<std::uint32_t>(spec_.freq), spec_.samples,
            std::max(periods, wished)};
}

void CSdlPort::Close() {
    if (!sdl_) return;
    sdl_->Run([&] { sdl_->Close(*this); });
    sdl_.Release();
}

void CSdlPort::Start() {
    if (sdl_) sdl_->Run([&] { sdl_->SetPaused(*this, false); });
}

void CSdlPort::Stop() {
    if (sdl_) sdl_->Run([&] { sdl_->SetPaused(*this, true); });
}

std::uint32_t CSdlPort::GetDelay() {
    const std::int64_t last = lastCall_.load(std::memory_order_relaxed);
    if (last == 0) return 0;
    // SDL does not tell where the device is; between two calls it goes on at its rate.
    const double passed = static_cast<double>(GetNow() - last) * 1e-9 * spec_.freq;
    const auto frames = static_cast<std::uint32_t>(std::clamp(passed, 0.0, double{1} * room_));
    return isInput_ ? frames : room_ - frames;
}

void SDLCALL CSdlPort::OnFrames(void* self, Uint8* stream, int size) {
    static_cast<CSdlPort*>(self)->Move(stream, size);
}

void CSdlPort::Move(Uint8* stream, int size) noexcept {
    // A lost device goes on calling, for programs whose time depends on it.
    if (library_->GetAudioDeviceStatus(id_) == SDL_AUDIO_STOPPED) {
        std::memset(stream, spec_.silence, static_cast<std::size_t>(size));
        return;
    }
    client_->Process(stream, static_cast<std::uint32_t>(size) / frameSize_);
    lastCall_.store(GetNow(), std::memory_order_relaxed);
}

void CSdlPort::OnLost() noexcept {
    client_->NoteLost();
}
