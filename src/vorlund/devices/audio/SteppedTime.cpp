// How time passes, and what goes wrong in it.
#include "vorlund/devices/audio/SteppedWorld.h"

#include <algorithm>
#include <cstring>

namespace vorlund {
namespace {

constexpr std::int64_t kMillion = 1000000;
/// Products of a piece, a rate and a drift stay below 64 bits.
constexpr std::uint64_t kLongestPiece = std::uint64_t{1} << 20;

} // namespace

void CSteppedWorld::AddFault(std::uint64_t at, TFaultKind kind, std::size_t device, std::int64_t number) {
    bool isDue = false;
    {
        const std::lock_guard lock(mutex_);
        const auto behind =
            std::upper_bound(faults_.begin(), faults_.end(), at,
                             [](std::uint64_t time, const TFault& fault) { return time < fault.at; });
        faults_.insert(behind, {at, kind, device, number});
        isDue = at <= time_;
    }
    if (isDue && DoFaults()) AwaitQuiet();
}

bool CSteppedWorld::DoFaults() {
    const std::lock_guard lock(mutex_);
    bool isDone = false;
    while (!faults_.empty() && faults_.front().at <= time_) {
        const TFault fault = faults_.front();
        faults_.erase(faults_.begin());
        DoFault(fault);
        isDone = true;
    }
    for (std::size_t i = 0; i < kDevices; ++i) {
        TDevice& device = devices_[i];
        if (!device.isStalled || time_ < device.stalledUntil) continue;
        device.isStalled = false;
        for (const TClient& client : clients_)
            if (client->device == i) client->client->NoteXruns(1);
    }
    return isDone;
}

void CSteppedWorld::DoFault(const TFault& fault) {
    TDevice& device = devices_[fault.device];
    switch (fault.kind) {
    case TFaultKind::Stall:
        device.isStalled = true;
        device.stalledUntil = time_ + static_cast<std::uint64_t>(fault.number);
        return;
    case TFaultKind::Drift:
        device.drift = fault.number;
        return;
    case TFaultKind::Lose:
        device.isPresent = false;
        for (const TClient& client : clients_)
            if (client->device == fault.device) Lose(*client);
        break;
    case TFaultKind::Return:
        device.isPresent = !isEnded_;
        break;
    case TFaultKind::Default:
        wantedDefault_ = fault.device;
        break;
    }
    FollowDefault();
    for (CEvent* const watcher : watchers_) watcher->SetState(true);
}

void CSteppedWorld::Lose(TSteppedClient& client) {
    if (client.isLost) return;
    client.isLost = true;
    client.client->NoteLost();
    // No real time is to pass before it looks for another device.
    if (client.follows) client.client->NoteReturned();
}

void CSteppedWorld::FollowDefault() {
    const std::size_t now = GetDefault();
    for (const TClient& client : clients_)
        if (client->follows && client->device != now && now != kNone) Lose(*client);
    for (const auto& known : known_)
        if (const auto client = known.lock()) client->NoteReturned();
}

void CSteppedWorld::AwaitQuiet() {
    std::vector<std::shared_ptr<CAudioClient>> all;
    {
        const std::lock_guard lock(mutex_);
        for (const auto& known : known_)
            if (auto client = known.lock()) all.push_back(std::move(client));
    }
    for (const auto& client : all) client->WaitUntilReady(~std::uint32_t{0});
}

std::uint64_t CSteppedWorld::PlanPiece(std::uint64_t frames) {
    const std::lock_guard lock(mutex_);
    frames = std::min(frames, kLongestPiece);
    if (!faults_.empty()) frames = std::min(frames, faults_.front().at - time_);
    for (const TDevice& device : devices_)
        if (device.isStalled) frames = std::min(frames, device.stalledUntil - time_);
    // No more than a period of anybody, as far as pieces have whole frames.
    for (const TClient& client : clients_) {
        const std::uint64_t period =
            std::uint64_t{client->port.periodFrames} * rate_ / client->port.samplesPerSec;
        frames = std::min(frames, std::max<std::uint64_t>(period, 1));
    }
    pieces_.clear();
    for (const TClient& client : clients_) {
        const TDevice& device = devices_[client->device];
        const std::uint64_t unit = std::uint64_t{rate_} * kMillion;
        client->debt +=
            frames * client->port.samplesPerSec * static_cast<std::uint64_t>(kMillion + device.drift);
        const auto count = static_cast<std::uint32_t>(client->debt / unit);
        client->debt %= unit;
        if (count > 0 && !device.isStalled && !client->isLost) pieces_.push_back({client, count});
    }
    time_ += frames;
    return frames;
}

void CSteppedWorld::Step(std::uint64_t frames) {
    if (DoFaults()) AwaitQuiet();
    while (frames > 0) {
        frames -= PlanPiece(frames);
        for (auto& heard : heard_) heard.clear();
        for (const TPiece& piece : pieces_) Run(piece);
        pieces_.clear();
        if (DoFaults()) AwaitQuiet();
    }
    AwaitQuiet();
}

void CSteppedWorld::Run(const TPiece& piece) {
    TSteppedClient& client = *piece.client;
    std::shared_ptr<CAudioClient> called;
    {
        const std::lock_guard lock(mutex_);
        called = client.client;
    }
    if (!called) return;
    const bool isOutput = client.direction == AUDIO_DIRECTION_OUTPUT;
    called->WaitUntilReady(piece.frames);
    block_.resize(std::size_t{piece.frames} * client.format.GetBlockSize());
    const std::lock_guard call(client.callMutex);
    if (!client.isStarted) return;
    if (!isOutput) Hear(client, piece.frames);
    called->Process(block_.data(), piece.frames);
    if (!isOutput) return;
    heard_[client.device] = block_;
    heardFormat_[client.device] = client.format;
    const std::lock_guard lock(mutex_);
    TDevice& device = devices_[client.device];
    if (device.keeps)
        device.played.insert(device.played.end(), block_.begin(), block_.end());
    else
        device.forgotten += block_.size();
}

void CSteppedWorld::Hear(TSteppedClient& client, std::uint32_t frames) {
    const std::size_t frameSize = client.format.GetBlockSize();
    std::memset(block_.data(), client.format.GetZeroByte(), block_.size());
    if (client.direction == AUDIO_DIRECTION_LOOPBACK) {
        const TDataFormat_AudioPcm& from = heardFormat_[client.device];
        const std::vector<std::byte>& heard = heard_[client.device];
        if (heard.empty() || from.samplesPerSec != client.format.samplesPerSec) return;
        const std::size_t count = std::min<std::size_t>(frames, heard.size() / from.GetBlockSize());
        CFrameConversion(from, client.format).Convert(block_.data(), heard.data(), count);
        return;
    }
    const std::lock_guard lock(mutex_);
    TDevice& device = devices_[client.device];
    const std::size_t left = (device.input.size() - device.inputAt) / frameSize * frameSize;
    const std::size_t count = std::min(block_.size(), left);
    std::copy_n(device.input.data() + device.inputAt, count, block_.data());
    device.inputAt += count;
}

} // namespace vorlund
