/// \file
/// A sound for the encoders, and what is made of it.
#pragma once

#include "plugins/SoundPluginTest.h"

#include <vorlund/AudioEncoder.h>
#include <vorlund/DataFormat.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <string>

namespace vorlund::test {

/// Tones in another phase for each channel, in a format of the library. Integers of 32 bits use the upper 24.
inline TBytes MakeTones(const TDataFormat_AudioPcm& format, std::size_t frames) {
    TBytes bytes;
    const auto put = [&](const auto& value) {
        const auto* const from = reinterpret_cast<const std::uint8_t*>(&value);
        bytes.insert(bytes.end(), from, from + sizeof(value));
    };
    for (std::size_t i = 0; i < frames; ++i) {
        for (std::uint32_t c = 0; c < format.channels; ++c) {
            const auto at = static_cast<double>(i);
            const double tone = 0.4 * std::sin(at * 0.03 + c) + 0.2 * std::sin(at * (0.11 + 0.02 * c));
            switch (format.sampleFormat) {
            case SAMPLE_FORMAT_8BIT:
                put(static_cast<std::uint8_t>(128 + std::lrint(tone * 127)));
                break;
            case SAMPLE_FORMAT_16BIT:
                put(static_cast<std::int16_t>(std::lrint(tone * 32767)));
                break;
            case SAMPLE_FORMAT_32BIT:
                put(static_cast<std::int32_t>(std::lrint(tone * 8388607) * 256));
                break;
            default:
                put(static_cast<float>(tone));
            }
        }
    }
    return bytes;
}

inline TDataFormat_AudioPcm Pcm(TSampleFormat form, std::uint32_t channels, std::uint32_t rate) {
    return TDataFormat_AudioPcm(form, channels, rate);
}

/// Encoders by what they write, and what becomes of a sound.
class CEncoderTest : public SoundPluginTest {
protected:
    static CRefPtr<IAudioEncoder> Create(const CId& kind) {
        const auto object = CRefPtr<IObject>::Adopt(
            v.GetCodecClassStore().CreateEncoder(TDataFormat_AudioPcm::FormatId, kind));
        return object.Query<IAudioEncoder>();
    }
    static void Encode(IAudioEncoder& encoder, IOutputStream& to, const TDataFormat_AudioPcm& format,
                       const TBytes& sound, std::size_t step = 10000) {
        encoder.Connect(&to);
        encoder.SetFormat(&format);
        for (std::size_t at = 0; at < sound.size(); at += step)
            encoder.Write(sound.data() + at, std::min(step, sound.size() - at));
        EXPECT_EQ(encoder.Tell(), static_cast<std::int64_t>(sound.size()));
        encoder.Finish();
    }
    static TBytes Encode(IAudioEncoder& encoder, const TDataFormat_AudioPcm& format, const TBytes& sound,
                         std::size_t step = 10000) {
        const auto to = Make<CMemoryOutputStream>();
        Encode(encoder, *to, format, sound, step);
        return to->bytes;
    }
    /// For check_encoded.py.
    static void Keep(const std::string& name, const TBytes& bytes) {
        const fs::path folder = BesideProgram("sndfile-encoded");
        fs::create_directories(folder);
        std::ofstream(folder / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
};

} // namespace vorlund::test
