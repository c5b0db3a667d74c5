// What the operations of an output raise that are in several files.
#pragma once

#include "vorlund/devices/audio/AudioFormats.h"

namespace vorlund {

inline constexpr const wchar* kOutputFile = VRL_L("src/vorlund/devices/audio/AudioOutput");
inline constexpr const wchar* kOpenOutput = VRL_L("vorlund::CAudioOutput::OpenOutput");

inline constexpr TAudioFailures kOutputOpening{
    {kOpenOutput, kOutputFile, 1, VRL_L("Unsupported audio format")},
    {kOpenOutput, kOutputFile, 2, VRL_L("Latency must be 1 millisecond to 10 seconds")},
    {kOpenOutput, kOutputFile, 3, VRL_L("Device has an impossible format")},
    {kOpenOutput, kOutputFile, 4, VRL_L("No resampler: the device plays at another rate")},
    {kOpenOutput, kOutputFile, 5, VRL_L("Cannot start a thread")}};

} // namespace vorlund
