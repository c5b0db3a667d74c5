#include "vorlund/devices/audio/SteppedPort.h"

#include <vorlund/Exception.h>

namespace vorlund {
namespace {

constexpr const wchar* kFile = VRL_L("src/vorlund/devices/audio/SteppedPort");
constexpr const wchar* kOpen = VRL_L("vorlund::CSteppedPort::Open");
constexpr TFailure kGone{kOpen, kFile, 1, VRL_L("There is no such device")};
constexpr TFailure kInUse{kOpen, kFile, 2, VRL_L("Device is in use")};

} // namespace

void CSteppedPort::SetDevice(const std::shared_ptr<CSteppedWorld>& world, const wchar* name,
                             TAudioDirection direction) {
    world_ = world;
    if (name) name_ = name;
    direction_ = direction;
}

TAudioPortFormat CSteppedPort::Open(const TAudioPortFormat& wish, IAudioPortClient& client) {
    Close();
    bool isBusy = false;
    client_ = world_->Open(name_, direction_, wish, static_cast<CAudioClient&>(client), isBusy);
    if (!client_) Raise<CFailedException>(isBusy ? kInUse : kGone);
    return client_->port;
}

void CSteppedPort::Close() {
    if (client_) world_->Close(client_);
    client_.reset();
}

void CSteppedPort::Start() {
    if (client_) CSteppedWorld::Start(*client_);
}

void CSteppedPort::Stop() {
    if (client_) CSteppedWorld::Stop(*client_);
}

} // namespace vorlund
