/// \file
/// Writing WAV files: PCM and float, as long as they get, that open at every moment while they grow.
#pragma once

#include <vorlund/StreamSelector.h>
#include <vorlund/WavMetadata.h>

#include <cstdint>
#include <memory>
#include <optional>

namespace vorlund {

struct TDataFormat_AudioPcm;

/// How a sample lies in a WAV file, low byte first. Since version 0.1.
enum TWavSampleFormat : std::uint32_t {
    WAV_SAMPLE_8BIT,  ///< unsigned, silence is 128
    WAV_SAMPLE_16BIT, ///< signed
    WAV_SAMPLE_24BIT, ///< signed, three bytes
    WAV_SAMPLE_32BIT, ///< signed
    WAV_SAMPLE_FLOAT  ///< single precision, full scale is 1.0
};

/// How a WAV file describes its samples. Since version 0.1.
enum TWavDescription : std::uint32_t {
    /// As the format asks: WAVE_FORMAT_EXTENSIBLE for more than two channels, for integers of more than 16
    /// bits,
    /// and with a mask of channels; else WAVE_FORMAT_PCM or WAVE_FORMAT_IEEE_FLOAT.
    WAV_DESCRIPTION_STANDARD,
    /// Always WAVE_FORMAT_PCM or WAVE_FORMAT_IEEE_FLOAT, for old readers. No channels and a rate of 0 are
    /// then
    /// written as well, as `IWavDecoder` passes them on: it reads WAVE_FORMAT_PCM of 8 and 16 bits. The other
    /// files are for the plug-in sndfile.
    WAV_DESCRIPTION_PLAIN
};

/// Interleaved samples of a WAV file. Since version 0.1.
struct TWavWriterFormat {
    TWavSampleFormat sampleFormat = WAV_SAMPLE_16BIT;
    /// 1 or more, so that a frame has at most 65,535 bytes.
    std::uint32_t channels = 2;
    /// 1 or more frames per second.
    std::uint32_t samplesPerSec = 44100;
    TWavDescription description = WAV_DESCRIPTION_STANDARD;
    /// Which speakers the channels are for, a bit each (SPEAKER_FRONT_LEFT is 1). When it is not given, the
    /// usual ones for one to eight channels: front; left, right; and center; back left,
    /// right; 5.0; 5.1; 6.1; 7.1.
    std::optional<std::uint32_t> channelMask = {};

    TWavWriterFormat() = default;
    TWavWriterFormat(TWavSampleFormat sample, std::uint32_t channelCount, std::uint32_t rate)
        : sampleFormat(sample), channels(channelCount), samplesPerSec(rate) {}
    /// The same samples. Raises `CInvalidParameterException` "The sample format is unknown".
    VRL_API explicit TWavWriterFormat(const TDataFormat_AudioPcm& format);

    /// Bytes of a frame of all channels; 0 for an unknown sample format.
    VRL_API std::uint32_t GetBlockSize() const;
};

/// What a writer may be told. Since version 0.1.
struct TWavWriterOptions {
    /// The bytes of sound that will be written, when that is known. Streams that cannot seek need it.
    std::optional<std::uint64_t> length = {};
    /// Whether the file may pass 4 GiB: 36 bytes are kept free at its beginning, in which RF64 puts its sizes
    /// (ITU-R BS.2088, EBU Tech 3306). Without it, and unless `length` asks for it, a file that would get
    /// longer raises.
    bool canGrow = true;
    /// Written before the sound.
    TWavMetadata metadata = {};
    /// The room for metadata before the sound, in bytes, at most `kMaxWavMetadataChunk`: what `metadata` does
    /// not need of it is kept free for later.
    std::uint32_t metadataRoom = 0;
};

/// Writes a WAV file into a stream, from where that is. The sizes in its header are brought up to date every
/// second in which something is written, and by `Flush`: when the process is killed, the file opens with all
/// but the last second. A file that passes 4 GiB becomes an RF64 in place.
///
/// Streams that cannot seek, and those that write to their end wherever the position is (files opened to
/// append), get their final header at once when `length` is known. One thread at a time. Since version 0.1.
///
/// \code{.cpp}
/// const COutputStreamSelector file(VRL_L("square.wav"));
/// CWavWriter writer(file, {WAV_SAMPLE_16BIT, 1, 8000});
/// std::vector<std::int16_t> samples(8000);
/// for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = i / 10 % 2 ? 8000 : -8000;
/// writer.Write(samples.data(), samples.size() * sizeof(std::int16_t));
/// writer.Close(); // raises when not all of it has reached the file
/// const CInputStreamSelector written(VRL_L("square.wav"));
/// std::printf("%d bytes\n", static_cast<int>(written.GetInputStreamTmp()->GetLength()));
/// // prints 16080 bytes
/// \endcode
class VRL_API CWavWriter {
public:
    /// Writes the header. Holds a reference to the stream until it ends.
    ///
    /// \param output  a stream, a resource, or the name of a file, which is emptied
    /// \param format   sample format, channels and rate
    /// \param options  metadata, room that is kept, and what is known of the length
    ///
    /// Raises `CNullPtrException` "There is no stream to write to", `CInvalidParameterException` "The sample
    /// format is unknown", "The number of channels is impossible", "The rate is 0", "The file would be too
    /// long", "An id has not four characters" and "The metadata are too long",
    /// `COperationNotSupportedException` "The stream cannot go back to its header, and the length is not
    /// known" before anything is written, and what the stream raises.
    CWavWriter(const COutputStreamSelector& output, const TWavWriterFormat& format,
               const TWavWriterOptions& options = {});
    CWavWriter(const CWavWriter&) = delete;
    CWavWriter& operator=(const CWavWriter&) = delete;
    /// Finishes the file as `Finish`, unless that or `Close` was called; drops what that raises. Call
    /// `Close`.
    ~CWavWriter();

    /// Appends `size` bytes of samples. A frame may be divided between calls. Raises `CInvalidStateException`
    /// "The file is finished", `CNullPtrException` "buffer is NULL" unless `size` is 0, `CIOException` "The
    /// file would be longer than it can be" and "More is written than was announced" with nothing written of
    /// `buffer`, and what the stream raises; what was written before is then still finished by `Close`, as
    /// far as the stream allows.
    void Write(const void* buffer, std::uint64_t size);

    /// Brings the sizes up to date and hands everything to the system. Where the stream cannot go back, the
    /// sizes are those that were announced. Raises as `Write`.
    void Flush();

    /// Replaces the metadata. They are written at the end: into their room before the sound where they fit,
    /// else behind the sound. Raises `CInvalidStateException` "The file is finished",
    /// `CInvalidParameterException` as the constructor and, where the stream cannot go back,
    /// `COperationNotSupportedException` "The stream cannot go back to its header".
    void SetMetadata(const TWavMetadata& metadata);

    /// Bytes of sound that were written.
    std::uint64_t GetSize() const;

    /// Completes the file and leaves the stream open, behind it. Happens once. Raises `CIOException` "Less is
    /// written than was announced" where the header cannot be changed any more, and as `Write`.
    void Finish();

    /// Finishes the file and closes the stream: when nothing is raised, all of it has reached the system. The
    /// stream is closed in any case. Raises as `Finish` and `CloseOutput` (StreamErrors.h). Nothing happens
    /// the second time.
    void Close();

private:
    struct TState;
    std::unique_ptr<TState> state_;
};

} // namespace vorlund
