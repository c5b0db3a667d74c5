// The devices that the program plays on and records from, by the names that the command line gives them.
#pragma once

#include <vorlund/AudioSystem.h>
#include <vorlund/DataFormat.h>
#include <vorlund/RefPtr.h>

#include <optional>
#include <string>
#include <vector>

/// The names of the devices that need no sound system.
constexpr const char* kNullDevice = "null";
constexpr const char* kFileDevice = "file:";

/// The name of the file of the device `kFileDevice`, UTF-8; nothing for other devices.
std::optional<std::string> GetFileOfDevice(const std::string& device);

/// A device as it is listed.
struct TAudioDevice {
    vorlund::wstring id;
    vorlund::wstring name;
    vorlund::TAudioDirection direction;
    bool isDefault;
    /// 0 where the system does not say.
    std::uint32_t channels;
    std::uint32_t samplesPerSec;
};

/// The sound system, or why there is none.
struct TAudioSystem {
    vorlund::CRefPtr<vorlund::IAudioSystem> system;
    /// Why there is none, in a few words.
    vorlund::wstring problem;
};

/// Raises nothing but for want of memory.
TAudioSystem FindAudioSystem();

/// Raises what the system raises.
std::vector<TAudioDevice> ListDevices(vorlund::IAudioSystem& system, vorlund::TAudioDirection direction);

/// A closed output. `device` is an id, `kNullDevice`, `kFileDevice` with a name, or empty for the default
/// one. Raises `TProgramError`, which names what plays without a device where there is none.
vorlund::CRefPtr<vorlund::IAudioOutput> MakeAudioOutput(const std::string& device);

/// Opens it; raises as `MakeAudioOutput`, with the reason of the system.
void OpenAudioOutput(vorlund::IAudioOutput& output, const std::string& device,
                     const vorlund::TDataFormat_AudioPcm& format, double latency);

/// Closes it. Raises `TProgramError` when not everything has reached a file.
void CloseAudioOutput(vorlund::IAudioOutput& output, const std::string& device);

/// A closed input, and what the system says of it. `device` as above, without files; with `isLoopback` one
/// that records what an output plays.
struct TFoundInput {
    vorlund::CRefPtr<vorlund::IAudioInput> input;
    std::optional<TAudioDevice> device;
};
TFoundInput MakeAudioInput(const std::string& device, bool isLoopback);

/// Opens it; raises as `MakeAudioInput`, with the reason of the system.
void OpenAudioInput(vorlund::IAudioInput& input, const std::string& device,
                    const vorlund::TDataFormat_AudioPcm& format, double latency);

/// Closes an output or an input, which must stay there, on every way out.
template <class TDevice> class COpenDevice {
public:
    explicit COpenDevice(const vorlund::CRefPtr<TDevice>& device) : device_(device) {}
    COpenDevice(const COpenDevice&) = delete;
    COpenDevice& operator=(const COpenDevice&) = delete;
    ~COpenDevice() {
        try {
            device_->Close();
        } catch (...) {
            // Who wants to know has closed it.
        }
    }

private:
    const vorlund::CRefPtr<TDevice>& device_;
};
