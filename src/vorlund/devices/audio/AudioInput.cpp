#include "vorlund/devices/audio/AudioInput.h"

#include <vorlund/Exception.h>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/devices/audio/AudioInput");
constexpr const wchar* kNotOpen = VRL_L("Device is not open");

constexpr TFailure kStreamClosed{VRL_L("vorlund::CAudioInput::GetStream"), kFile, 6, kNotOpen};
constexpr TFailure kReadableClosed{VRL_L("vorlund::CAudioInput::GetReadable"), kFile, 7, kNotOpen};
constexpr TFailure kPauseClosed{VRL_L("vorlund::CAudioInput::SetPaused"), kFile, 8, kNotOpen};
constexpr TFailure kStopClosed{VRL_L("vorlund::CAudioInput::Stop"), kFile, 9, kNotOpen};
constexpr TFailure kPositionClosed{VRL_L("vorlund::CAudioInput::GetPosition"), kFile, 10, kNotOpen};
constexpr TFailure kFormatClosed{VRL_L("vorlund::CAudioInput::GetDeviceFormat"), kFile, 11, kNotOpen};
constexpr TFailure kLatencyClosed{VRL_L("vorlund::CAudioInput::GetLatency"), kFile, 12, kNotOpen};
constexpr TFailure kNoPort{VRL_L("vorlund::CreateAudioInput"), kFile, 13, VRL_L("port is NULL")};

constexpr std::uint32_t kUsualRate = 48000;

} // namespace

CAudioInput::~CAudioInput() {
    try {
        CAudioInput::Close();
    } catch (...) {
        // Already reported when it was built; `Close` tells those who want to know.
    }
}

void CAudioInput::SetPort(IAudioPort* port, bool reopens) {
    port_ = CRefPtr<IAudioPort>::Share(port);
    reopens_ = reopens;
}

std::shared_ptr<CInputSession> CAudioInput::Session(const TFailure& failure) {
    auto session = slot_.Get();
    if (!session) Raise<CInvalidStateException>(failure);
    return session;
}

void CAudioInput::EndSession(CInputSession& session) {
    const CFinally note([&] { xruns_ = session.GetXruns(); });
    session.End();
}

void CAudioInput::Open() {
    OpenInput({SAMPLE_FORMAT_FLOAT, 2, kUsualRate}, kDefaultAudioLatency);
}

void CAudioInput::OpenInput(const TDataFormat_AudioPcm& format, double latency) {
    // It may be the one of the session that is ended.
    const TDataFormat_AudioPcm wanted = format;
    slot_.Open([this](CInputSession& last) { EndSession(last); },
               [&] {
                   const auto stream = CRefPtr<CCaptureStream>::Adopt(
                       static_cast<CCaptureStream*>(NewObject<CCaptureStream>()));
                   auto next = CInputSession::Open({port_.Get(), reopens_, wanted, latency});
                   stream->SetSession(next);
                   stream_ = CRefPtr<IInputStream>::Share(stream.Get());
                   xruns_ = 0;
                   return next;
               });
}

void CAudioInput::Close() {
    slot_.Close([this](CInputSession& last) { EndSession(last); });
}

IInputStream* CAudioInput::GetStream() {
    Session(kStreamClosed);
    return CRefPtr<IInputStream>(stream_).Detach();
}
std::uint64_t CAudioInput::GetReadable() {
    return Session(kReadableClosed)->GetReadable();
}
void CAudioInput::SetPaused(bool isPaused) {
    Session(kPauseClosed)->SetPaused(isPaused);
}
void CAudioInput::Stop() {
    Session(kStopClosed)->Stop();
}
std::uint64_t CAudioInput::GetPosition() {
    return Session(kPositionClosed)->GetPosition();
}
const TDataFormat_AudioPcm& CAudioInput::GetDeviceFormat() {
    return Session(kFormatClosed)->GetDeviceFormat();
}
double CAudioInput::GetLatency() {
    return Session(kLatencyClosed)->GetLatency();
}

std::uint64_t CAudioInput::GetXruns() {
    const auto session = slot_.Get();
    return session ? session->GetXruns() : xruns_.load();
}

TAudioState CAudioInput::GetState() {
    const auto session = slot_.Get();
    return session ? session->GetState() : AUDIO_STATE_CLOSED;
}

IAudioInput* CreateAudioInput(IAudioPort* port, bool reopens) {
    if (!port) Raise<CNullPtrException>(kNoPort);
    auto input = CRefPtr<CAudioInput>::Adopt(static_cast<CAudioInput*>(NewObject<CAudioInput>()));
    input->SetPort(port, reopens);
    return input.Detach();
}

} // namespace vorlund
