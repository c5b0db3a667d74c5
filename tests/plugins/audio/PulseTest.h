/// \file
/// The plug-in with a sound server of its own.
#pragma once

#include "plugins/audio/AudioPluginTest.h"
#include "plugins/audio/PulseServer.h"

namespace vorlund::test {

inline constexpr TDataFormat_AudioPcm kServerFormat{SAMPLE_FORMAT_FLOAT, 2, 48000};

class CPulseTest : public CAudioPluginTest {
protected:
    ~CPulseTest() noexcept override {
        system_.Reset();
        if (HasFailure()) ADD_FAILURE() << server_.GetLog();
    }

    /// Waits until the output is in that state. Devices have changed then.
    void WaitForState(IAudioOutput& output, TAudioState state) {
        while (output.GetState() != state) {
            WaitForChange();
            System().GetChangeEvent().SetState(false);
        }
    }

    CPulseServer server_;
};

} // namespace vorlund::test
