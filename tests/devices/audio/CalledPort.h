/// \file
/// A port whose client the test calls.
#pragma once

#include "support/Streams.h"

#include <vorlund/AudioPort.h>
#include <vorlund/ObjectImpl.h>

#include <functional>

namespace vorlund::test {

/// Settings are plain members: what it grants is the wish, with `change` done to it.
class CCalledPort : public CObjectImpl<IAudioPort> {
public:
    static constexpr CId ClassId{0x7E57571A, 0x91C3D0B5, 0x6F2A84E7, 0x51B3A8D2};

    IAudioPortClient* client = nullptr;
    std::function<void(TAudioPortFormat&)> change;
    std::function<void()> start;
    std::function<void()> close;
    std::atomic<std::uint32_t> delay{0};
    std::atomic<int> openings{0};
    int closings = 0;

    TAudioPortFormat Open(const TAudioPortFormat& wish, IAudioPortClient& given) override {
        ++openings;
        client = &given;
        TAudioPortFormat format = wish;
        format.periodFrames = 128;
        format.periods = 4;
        if (change) change(format);
        return format;
    }
    void Close() override {
        if (client) ++closings;
        client = nullptr;
        if (close) close();
    }
    void Start() override {
        if (start) start();
    }
    void Stop() override {}
    std::uint32_t GetDelay() override { return delay; }

private:
    CLiveObject live_;
};

} // namespace vorlund::test
