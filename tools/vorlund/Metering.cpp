#include "Metering.h"

#include "Diagnostics.h"

#include <vorlund/Exception.h>

using namespace vorlund;

CRefPtr<IAudioMeter> StartMeter(const TDataFormat_AudioPcm& format, std::uint32_t channelMask) {
    CRefPtr<IAudioMeter> meter;
    try {
        meter = CreateAs<IAudioMeter>(classid::CAudioMeter);
    } catch (const CClassNotFoundException&) {
        throw TProgramError{
            VRL_L("Levels need the plug-in 'measure', which is not loaded; 'vorlund plugins' tells why")};
    }
    TAudioMeterSettings settings{
        .samplesPerSec = format.samplesPerSec, .channels = format.channels, .channelMask = channelMask};
    if (format.sampleFormat == SAMPLE_FORMAT_8BIT) settings.fullScale = 127.0F / 128;
    meter->Start(settings);
    return meter;
}
