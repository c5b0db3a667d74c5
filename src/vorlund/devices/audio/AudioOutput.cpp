#include "vorlund/devices/audio/AudioOutput.h"

#include "vorlund/devices/audio/Finally.h"

#include <vorlund/Exception.h>

#include <algorithm>
#include <utility>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/devices/audio/AudioOutput");
constexpr const wchar* kNotOpen = VRL_L("Device is not open");

constexpr TFailure kWriteClosed{VRL_L("vorlund::CAudioOutput::Write"), kFile, 14, kNotOpen};
constexpr TFailure kWritableClosed{VRL_L("vorlund::CAudioOutput::GetWritable"), kFile, 15, kNotOpen};
constexpr TFailure kPlayClosed{VRL_L("vorlund::CAudioOutput::Play"), kFile, 16, kNotOpen};
constexpr TFailure kStreamsClosed{VRL_L("vorlund::CAudioOutput::GetPlayingStreams"), kFile, 17, kNotOpen};
constexpr TFailure kPauseClosed{VRL_L("vorlund::CAudioOutput::SetPaused"), kFile, 18, kNotOpen};
constexpr TFailure kDrainClosed{VRL_L("vorlund::CAudioOutput::Drain"), kFile, 19, kNotOpen};
constexpr TFailure kFlushClosed{VRL_L("vorlund::CAudioOutput::Flush"), kFile, 20, kNotOpen};
constexpr TFailure kPositionClosed{VRL_L("vorlund::CAudioOutput::GetPosition"), kFile, 21, kNotOpen};
constexpr TFailure kDelayClosed{VRL_L("vorlund::CAudioOutput::GetDelay"), kFile, 22, kNotOpen};
constexpr TFailure kFormatClosed{VRL_L("vorlund::CAudioOutput::GetDeviceFormat"), kFile, 23, kNotOpen};
constexpr TFailure kOpenFormatClosed{VRL_L("vorlund::CAudioOutput::GetFormat"), kFile, 28, kNotOpen};
constexpr TFailure kLatencyClosed{VRL_L("vorlund::CAudioOutput::GetLatency"), kFile, 24, kNotOpen};
constexpr TFailure kBadVolume{VRL_L("vorlund::CAudioOutput::SetVolume"), kFile, 25,
                              VRL_L("Volume must be 0 to 16")};
constexpr TFailure kNoPort{VRL_L("vorlund::CreateAudioOutput"), kFile, 26, VRL_L("port is NULL")};

constexpr float kMaxVolume = 16;
constexpr std::uint32_t kUsualRate = 48000;

} // namespace

CAudioOutput::CAudioOutput() {
    common_->idle.SetState(true);
}

CAudioOutput::~CAudioOutput() {
    try {
        CAudioOutput::Close();
    } catch (...) {
        // Already reported when it was built; `Close` tells those who want to know.
    }
    JoinEnded();
    if (ended_.joinable()) ended_.detach();
}

void CAudioOutput::JoinEnded() {
    if (ended_.joinable() && ended_.get_id() != std::this_thread::get_id()) ended_.join();
}

void CAudioOutput::SetPort(IAudioPort* port, bool reopens) {
    port_ = CRefPtr<IAudioPort>::Share(port);
    reopens_ = reopens;
}

std::shared_ptr<COutputSession> CAudioOutput::Session(const TFailure& failure) {
    auto session = slot_.Get();
    if (!session) Raise<CInvalidStateException>(failure);
    return session;
}

void CAudioOutput::EndSession(COutputSession& session) {
    const CFinally note([&] {
        const std::lock_guard lock(lastMutex_);
        xruns_ = session.GetXruns();
        streamError_ = session.GetStreamError();
    });
    std::thread feeder = session.End();
    if (!feeder.joinable()) return;
    // The session was closed from inside one of its streams.
    JoinEnded();
    if (ended_.joinable()) ended_.detach();
    ended_ = std::move(feeder);
}

void CAudioOutput::Open() {
    OpenOutput({SAMPLE_FORMAT_FLOAT, 2, kUsualRate}, kDefaultAudioLatency);
}

void CAudioOutput::OpenOutput(const TDataFormat_AudioPcm& format, double latency) {
    // It may be the one of the session that is ended.
    const TDataFormat_AudioPcm wanted = format;
    slot_.Open([this](COutputSession& last) { EndSession(last); },
               [&] {
                   // Until its stream has returned and is released.
                   JoinEnded();
                   auto next = COutputSession::Open({port_.Get(), reopens_, wanted, latency}, common_);
                   const std::lock_guard lock(lastMutex_);
                   xruns_ = 0;
                   streamError_.clear();
                   return next;
               });
}

void CAudioOutput::Close() {
    slot_.Close([this](COutputSession& last) { EndSession(last); });
}

std::uint64_t CAudioOutput::Write(const void* buffer, std::uint64_t size) {
    return Session(kWriteClosed)->Write(buffer, size);
}
std::uint64_t CAudioOutput::GetWritable() {
    return Session(kWritableClosed)->GetWritable();
}
void CAudioOutput::Play(IInputStream* stream) {
    Session(kPlayClosed)->Play(stream);
}
std::uint32_t CAudioOutput::GetPlayingStreams() {
    return Session(kStreamsClosed)->GetPlayingStreams();
}
void CAudioOutput::SetPaused(bool isPaused) {
    Session(kPauseClosed)->SetPaused(isPaused);
}
bool CAudioOutput::Drain() {
    return Session(kDrainClosed)->Drain();
}
void CAudioOutput::Flush() {
    Session(kFlushClosed)->Flush();
}
std::uint64_t CAudioOutput::GetPosition() {
    return Session(kPositionClosed)->GetPosition();
}
std::uint64_t CAudioOutput::GetDelay() {
    return Session(kDelayClosed)->GetDelay();
}
const TDataFormat_AudioPcm& CAudioOutput::GetFormat() {
    return Session(kOpenFormatClosed)->GetFormat();
}
const TDataFormat_AudioPcm& CAudioOutput::GetDeviceFormat() {
    return Session(kFormatClosed)->GetDeviceFormat();
}
double CAudioOutput::GetLatency() {
    return Session(kLatencyClosed)->GetLatency();
}

void CAudioOutput::SetVolume(float volume) {
    if (!(volume >= 0 && volume <= kMaxVolume)) Raise<CInvalidParameterException>(kBadVolume);
    common_->volume = volume;
}

std::uint64_t CAudioOutput::GetXruns() {
    if (const auto session = slot_.Get()) return session->GetXruns();
    const std::lock_guard lock(lastMutex_);
    return xruns_;
}

TAudioState CAudioOutput::GetState() {
    const auto session = slot_.Get();
    return session ? session->GetState() : AUDIO_STATE_CLOSED;
}

std::uint32_t CAudioOutput::GetStreamError(wchar* text, std::uint32_t room) {
    wstring error;
    if (const auto session = slot_.Get()) {
        error = session->GetStreamError();
    } else {
        const std::lock_guard lock(lastMutex_);
        error = streamError_;
    }
    if (text && room > 0) {
        const std::size_t count = std::min<std::size_t>(error.size(), room - 1);
        error.copy(text, count);
        text[count] = 0;
    }
    return static_cast<std::uint32_t>(error.size());
}

IAudioOutput* CreateAudioOutput(IAudioPort* port, bool reopens) {
    if (!port) Raise<CNullPtrException>(kNoPort);
    auto output = CRefPtr<CAudioOutput>::Adopt(static_cast<CAudioOutput*>(NewObject<CAudioOutput>()));
    output->SetPort(port, reopens);
    return output.Detach();
}

} // namespace vorlund
