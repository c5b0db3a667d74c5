/// \file
/// Outputs and inputs whose time passes when a test says so.
#pragma once

#include "devices/audio/AudioTest.h"

#include "support/Actor.h"
#include "support/ChildProcess.h"
#include "support/LibraryScope.h"

#include <vorlund/AudioDevices.h>
#include <vorlund/Event.h>
#include <vorlund/ObjectList.h>
#include <vorlund/PluginStore.h>

#include <gtest/gtest.h>

namespace vorlund::test {

class CSteppedTest : public testing::Test {
protected:
    CSteppedTest() = default;
    ~CSteppedTest() noexcept override = default;

    CRefPtr<IAudioOutput> CreateOutput(const wchar* id = nullptr) {
        return CRefPtr<IAudioOutput>::Adopt(system_->CreateOutput(id));
    }
    CRefPtr<IAudioInput> CreateInput(const wchar* id = nullptr) {
        return CRefPtr<IAudioInput>::Adopt(system_->CreateInput(id));
    }
    TBytes GetPlayed(const wchar* device = VRL_L("a")) const {
        TBytes bytes(static_cast<std::size_t>(audio_.GetPlayedSize(device)));
        EXPECT_EQ(audio_.GetPlayed(device, 0, bytes.data(), bytes.size()), bytes.size());
        return bytes;
    }
    /// Keeps a stream as long as the test, because the output counts it.
    template <class TStream> IInputStream* Keep(const CRefPtr<TStream>& stream) {
        streams_.Share(stream.Get());
        return stream.Get();
    }
    IInputStream* MakeKept(const TDataFormat_AudioPcm& format, const TBytes& bytes) {
        return Keep(MakeStream(format, bytes));
    }

    CLibraryScope library_;
    CReferenceList<IInputStream> streams_;
    CSteppedAudio audio_;
    CRefPtr<IAudioSystem> system_ = CRefPtr<IAudioSystem>::Adopt(audio_.GetSystem());
};

/// The same with the plug-in resample.
class CSteppedRateTest : public CSteppedTest {
protected:
    CSteppedRateTest() {
        store_.AddPluginPath(ToVorlund(BesideProgram("vorlund-plugins")).c_str());
        store_.LoadPlugin(VRL_L("resample"));
    }
    ~CSteppedRateTest() noexcept override {
        system_.Reset();
        store_.Close();
    }

    CPluginStore store_;
};

/// Frames of silence in bytes.
inline TBytes Silence(const TDataFormat_AudioPcm& format, std::size_t frames) {
    return TBytes(frames * format.GetBlockSize(), format.GetZeroByte());
}

} // namespace vorlund::test
