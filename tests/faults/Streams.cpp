// Files, decoders, converters and resources.
#include "faults/Scenario.h"

#include <vorlund/AudioPcmConverters.h>
#include <vorlund/Blob.h>
#include <vorlund/CbVideoSource.h>
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/File.h>
#include <vorlund/MediaSample.h>
#include <vorlund/ObjectList.h>
#include <vorlund/PlasmaVideoGenerator.h>
#include <vorlund/RandomGenerator.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Resource.h>
#include <vorlund/SetFormatIsf.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/WavDecoder.h>

#include <array>

namespace vorlund::faults {
namespace {

using TBlock = std::array<unsigned char, 32768>;

/// Reads to the end, in pieces, into the result.
void ReadAll(IInputStream& stream, CResult& result) {
    static TBlock block;
    std::size_t size = 0;
    while (const std::uint64_t count = stream.Read(block.data() + size, (block.size() - size) / 2 + 1)) {
        size += static_cast<std::size_t>(count);
        if (size >= block.size()) break;
    }
    result.AddBytes(block.data(), size);
}

CRefPtr<IInputStream> Decode(const CInputStreamSelector& source) {
    return CRefPtr<IInputStream>::Adopt(source.DecodeStream(TDataFormat_AudioPcm::FormatId));
}

/// A resource with some audio in it.
CRefPtr<IResource> MakeAudio() {
    auto resource = CreateAs<IResource>(classid::CResource);
    resource->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_STEREO);
    resource->SetSize(8000);
    if (auto* const bytes = static_cast<unsigned char*>(resource->Lock(LOCK_MODE_WRITE)))
        for (int i = 0; i < 8000; ++i) bytes[i] = static_cast<unsigned char>(i * 7);
    resource->Unlock();
    return resource;
}

void AddFile(const wstring& path, CResult& result) {
    const CInputStreamSelector source(path.c_str());
    ReadAll(*source.GetInputStreamTmp(), result);
}

} // namespace

void RunDecode(CResult& result) {
    const CInputStreamSelector source(files.wav.c_str());
    const auto pcm = Decode(source);
    result.Add("%lld bytes, ", static_cast<long long>(pcm->GetLength()));
    ReadAll(*pcm, result);
    pcm->Seek(5000);
    pcm->Skip(1000);
    result.Add("at %lld, ", static_cast<long long>(pcm->Tell()));
    ReadAll(*pcm, result);
    pcm->Close();

    const auto chunks = CreateAs<IWavChunkDecoder>(classid::CWavChunkDecoder);
    const CInputStreamSelector again(files.wav.c_str());
    chunks->Connect(again.GetInputStreamTmp());
    const auto list = CRefPtr<IObjectList>::Adopt(chunks->EnumerateChunks());
    chunks->SelectChunk(VRL_L("tail"));
    result.Add("%u chunks, the last at %lld", list->GetObjectCount(),
               static_cast<long long>(chunks->GetChunkOffset()));
    chunks->Disconnect();
}

void RunConvert(CResult& result) {
    const auto channels = CreateAs<IAudioPcmChannelNumberConverter>(classid::CAudioPcmChannelNumberConverter);
    const auto samples = CreateAs<IAudioPcmSampleFormatConverter>(classid::CAudioPcmSampleFormatConverter);
    const CInputStreamSelector source(files.wav.c_str());
    samples->SetSampleFormat(SAMPLE_FORMAT_FLOAT);
    channels->SetNumChannels(1);
    const auto decoded = Decode(source);
    samples->Connect(decoded.Get());
    channels->Connect(samples.Get());
    ReadAll(*channels, result);
    channels->Seek(0);
    samples->SetSampleFormat(SAMPLE_FORMAT_8BIT);
    ReadAll(*channels, result);
    channels->Disconnect();
    samples->Disconnect();
}

void RunSave(CResult& result) {
    const auto audio = MakeAudio();
    audio->Save(COutputStreamSelector(files.output.c_str()), true);
    AddFile(files.output, result);

    const auto sample = CreateAs<ISwBufferMediaSample>(classid::CSwBufferMediaSample);
    sample->SetBufferSize(5000);
    const bool isRead = sample->ReadFrom(CInputStreamSelector(audio.Get()));
    result.Add("sample: %d, ", isRead);
    sample->WriteTo(COutputStreamSelector(files.output.c_str()));
    AddFile(files.output, result);

    const auto output = CreateAs<IFileOutputStream>(classid::CFileOutputStream);
    output->Open(files.output.c_str(), true);
    output->Write("appended", 8);
    output->Flush();
    output->Seek(0);
    output->Write("at the end", 10);
    result.Add("at %lld of %lld, ", static_cast<long long>(output->Tell()),
               static_cast<long long>(output->GetLength()));
    output->Close();
    AddFile(files.output, result);
}

void RunResource(CResult& result) {
    const auto resource = CreateAs<IResource>(classid::CResource);
    resource->Load(CInputStreamSelector(files.wav.c_str()));
    result.Add("%llu bytes, ", static_cast<unsigned long long>(resource->GetSize()));
    resource->SetFormat(&TDataFormat_AudioPcm::FORMAT_44100HZ_16BIT_STEREO);
    resource->LoadDecoded(CInputStreamSelector(files.wav.c_str()));
    result.Add("%llu decoded, ", static_cast<unsigned long long>(resource->GetSize()));

    const auto converter = CreateAs<IAudioPcmSampleFormatConverter>(classid::CAudioPcmSampleFormatConverter);
    converter->SetSampleFormat(SAMPLE_FORMAT_32BIT);
    resource->ApplyFilter(converter.Get());
    {
        const CInputStreamSelector source(resource.Get());
        ReadAll(*source.GetInputStreamTmp(), result);
    }
    const auto appending = CreateAs<IAppendingRos>(classid::CAppendingRos);
    appending->SetResource(resource.Get());
    appending->Write("one and more", 12);
    appending->Close();
    {
        const COutputStreamSelector target(resource.Get());
        target.GetOutputStreamTmp()->Write("beginning", 9);
    }
    const void* const bytes = resource->Lock(LOCK_MODE_READ);
    if (bytes) result.AddBytes(bytes, static_cast<std::size_t>(resource->GetSize()));
    resource->Unlock();

    CBlob blob("bytes of a blob", 15);
    const CBlob copy(blob);
    blob.SetSize(100);
    blob = copy;
    result.AddBytes(blob.GetData(), static_cast<std::size_t>(blob.GetSize()));
}

void RunSources(CResult& result) {
    const auto random = CreateAs<IRandomGenerator>(classid::CRandomGenerator);
    random->SetSeed(5)->SetRepeatCount(3);
    static TBlock block;
    result.AddBytes(block.data(), static_cast<std::size_t>(random->Read(block.data(), 1000)));

    TDataFormat_VideoRgb format;
    format.SetDefaults();
    format.image.width = 40;
    format.image.height = 30;
    const auto plasma = CreateAs<IPlasmaVideoGenerator>(classid::CPlasmaVideoGenerator);
    plasma->SetFormat(&format);
    result.AddBytes(block.data(),
                    static_cast<std::size_t>(plasma->Read(block.data(), format.image.GetSizeInBytes())));

    const CInputStreamSelector painted(
        [](ICbVideoSource::TCbData& data) { *static_cast<unsigned char*>(data.pixels) = 77; });
    const auto source = CRefPtr<IInputStream>::Adopt(painted.GetInputStream());
    const auto named = CreateAs<ISetFormatIsf>(classid::CSetFormatIsf);
    named->Connect(random.Get());
    named->SetFormat(&format);
    result.Add("format of %u bytes", named->GetFormat().size);
    named->Disconnect();
}

} // namespace vorlund::faults
