/// \file
/// Encoders of sound files, which plug-ins register.
#pragma once

#include <vorlund/StreamFilter.h>

namespace vorlund {

/// \name The kinds of sound files
/// The output formats of encoder records whose input is `TDataFormat_AudioPcm::FormatId`. An encoder is made
/// by `CCodecClassStore::CreateEncoder` with both, and a query for `IAudioEncoder` finds its interface. The
/// library itself has no encoder. Since version 0.1.
/// @{
inline constexpr CId SOUND_FILE_AIFF{0x5D1A2C70, 0x83E94F16, 0xA7C0B25E, 0x19F6D341};
inline constexpr CId SOUND_FILE_FLAC{0x5D1A2C71, 0x83E94F16, 0xA7C0B25E, 0x19F6D341};
inline constexpr CId SOUND_FILE_MP3{0x5D1A2C72, 0x83E94F16, 0xA7C0B25E, 0x19F6D341};
inline constexpr CId SOUND_FILE_OGG_OPUS{0x5D1A2C73, 0x83E94F16, 0xA7C0B25E, 0x19F6D341};
inline constexpr CId SOUND_FILE_OGG_VORBIS{0x5D1A2C74, 0x83E94F16, 0xA7C0B25E, 0x19F6D341};
/// @}

/// Writes PCM as a sound file to the connected stream, from the position on at which that stands. In this
/// order: options and tags; `Connect`; `SetFormat` with the PCM that is going to be written; `Write`, with
/// any sizes; `Finish`. A file without `Finish` is unfinished and may not open. One thread at a time.
///
/// `GetLength` and `Tell` are of the PCM that was written, in bytes. `Seek` raises
/// `COperationNotSupportedException`. `Close` finishes, when there is something to finish, and closes the
/// stream. `Disconnect` abandons what is not finished. Since version 0.1.
///
/// \code{.cpp}
/// // Needs a plug-in that encodes FLAC, for example sndfile.
/// const TDataFormat_AudioPcm pcm(SAMPLE_FORMAT_16BIT, 1, 8000);
/// const auto made = CRefPtr<IObject>::Adopt(
///     v.GetCodecClassStore().CreateEncoder(TDataFormat_AudioPcm::FormatId, SOUND_FILE_FLAC));
/// const auto encoder = made.Query<IAudioEncoder>();
/// const COutputStreamSelector file(VRL_L("silence.flac"));
/// encoder->SetTag(VRL_L("title"), VRL_L("Nothing"));
/// encoder->Connect(file.GetOutputStreamTmp());
/// encoder->SetFormat(&pcm);
/// encoder->Write(std::vector<std::int16_t>(8000).data(), 16000);
/// encoder->Finish();
/// \endcode
class IAudioEncoder : public IOutputStreamFilter {
public:
    using TBase = IOutputStreamFilter;
    static constexpr CId InterfaceId{0x2B94E7D1, 0x6A0F4C38, 0xB1D5820C, 0xE74F9A63};

    /// Sets an option for the files that are begun from now on; an empty `value` takes it back. The
    /// documentation of a plug-in lists its options. Numbers have a point, whatever the language. Raises
    /// `CNullPtrException` for null, `CInvalidParameterException` when this kind of file has no such option,
    /// and when the value is none of those that are possible.
    virtual void SetOption(const wchar* name, const wchar* value) = 0;

    /// Sets a text about the sound, by a name such as "title", for the files that are begun from now on; an
    /// empty `text` takes it back. Raises `CNullPtrException` for null, and `CInvalidParameterException` when
    /// this kind of file has no such tag.
    virtual void SetTag(const wchar* name, const wchar* text) = 0;

    /// Writes everything that is left, as files are whole only then, and flushes the stream. What `Write` was
    /// given of a frame that is not whole is left out. Nothing happens when no file is begun. Raises what the
    /// stream raises, `CIOException` when the encoder fails, and `CDataFormatException` when nothing was
    /// written and this kind of file cannot be without sound; the file is then lost.
    virtual void Finish() = 0;

protected:
    ~IAudioEncoder() = default;
};

} // namespace vorlund
