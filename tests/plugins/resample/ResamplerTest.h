/// \file
/// The library with the plug-in resample, and a resampler.
#pragma once

#include "data/file/TemporaryFolder.h"
#include "support/ChildProcess.h"
#include "support/LibraryScope.h"
#include "support/Streams.h"
#include "support/Text.h"

#include <vorlund/DataFormat.h>
#include <vorlund/PluginStore.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Resampler.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace vorlund::test {

using TFloats = std::vector<float>;

class CResamplerTest : public testing::Test {
protected:
    CResamplerTest() {
        store_.AddPluginPath(ToVorlund(BesideProgram("vorlund-plugins")).c_str());
        store_.LoadPlugin(VRL_L("resample"));
        resampler_ = CreateAs<IResampler>(kResamplerClassId);
    }
    ~CResamplerTest() noexcept override {
        resampler_.Reset();
        store_.Close();
    }

    TFloats Resample(const TFloats& source, const TResampling& resampling) {
        const std::size_t frames = source.size() / resampling.channels;
        const std::uint64_t made = GetResampledFrames(frames, resampling.inputRate, resampling.outputRate);
        TFloats result(static_cast<std::size_t>(made) * resampling.channels + 1, 77.0f);
        resampler_->Resample(result.data(), source.data(), frames, resampling);
        EXPECT_EQ(result.back(), 77.0f);
        result.pop_back();
        return result;
    }

    CLibraryScope library_;
    CPluginStore store_;
    CRefPtr<IResampler> resampler_;
};

inline TFloats MakeNoise(std::size_t count, unsigned int seed = 1) {
    std::mt19937 random(seed);
    TFloats floats(count);
    for (auto& value : floats) value = static_cast<float>(static_cast<std::int32_t>(random())) * 0x1p-32f;
    return floats;
}

} // namespace vorlund::test
