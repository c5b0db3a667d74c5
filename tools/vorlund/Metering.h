// The meter of the plug-in measure, as a place for sound.
#pragma once

#include "SoundReader.h"

#include <vorlund/AudioMeter.h>
#include <vorlund/DataFormat.h>
#include <vorlund/RefPtr.h>

/// A meter that has begun. Raises `TProgramError` without the plug-in.
vorlund::CRefPtr<vorlund::IAudioMeter> StartMeter(const vorlund::TDataFormat_AudioPcm& format,
                                                  std::uint32_t channelMask);

class CMeterSink final : public CSoundSink {
public:
    explicit CMeterSink(vorlund::IAudioMeter& meter) : meter_(meter) {}
    void Write(const float* samples, std::size_t frames) override { meter_.Write(samples, frames); }

private:
    vorlund::IAudioMeter& meter_;
};
