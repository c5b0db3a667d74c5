// The port to a device whose time is advanced by hand.
#pragma once

#include "vorlund/devices/audio/SteppedWorld.h"

#include <vorlund/AudioPort.h>
#include <vorlund/ObjectImpl.h>

#include <memory>

namespace vorlund {

class CSteppedPort : public CObjectImpl<IAudioPort> {
public:
    static constexpr CId ClassId{0xA3618E5D, 0x0BF74C2E, 0x9D40E79B, 0x52C8A6F1};

    void SetDevice(const std::shared_ptr<CSteppedWorld>& world, const wchar* name, TAudioDirection direction);

    TAudioPortFormat Open(const TAudioPortFormat& wish, IAudioPortClient& client) override;
    void Close() override;
    void Start() override;
    void Stop() override;
    /// A device takes what it plays at once.
    std::uint32_t GetDelay() override { return 0; }

protected:
    ~CSteppedPort() { CSteppedPort::Close(); }

private:
    std::shared_ptr<CSteppedWorld> world_;
    wstring name_;
    TAudioDirection direction_ = AUDIO_DIRECTION_OUTPUT;
    CSteppedWorld::TClient client_;
};

} // namespace vorlund
