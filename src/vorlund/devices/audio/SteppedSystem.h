// The audio system over devices whose time is advanced by hand.
#pragma once

#include "vorlund/devices/audio/SteppedWorld.h"

#include <vorlund/AudioSystem.h>
#include <vorlund/ObjectImpl.h>

#include <memory>

namespace vorlund {

class CSteppedSystem : public CObjectImpl<IAudioSystem> {
public:
    static constexpr CId ClassId{0x17D4E0B9, 0x8A524F6C, 0xB3906E2D, 0xF85C1A74};

    void SetWorld(const std::shared_ptr<CSteppedWorld>& world);

    const wchar* GetName() override { return VRL_L("stepped"); }
    IObjectList* EnumerateDevices(TAudioDirection direction) override;
    CEvent& GetChangeEvent() override { return change_; }
    IAudioOutput* CreateOutput(const wchar* id) override;
    IAudioInput* CreateInput(const wchar* id) override;

protected:
    ~CSteppedSystem();

private:
    std::shared_ptr<CSteppedWorld> world_;
    CEvent change_;
};

} // namespace vorlund
