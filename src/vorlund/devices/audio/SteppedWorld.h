// Two devices whose time is advanced by hand.
#pragma once

#include "vorlund/devices/audio/AudioClient.h"
#include "vorlund/devices/audio/AudioFormats.h"

#include <vorlund/AudioSystem.h>
#include <vorlund/Event.h>

#include <array>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace vorlund {

/// What a port holds of the world while it is open.
struct TSteppedClient {
    std::shared_ptr<CAudioClient> client;
    TAudioDirection direction;
    std::size_t device;
    /// Follows the default device.
    bool follows;
    TAudioPortFormat port;
    TDataFormat_AudioPcm format;

    /// The device has gone; under the world's mutex.
    bool isLost = false;
    /// Held while the client is called. Guards `isStarted`.
    std::mutex callMutex;
    bool isStarted = false;
    /// Frames that it is behind, in units that depend on the rates.
    std::uint64_t debt = 0;
};

// One thread steps at a time. `mutex_` guards everything here and is not held while clients are called or
// waited for, because these open and close ports meanwhile; a client is called under its own mutex, for which
// `Stop` waits.
class CSteppedWorld {
public:
    static constexpr std::size_t kDevices = 2;
    static constexpr std::size_t kNone = kDevices;
    using TClient = std::shared_ptr<TSteppedClient>;

    /// \name For ports
    /// @{
    /// Null where the device is not there, or is in use. An empty name is the default device.
    TClient Open(const wstring& name, TAudioDirection direction, const TAudioPortFormat& wish,
                 CAudioClient& client, bool& isBusy);
    void Close(const TClient& client);
    static void Start(TSteppedClient& client);
    static void Stop(TSteppedClient& client);
    /// @}

    /// \name For systems
    /// @{
    struct TListed {
        std::size_t device;
        bool isDefault;
        TDataFormat_AudioPcm format;
        bool hasFormat;
    };
    std::vector<TListed> List();
    void AddWatcher(CEvent& event);
    void RemoveWatcher(CEvent& event);
    static const wchar* GetName(std::size_t device);
    /// @}

    /// \name For `CSteppedAudio`
    /// @{
    /// `kNone` for another name.
    static std::size_t FindDevice(const wchar* name);
    void Step(std::uint64_t frames);
    std::uint64_t GetTime();
    enum class TFaultKind { Stall, Lose, Return, Default, Drift };
    /// `number` is that of frames or of millionths.
    void AddFault(std::uint64_t at, TFaultKind kind, std::size_t device, std::int64_t number = 0);
    void SetFormat(std::size_t device, const TDataFormat_AudioPcm& format);
    std::uint64_t GetPlayed(std::size_t device, std::uint64_t position, void* buffer, std::uint64_t size);
    std::uint64_t GetPlayedSize(std::size_t device);
    void ForgetPlayed(std::size_t device, bool keeps);
    void SetInput(std::size_t device, const void* frames, std::size_t size);
    /// All devices go for good. Needs no memory: a destructor calls it.
    void End();
    /// @}

private:
    struct TDevice {
        bool isPresent = true;
        std::optional<TDataFormat_AudioPcm> format;
        std::int64_t drift = 0;
        std::uint64_t stalledUntil = 0;
        bool isStalled = false;
        std::vector<std::byte> played;
        std::uint64_t forgotten = 0;
        bool keeps = true;
        std::vector<std::byte> input;
        std::size_t inputAt = 0;
    };
    struct TFault {
        std::uint64_t at;
        TFaultKind kind;
        std::size_t device;
        std::int64_t number;
    };
    struct TPiece {
        TClient client;
        std::uint32_t frames;
    };

    std::size_t GetDefault() const;
    void Know(CAudioClient& client);
    static void Lose(TSteppedClient& client);
    /// Does what is due; false when nothing was.
    bool DoFaults();
    void DoFault(const TFault& fault);
    void FollowDefault();
    /// How long the next piece is, at most `frames`, and who moves how many frames in it.
    std::uint64_t PlanPiece(std::uint64_t frames);
    void Run(const TPiece& piece);
    void Hear(TSteppedClient& client, std::uint32_t frames);
    /// Returns when every client has dealt with what it was told.
    void AwaitQuiet();

    std::mutex mutex_;
    std::array<TDevice, kDevices> devices_;
    std::size_t wantedDefault_ = 0;
    std::uint64_t time_ = 0;
    /// Rate of the first opened device; 0 until then.
    std::uint32_t rate_ = 0;
    bool isEnded_ = false;
    std::vector<TFault> faults_;
    std::vector<TClient> clients_;
    /// All that have opened a device or tried to: between two devices a client is in no other list.
    std::vector<std::weak_ptr<CAudioClient>> known_;
    std::vector<CEvent*> watchers_;

    /// \name Of the thread that steps
    /// @{
    std::vector<TPiece> pieces_;
    std::vector<std::byte> block_;
    /// What the output of each device has just played.
    std::array<std::vector<std::byte>, kDevices> heard_;
    std::array<TDataFormat_AudioPcm, kDevices> heardFormat_;
    /// @}
};

} // namespace vorlund
