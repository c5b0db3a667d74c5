// What the operations of an output raise that are in several files.
#pragma once

#include "vorlund/devices/audio/AudioFormats.h"

namespace vorlund::outputfailures {

inline constexpr const wchar* kFile = VRL_L("src/vorlund/devices/audio/AudioOutput");
inline constexpr const wchar* kOpen = VRL_L("vorlund::CAudioOutput::OpenOutput");
inline constexpr const wchar* kNoResampler = VRL_L("No resampler: the device plays at another rate");

inline constexpr TAudioFailures kOpening{
    {kOpen, kFile, 1, VRL_L("Unsupported audio format")},
    {kOpen, kFile, 2, VRL_L("Latency must be 1 millisecond to 10 seconds")},
    {kOpen, kFile, 3, VRL_L("Device has an impossible format")},
    {kOpen, kFile, 4, kNoResampler},
    {kOpen, kFile, 5, VRL_L("Cannot start a thread")}};

} // namespace vorlund::outputfailures
