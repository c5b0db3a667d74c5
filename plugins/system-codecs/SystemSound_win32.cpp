// The decoders of Windows, by the source reader of Media Foundation.
#include "FileCopy_win32.h"
#include "MediaFoundation.h"
#include "SystemSound.h"

#include <vorlund/DecodeNotes.h>
#include <vorlund/Exception.h>

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

using namespace vorlund;

namespace {

constexpr const wchar* kFile = VRL_L("plugins/system-codecs/SystemSound_win32");
constexpr const wchar* kOpen = VRL_L("ISystemSound::Open");

constexpr TFailure kNoSystem{kOpen, kFile, 1,
                             VRL_L("It is decoded by Media Foundation, which this Windows lacks")};
constexpr TFailure kNoDecoder{kOpen, kFile, 2, VRL_L("Windows has no decoder for it")};
constexpr TFailure kFailed{VRL_L("ISystemSound::Read"), kFile, 3, VRL_L("Media Foundation failed")};

constexpr DWORD kSound = static_cast<DWORD>(MF_SOURCE_READER_FIRST_AUDIO_STREAM);
constexpr UINT32 kMaxChannels = 64;

/// A COM object with one reference of its own.
template <class TObject> class CComPtr {
public:
    CComPtr() = default;
    CComPtr(const CComPtr&) = delete;
    CComPtr& operator=(const CComPtr&) = delete;
    ~CComPtr() {
        if (object_) object_->Release();
    }

    TObject** Fill() { return &object_; }
    TObject* Get() const { return object_; }
    TObject* operator->() const { return object_; }
    void Reset() {
        if (TObject* const object = std::exchange(object_, nullptr)) object->Release();
    }

private:
    TObject* object_ = nullptr;
};

/// Raises unless a step has gone well. Its number tells which Windows objected to.
void Check(HRESULT result) {
    if (SUCCEEDED(result)) return;
    NoteValue(VRL_L("HRESULT"), static_cast<std::uint32_t>(result));
    Raise<CDataFormatException>(kNoDecoder);
}

/// Media Foundation wants a thread that has joined COM. One that has done so otherwise may stay as it is.
class CComThread {
public:
    CComThread()
        : hasJoined_(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))),
          thread_(GetCurrentThreadId()) {}
    CComThread(const CComThread&) = delete;
    CComThread& operator=(const CComThread&) = delete;
    ~CComThread() {
        if (hasJoined_ && thread_ == GetCurrentThreadId()) CoUninitialize();
    }

private:
    const bool hasJoined_;
    const DWORD thread_;
};

class CMediaFoundationSound : public ISystemSound {
public:
    explicit CMediaFoundationSound(std::shared_ptr<const CFileCopy> file) : file_(std::move(file)) {
        if (!media_.IsThere()) Raise<CDataFormatException>(kNoSystem);
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

    const TDataFormat_AudioPcm& GetFormat() const override { return format_; }
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        while (rest_.empty() && !isAtEnd_) Fetch();
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(size, rest_.size()));
        std::memcpy(buffer, rest_.data(), count);
        rest_.erase(rest_.begin(), rest_.begin() + static_cast<std::ptrdiff_t>(count));
        return count;
    }

private:
    static UINT32 GetNumber(IMFMediaType& type, const GUID& key) {
        UINT32 number = 0;
        return SUCCEEDED(type.GetUINT32(key, &number)) ? number : 0;
    }

    void Choose(const GUID& kind, UINT32 bits, std::uint32_t sampleFormat) {
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
            Raise<CDataFormatException>(kNoDecoder);
        format_ = TDataFormat_AudioPcm(sampleFormat, channels, rate);
    }

    /// The next piece, perhaps an empty one.
    void Fetch() {
        DWORD flags = 0;
        CComPtr<IMFSample> sample;
        CComPtr<IMFMediaBuffer> piece;
        BYTE* bytes = nullptr;
        DWORD count = 0;
        if (FAILED(reader_->ReadSample(kSound, 0, nullptr, &flags, nullptr, sample.Fill())))
            Raise<CIOException>(kFailed);
        constexpr DWORD kChanges =
            DWORD{MF_SOURCE_READERF_ERROR} | DWORD{MF_SOURCE_READERF_CURRENTMEDIATYPECHANGED};
        if ((flags & kChanges) != 0) Raise<CIOException>(kFailed);
        isAtEnd_ = (flags & MF_SOURCE_READERF_ENDOFSTREAM) != 0;
        if (!sample.Get()) return;
        if (FAILED(sample->ConvertToContiguousBuffer(piece.Fill())) ||
            FAILED(piece->Lock(&bytes, nullptr, &count)))
            Raise<CIOException>(kFailed);
        rest_.assign(bytes, bytes + count);
        piece->Unlock();
    }

    const CComThread thread_;
    std::shared_ptr<const CFileCopy> file_;
    CMediaFoundation media_;
    // They go before what made them.
    CComPtr<IMFByteStream> bytes_;
    CComPtr<IMFSourceReader> reader_;
    TDataFormat_AudioPcm format_;
    std::vector<std::uint8_t> rest_;
    bool isAtEnd_ = false;
};

} // namespace

std::unique_ptr<ISystemSound> ISystemSound::Open(std::shared_ptr<const CFileCopy> file) {
    return std::make_unique<CMediaFoundationSound>(std::move(file));
}
