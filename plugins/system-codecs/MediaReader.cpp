#include "MediaReader.h"

#include "FileCopy_win32.h"

using namespace vorlund;

namespace {

using TKind = TMediaFailure::TKind;

constexpr DWORD kSound = static_cast<DWORD>(MF_SOURCE_READER_FIRST_AUDIO_STREAM);
constexpr UINT32 kMaxChannels = 64;

void Check(HRESULT result, TKind kind = TKind::NoDecoder) {
    if (FAILED(result)) throw TMediaFailure{kind, result};
}

UINT32 GetNumber(IMFMediaType& type, const GUID& key) {
    UINT32 number = 0;
    return SUCCEEDED(type.GetUINT32(key, &number)) ? number : 0;
}

} // namespace

CMediaReader::CMediaReader(std::shared_ptr<const CFileCopy> file) : file_(std::move(file)) {
    if (!media_.IsThere()) throw TMediaFailure{TKind::NoSystem, E_NOTIMPL};
    CComPtr<::IStream> stream;
    Check(file_->GetState().stream->Clone(stream.Fill()));
    Check(stream->Seek({}, STREAM_SEEK_SET, nullptr));
    Check(media_.createByteStream(stream.Get(), bytes_.Fill()));
    Check(media_.createReader(bytes_.Get(), nullptr, reader_.Fill()));
    Check(reader_->SetStreamSelection(static_cast<DWORD>(MF_SOURCE_READER_ALL_STREAMS), FALSE));
    Check(reader_->SetStreamSelection(kSound, TRUE));
    // Of 16 bits what has no more, else floats.
    CComPtr<IMFMediaType> native;
    Check(reader_->GetNativeMediaType(kSound, 0, native.Fill()));
    GUID codec{};
    Check(native->GetGUID(MF_MT_SUBTYPE, &codec));
    const bool isAac = codec == MFAudioFormat_AAC;
    const UINT32 bits = GetNumber(*native.Get(), MF_MT_AUDIO_BITS_PER_SAMPLE);
    if (isAac || bits == 0)
        Choose(MFAudioFormat_Float, 32, SAMPLE_FORMAT_FLOAT);
    else if (bits <= 16)
        Choose(MFAudioFormat_PCM, 16, SAMPLE_FORMAT_16BIT);
    else
        Choose(MFAudioFormat_PCM, 32, SAMPLE_FORMAT_32BIT);
}

void CMediaReader::Choose(const GUID& kind, UINT32 bits, std::uint32_t sampleFormat) {
    CComPtr<IMFMediaType> wanted;
    Check(media_.createMediaType(wanted.Fill()));
    Check(wanted->SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Audio));
    Check(wanted->SetGUID(MF_MT_SUBTYPE, kind));
    Check(wanted->SetUINT32(MF_MT_AUDIO_BITS_PER_SAMPLE, bits));
    Check(reader_->SetCurrentMediaType(kSound, nullptr, wanted.Get()));
    CComPtr<IMFMediaType> chosen;
    Check(reader_->GetCurrentMediaType(kSound, chosen.Fill()));
    const UINT32 channels = GetNumber(*chosen.Get(), MF_MT_AUDIO_NUM_CHANNELS);
    const UINT32 rate = GetNumber(*chosen.Get(), MF_MT_AUDIO_SAMPLES_PER_SECOND);
    if (channels == 0 || channels > kMaxChannels || rate == 0 ||
        GetNumber(*chosen.Get(), MF_MT_AUDIO_BITS_PER_SAMPLE) != bits)
        Check(E_UNEXPECTED);
    format_ = TDataFormat_AudioPcm(sampleFormat, channels, rate);
}

bool CMediaReader::Fetch(std::vector<std::uint8_t>& piece) {
    piece.clear();
    DWORD flags = 0;
    CComPtr<IMFSample> sample;
    CComPtr<IMFMediaBuffer> buffer;
    BYTE* bytes = nullptr;
    DWORD count = 0;
    Check(reader_->ReadSample(kSound, 0, nullptr, &flags, nullptr, sample.Fill()), TKind::Failed);
    constexpr DWORD kChanges =
        DWORD{MF_SOURCE_READERF_ERROR} | DWORD{MF_SOURCE_READERF_CURRENTMEDIATYPECHANGED};
    if ((flags & kChanges) != 0) Check(E_UNEXPECTED, TKind::Failed);
    if (sample.Get()) {
        Check(sample->ConvertToContiguousBuffer(buffer.Fill()), TKind::Failed);
        Check(buffer->Lock(&bytes, nullptr, &count), TKind::Failed);
        piece.assign(bytes, bytes + count);
        buffer->Unlock();
    }
    return (flags & MF_SOURCE_READERF_ENDOFSTREAM) == 0;
}
