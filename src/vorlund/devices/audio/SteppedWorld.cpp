#include "vorlund/devices/audio/SteppedWorld.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace vorlund {
namespace {

constexpr const wchar* kNames[] = {VRL_L("a"), VRL_L("b")};
constexpr std::uint32_t kPeriodFrames = 128;
constexpr std::uint32_t kPeriods = 4;

} // namespace

const wchar* CSteppedWorld::GetName(std::size_t device) {
    return kNames[device];
}

std::size_t CSteppedWorld::FindDevice(const wchar* name) {
    if (!name) return kNone;
    const auto found = std::find_if(std::begin(kNames), std::end(kNames),
                                    [&](const wchar* known) { return wstring(known) == name; });
    return static_cast<std::size_t>(found - std::begin(kNames));
}

std::size_t CSteppedWorld::GetDefault() const {
    if (devices_[wantedDefault_].isPresent) return wantedDefault_;
    const auto found = std::find_if(devices_.begin(), devices_.end(),
                                    [](const TDevice& device) { return device.isPresent; });
    return static_cast<std::size_t>(found - devices_.begin());
}

CSteppedWorld::TClient CSteppedWorld::Open(const wstring& name, TAudioDirection direction,
                                           const TAudioPortFormat& wish, CAudioClient& client, bool& isBusy) {
    const std::lock_guard lock(mutex_);
    const std::size_t device = name.empty() ? GetDefault() : FindDevice(name.c_str());
    isBusy = false;
    Know(client);
    if (isEnded_ || device == kNone || !devices_[device].isPresent) return nullptr;
    isBusy = std::any_of(clients_.begin(), clients_.end(), [&](const TClient& other) {
        return other->device == device && other->direction == direction && !other->isLost;
    });
    if (isBusy) return nullptr;
    auto opened = std::make_shared<TSteppedClient>();
    opened->client = client.shared_from_this();
    opened->direction = direction;
    opened->device = device;
    opened->follows = name.empty();
    opened->port = wish;
    if (const auto& format = devices_[device].format) {
        opened->port.sampleFormat = format->sampleFormat;
        opened->port.channels = format->channels;
        opened->port.samplesPerSec = format->samplesPerSec;
    }
    if (wish.periodFrames == 0) opened->port.periodFrames = kPeriodFrames;
    if (wish.periods == 0) opened->port.periods = kPeriods;
    opened->format = {opened->port.sampleFormat, opened->port.channels, opened->port.samplesPerSec};
    if (rate_ == 0) rate_ = opened->port.samplesPerSec;
    clients_.push_back(opened);
    // Outputs move before those that hear them.
    std::stable_partition(clients_.begin(), clients_.end(),
                          [](const TClient& other) { return other->direction == AUDIO_DIRECTION_OUTPUT; });
    return opened;
}

void CSteppedWorld::Know(CAudioClient& client) {
    std::erase_if(known_, [&](const auto& other) {
        const auto living = other.lock();
        return !living || living.get() == &client;
    });
    known_.push_back(client.weak_from_this());
}

void CSteppedWorld::Close(const TClient& client) {
    Stop(*client);
    const std::lock_guard lock(mutex_);
    std::erase(clients_, client);
    client->client.reset();
}

void CSteppedWorld::Start(TSteppedClient& client) {
    const std::lock_guard lock(client.callMutex);
    client.isStarted = true;
}

void CSteppedWorld::Stop(TSteppedClient& client) {
    const std::lock_guard lock(client.callMutex);
    client.isStarted = false;
}

std::vector<CSteppedWorld::TListed> CSteppedWorld::List() {
    const std::lock_guard lock(mutex_);
    std::vector<TListed> list;
    for (std::size_t i = 0; i < kDevices; ++i) {
        const TDevice& device = devices_[i];
        if (!device.isPresent) continue;
        list.push_back({i, i == GetDefault(), device.format.value_or(TDataFormat_AudioPcm()),
                        device.format.has_value()});
    }
    return list;
}

void CSteppedWorld::AddWatcher(CEvent& event) {
    const std::lock_guard lock(mutex_);
    watchers_.push_back(&event);
}

void CSteppedWorld::RemoveWatcher(CEvent& event) {
    const std::lock_guard lock(mutex_);
    std::erase(watchers_, &event);
}

std::uint64_t CSteppedWorld::GetTime() {
    const std::lock_guard lock(mutex_);
    return time_;
}

void CSteppedWorld::SetFormat(std::size_t device, const TDataFormat_AudioPcm& format) {
    const std::lock_guard lock(mutex_);
    devices_[device].format = format;
}

std::uint64_t CSteppedWorld::GetPlayed(std::size_t device, std::uint64_t position, void* buffer,
                                       std::uint64_t size) {
    const std::lock_guard lock(mutex_);
    const TDevice& from = devices_[device];
    if (position < from.forgotten || position - from.forgotten >= from.played.size()) return 0;
    const auto begin = static_cast<std::size_t>(position - from.forgotten);
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(size, from.played.size() - begin));
    std::memcpy(buffer, from.played.data() + begin, count);
    return count;
}

std::uint64_t CSteppedWorld::GetPlayedSize(std::size_t device) {
    const std::lock_guard lock(mutex_);
    return devices_[device].forgotten + devices_[device].played.size();
}

void CSteppedWorld::ForgetPlayed(std::size_t device, bool keeps) {
    const std::lock_guard lock(mutex_);
    TDevice& from = devices_[device];
    from.forgotten += from.played.size();
    from.played.clear();
    from.keeps = keeps;
}

void CSteppedWorld::SetInput(std::size_t device, const void* frames, std::size_t size) {
    const auto* const bytes = static_cast<const std::byte*>(frames);
    const std::lock_guard lock(mutex_);
    devices_[device].input.assign(bytes, bytes + size);
    devices_[device].inputAt = 0;
}

void CSteppedWorld::End() {
    const std::lock_guard lock(mutex_);
    isEnded_ = true;
    for (std::size_t device = 0; device < kDevices; ++device) DoFault({0, TFaultKind::Lose, device, 0});
}

} // namespace vorlund
