#include "Settings.h"

#include <bit>

using namespace vorlund;

namespace {

template <class T> bool IsIn(T value, T first, T last) {
    // False for what is no number.
    return value >= first && value <= last;
}

bool IsFall(std::uint32_t fall) {
    return fall == 0 || IsIn(fall, 5U, 10000U);
}

} // namespace

bool AreInRange(const TAudioPictureSettings& settings) {
    return settings.kind <= AUDIO_PICTURE_BOTH && IsIn(settings.width, 16U, 8192U) &&
           IsIn(settings.height, 16U, 8192U) && IsIn(settings.frameRate, 1.0F, 1000.0F) &&
           IsIn(settings.span, 1U, 1000U) && IsIn(settings.gain, 1U, 10000U) &&
           IsIn(settings.transformSize, 256U, 32768U) && std::has_single_bit(settings.transformSize) &&
           IsIn(settings.lowestFrequency, 1U, 1000000U) && IsIn(settings.highestFrequency, 1U, 1000000U) &&
           settings.lowestFrequency < settings.highestFrequency && IsIn(settings.lowestLevel, -200, 100) &&
           IsIn(settings.highestLevel, -200, 100) && settings.lowestLevel < settings.highestLevel &&
           IsIn(settings.barPitch, 1U, 256U) && IsFall(settings.barFall) && settings.peakHold <= 10000 &&
           IsFall(settings.peakFall);
}
