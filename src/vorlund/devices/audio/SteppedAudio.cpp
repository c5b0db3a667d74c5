#include "vorlund/api/values/ClassMemory.h"
#include "vorlund/devices/audio/SteppedSystem.h"

#include <vorlund/AudioDevices.h>
#include <vorlund/Exception.h>
#include <vorlund/RefPtr.h>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/devices/audio/SteppedAudio");
constexpr const wchar* kNoSuchDevice = VRL_L("No such device");
constexpr const wchar* kSetDriftAt = VRL_L("vorlund::CSteppedAudio::SetDriftAt");
constexpr TFailure kStall{VRL_L("vorlund::CSteppedAudio::StallAt"), kFile, 1, kNoSuchDevice};
constexpr TFailure kLose{VRL_L("vorlund::CSteppedAudio::LoseAt"), kFile, 2, kNoSuchDevice};
constexpr TFailure kReturn{VRL_L("vorlund::CSteppedAudio::ReturnAt"), kFile, 3, kNoSuchDevice};
constexpr TFailure kDefault{VRL_L("vorlund::CSteppedAudio::SetDefaultAt"), kFile, 4, kNoSuchDevice};
constexpr TFailure kDrift{kSetDriftAt, kFile, 5, kNoSuchDevice};
constexpr TFailure kFormat{VRL_L("vorlund::CSteppedAudio::SetDeviceFormat"), kFile, 6, kNoSuchDevice};
constexpr TFailure kPlayed{VRL_L("vorlund::CSteppedAudio::GetPlayed"), kFile, 7, kNoSuchDevice};
constexpr TFailure kPlayedSize{VRL_L("vorlund::CSteppedAudio::GetPlayedSize"), kFile, 8, kNoSuchDevice};
constexpr TFailure kForget{VRL_L("vorlund::CSteppedAudio::ForgetPlayed"), kFile, 9, kNoSuchDevice};
constexpr TFailure kInput{VRL_L("vorlund::CSteppedAudio::SetInput"), kFile, 10, kNoSuchDevice};
constexpr TFailure kBadDrift{kSetDriftAt, kFile, 11, VRL_L("Drift must be -100000 to 100000 millionths")};
constexpr TFailure kNoBuffer{VRL_L("vorlund::CSteppedAudio::GetPlayed"), kFile, 12, VRL_L("buffer is NULL")};
constexpr TFailure kNoFrames{VRL_L("vorlund::CSteppedAudio::SetInput"), kFile, 13, VRL_L("buffer is NULL")};

constexpr std::int32_t kMostDrift = 100000;

std::size_t RequireDevice(const wchar* device, const TFailure& failure) {
    const std::size_t found = CSteppedWorld::FindDevice(device);
    if (found == CSteppedWorld::kNone) Raise<CInvalidParameterException>(failure);
    return found;
}

} // namespace

struct CSteppedAudio::TData : TClassMemory {
    using TKind = CSteppedWorld::TFaultKind;

    const std::shared_ptr<CSteppedWorld> world = std::make_shared<CSteppedWorld>();
};

CSteppedAudio::CSteppedAudio() : data_(new TData) {}

CSteppedAudio::~CSteppedAudio() {
    data_->world->End();
    delete data_;
}

IAudioSystem* CSteppedAudio::GetSystem() {
    auto system = CRefPtr<CSteppedSystem>::Adopt(static_cast<CSteppedSystem*>(NewObject<CSteppedSystem>()));
    system->SetWorld(data_->world);
    return system.Detach();
}

void CSteppedAudio::Step(std::uint64_t frames) {
    data_->world->Step(frames);
}

std::uint64_t CSteppedAudio::GetTime() const {
    return data_->world->GetTime();
}

void CSteppedAudio::StallAt(std::uint64_t at, const wchar* device, std::uint64_t frames) {
    data_->world->AddFault(at, TData::TKind::Stall, RequireDevice(device, kStall),
                           static_cast<std::int64_t>(frames));
}

void CSteppedAudio::LoseAt(std::uint64_t at, const wchar* device) {
    data_->world->AddFault(at, TData::TKind::Lose, RequireDevice(device, kLose));
}

void CSteppedAudio::ReturnAt(std::uint64_t at, const wchar* device) {
    data_->world->AddFault(at, TData::TKind::Return, RequireDevice(device, kReturn));
}

void CSteppedAudio::SetDefaultAt(std::uint64_t at, const wchar* device) {
    data_->world->AddFault(at, TData::TKind::Default, RequireDevice(device, kDefault));
}

void CSteppedAudio::SetDriftAt(std::uint64_t at, const wchar* device, std::int32_t millionths) {
    const std::size_t found = RequireDevice(device, kDrift);
    if (millionths < -kMostDrift || millionths > kMostDrift) Raise<CInvalidParameterException>(kBadDrift);
    data_->world->AddFault(at, TData::TKind::Drift, found, millionths);
}

void CSteppedAudio::SetDeviceFormat(const wchar* device, const TDataFormat_AudioPcm& format) {
    data_->world->SetFormat(RequireDevice(device, kFormat), format);
}

std::uint64_t CSteppedAudio::GetPlayed(const wchar* device, std::uint64_t position, void* buffer,
                                       std::uint64_t size) const {
    if (!buffer && size > 0) Raise<CNullPtrException>(kNoBuffer);
    return data_->world->GetPlayed(RequireDevice(device, kPlayed), position, buffer, size);
}

std::uint64_t CSteppedAudio::GetPlayedSize(const wchar* device) const {
    return data_->world->GetPlayedSize(RequireDevice(device, kPlayedSize));
}

void CSteppedAudio::ForgetPlayed(const wchar* device, bool keeps) {
    data_->world->ForgetPlayed(RequireDevice(device, kForget), keeps);
}

void CSteppedAudio::SetInput(const wchar* device, const void* frames, std::uint64_t size) {
    if (!frames && size > 0) Raise<CNullPtrException>(kNoFrames);
    data_->world->SetInput(RequireDevice(device, kInput), frames, static_cast<std::size_t>(size));
}

} // namespace vorlund
