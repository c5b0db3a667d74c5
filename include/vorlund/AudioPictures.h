/// \file
/// Pictures of sound that move with it: an oscilloscope and a spectrum, as video. The plug-in "visual" has
/// the class.
#pragma once

#include <vorlund/DataFormat.h>
#include <vorlund/StreamFilter.h>

#include <cstddef>
#include <cstdint>

namespace vorlund {

/// Since version 0.1.
enum TAudioPictureKind : std::uint32_t {
    AUDIO_PICTURE_OSCILLOSCOPE = 0,
    AUDIO_PICTURE_SPECTRUM = 1,
    /// The oscilloscope in the upper half, the spectrum in the lower one.
    AUDIO_PICTURE_BOTH = 2,
};

/// What the pictures are like. Colours are 0xRRGGBB; the highest byte is ignored. Since version 0.1.
struct TAudioPictureSettings {
    /// A `TAudioPictureKind`.
    std::uint32_t kind = AUDIO_PICTURE_BOTH;
    /// In pixels, 16 to 8192.
    std::uint32_t width = 1280;
    std::uint32_t height = 720;
    /// Pictures of a second of sound, 1 to 1000. `Draw` does without.
    float frameRate = 60;

    /// How much time the oscilloscope shows from left to right, in milliseconds, 1 to 1000.
    std::uint32_t span = 25;
    /// Full scale of a sample of 1.0 is so much of a lane's height, in percent, 1 to 10000.
    std::uint32_t gain = 90;

    /// Frames of sound of each transform: a power of two, 256 to 32768.
    std::uint32_t transformSize = 4096;
    /// The frequencies at both edges, in Hz, 1 to 1,000,000, the lower one first; what is above half of the
    /// sample rate is empty.
    std::uint32_t lowestFrequency = 30;
    std::uint32_t highestFrequency = 20000;
    /// The levels at the bottom and at the top, in decibels of a sine of full scale, -200 to 100, the lower
    /// one first.
    std::int32_t lowestLevel = -84;
    std::int32_t highestLevel = 0;
    /// From a bar to the next, in pixels, 1 to 256; from 3 on there is a gap between them.
    std::uint32_t barPitch = 10;
    /// How fast bars fall, in decibels a second of sound, 5 to 10000; 0 for at once.
    std::uint32_t barFall = 60;
    /// The peaks above the bars: how long they stay, in milliseconds, 0 to 10000, and how fast they fall
    /// then, 5 to 10000 decibels a second; a `peakFall` of 0 is for no peaks.
    std::uint32_t peakHold = 600;
    std::uint32_t peakFall = 30;

    /// Not 0 for lines and numbers of frequencies, levels and time.
    std::uint32_t hasScales = 1;
    std::uint32_t groundColour = 0x0B0F14;
    std::uint32_t scaleColour = 0x26313C;
    std::uint32_t textColour = 0x6F8191;
    std::uint32_t waveColour = 0x5AD1B0;
    /// Of bars at the bottom and at the top; between them it changes steadily.
    std::uint32_t lowColour = 0x1F8FA8;
    std::uint32_t highColour = 0xF2B95C;
    std::uint32_t peakColour = 0xF4F1E6;
};

/// A filter that turns PCM audio into video, and the same for sound that is played at the moment.
///
/// Of more than eight channels the first eight are shown. The oscilloscope has a lane for each, the first at
/// the top. A rising edge through
/// zero of the loudest channel is in its middle, so that a tone stands still; without one the picture runs.
/// The spectrum has bars over frequencies of equal ratio; each shows the highest level of all channels.
/// Samples that are no numbers, or infinite, count as 0.
///
/// As a filter: `Connect` has the codec class store decode the given stream into PCM, as the converters do,
/// and goes to its beginning where it has positions. The format is a `TDataFormat_VideoRgb` of 32-bit pixels,
/// blue in the lowest byte, then green, red and alpha, which is 255; rows go from top to bottom. Picture n
/// shows the sound around the time n / frameRate, and there is one for each such time inside the sound.
/// `Read` delivers any number of bytes; the same bytes come out however they are asked for, and on every
/// system. `Seek`, `Tell` and `GetLength` count bytes; positions behind the end are the end. `Seek` costs
/// nothing, the next `Read` goes there: it looks back as far as bars and peaks fall. Of a source without
/// positions the pictures come in order.
///
/// `Connect` raises `CDataFormatException` "Unsupported format in decoded stream", also for sample rates
/// above 1,000,000; `Seek` raises `CIOException` "Position is negative".
///
/// One thread at a time, but for `Write`. Since version 0.1.
class IAudioPictures : public IInputStreamFilter {
public:
    using TBase = IInputStreamFilter;
    static constexpr CId InterfaceId{0xD8015334, 0x8A057E02, 0xB589F2EE, 0xC730C937};

    /// The pictures from the next `Connect` or `Start` on. Raises `CInvalidParameterException` "Settings out
    /// of range".
    virtual void SetSettings(const TAudioPictureSettings& settings) = 0;

    /// The settings as they were set, or the defaults.
    virtual TAudioPictureSettings GetSettings() = 0;

    /// Begins pictures of sound that comes through `Write`, beside the connection of the filter. Forgets what
    /// was written before. Not while another thread is in `Write`.
    ///
    /// \param channels  1 to 1024
    /// \param samplesPerSec  1 to 1,000,000
    ///
    /// Raises `CInvalidParameterException` "Channels or sample rate out of range", and `std::bad_alloc`.
    virtual void Start(std::uint32_t channels, std::uint32_t samplesPerSec) = 0;

    /// Takes sound that is heard now, frame by frame as it comes: interleaved samples, 1.0 at full scale. It
    /// copies them and no more, so it may be called by a thread that plays sound, while another one draws.
    ///
    /// \param samples  `frames` times the number of channels; null only with 0 frames
    /// \param frames   how many, for each channel
    ///
    /// Raises `CBugException` "Not started" and `CNullPtrException` "samples is NULL".
    virtual void Write(const float* samples, std::size_t frames) = 0;

    /// Draws a picture of the last sound that was written, or of silence before there is any, whole and at
    /// any moment. Bars and peaks fall with the sound: between two pictures by the frames that were written
    /// between them.
    ///
    /// \param picture  width x height pixels, laid out as the filter's
    ///
    /// Raises `CBugException` "Not started" and `CNullPtrException` "picture is NULL".
    virtual void Draw(std::uint32_t* picture) = 0;

protected:
    ~IAudioPictures() = default;
};

namespace classid {

/// The class of the plug-in "visual", for `CreateAs<IAudioPictures>`. Without the plug-in the class store
/// knows no such class. Since version 0.1.
inline constexpr CId CAudioPictures{0x9995C30B, 0x7FD93854, 0x2D0F35B0, 0xFD0B3D37};

} // namespace classid

} // namespace vorlund
