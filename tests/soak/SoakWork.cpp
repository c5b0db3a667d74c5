#include "soak/SoakWork.h"

#include "support/WavBuilder.h"

#include <vorlund/AudioPcmConverters.h>
#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Device.h>
#include <vorlund/File.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RandomGenerator.h>
#include <vorlund/Resource.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Timer.h>
#include <vorlund/VarReader.h>
#include <vorlund/VarWriter.h>
#include <vorlund/Vorlund.h>

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <string>

namespace vorlund::soak {
namespace {

void Expect(bool isTrue, const char* what) {
    if (!isTrue) throw std::runtime_error(what);
}

std::uint64_t ReadAll(IInputStream& stream) {
    std::uint64_t bytes = 0;
    char block[1024];
    while (const std::uint64_t count = stream.Read(block, sizeof block)) bytes += count;
    return bytes;
}

void Decode(TShared& shared) {
    const CInputStreamSelector source(shared.file.GetPath());
    const auto pcm = CRefPtr<IInputStream>::Adopt(source.DecodeStream(TDataFormat_AudioPcm::FormatId));
    Expect(pcm && ReadAll(*pcm) == CInputFile::kDataBytes, "a decoded stream is too short");
}

void Convert(TShared& shared) {
    const CInputStreamSelector source(shared.file.GetPath());
    const auto pcm = CRefPtr<IInputStream>::Adopt(source.DecodeStream(TDataFormat_AudioPcm::FormatId));
    const auto format = CreateAs<IAudioPcmSampleFormatConverter>(classid::CAudioPcmSampleFormatConverter);
    format->SetSampleFormat(SAMPLE_FORMAT_FLOAT);
    format->Connect(pcm.Get());
    const auto channels = CreateAs<IAudioPcmChannelNumberConverter>(classid::CAudioPcmChannelNumberConverter);
    channels->SetNumChannels(2);
    channels->Connect(format.Get());
    Expect(ReadAll(*channels) == CInputFile::kDataBytes * 4, "a converted stream is too short");
}

void LoadAndSave(TShared& shared) {
    const auto resource = CreateAs<IResource>(classid::CResource);
    resource->Load(CInputStreamSelector(shared.file.GetPath()));
    Expect(resource->GetSize() > CInputFile::kDataBytes, "a resource is too small");
    const auto other = CreateAs<IResource>(classid::CResource);
    resource->Save(COutputStreamSelector(other.Get()), true);
    Expect(other->GetSize() == resource->GetSize(), "a saved resource is too small");
}

void WriteAndRead() {
    const auto resource = CreateAs<IResource>(classid::CResource);
    {
        CVarWriter writer(COutputStreamSelector(resource.Get()).GetOutputStreamTmp());
        writer << 12345 << VRL_L("some text") << 0.5;
    }
    CVarReader reader(CInputStreamSelector(resource.Get()).GetInputStreamTmp());
    int number = 0;
    CString text;
    double fraction = 0;
    reader >> number >> text >> fraction;
    Expect(number == 12345 && text == VRL_L("some text") && fraction == 0.5, "values are not read back");
}

void Enumerate(TShared& shared) {
    const auto folder = CreateAs<IFolder>(classid::CFolder);
    folder->Initialize(shared.file.GetFolder());
    const auto files = CRefPtr<IObjectList>::Adopt(folder->EnumerateFiles());
    Expect(files->GetObjectCount() == 1, "a folder has lost its file");
}

void MakeNoise() {
    const auto noise = CreateAs<IRandomGenerator>(classid::CRandomGenerator);
    noise->SetSeed(1);
    char block[512];
    Expect(noise->Read(block, sizeof block) == sizeof block, "there is no noise");
}

/// What fails, and the reports of it.
void Fail(TShared& shared) {
    const wstring missing = wstring(shared.file.GetPath()) + VRL_L(".not");
    try {
        const CInputStreamSelector source(missing.c_str());
    } catch (const CException&) {
        return;
    }
    Expect(false, "a missing file was opened");
}

void UseDevice() {
    const auto device = CRefPtr<IDevice>::Adopt(v.GetDeviceClassStore().CreateDevice(DEVICE_TYPE_AUDIO));
    device->Open();
    device->Close();
}

/// An asynchronous wait that calls and stops itself, one that its event ends, and a timer.
void UseWaits() {
    struct TCall {
        CEvent event;
        CEvent isDone;
    } call;
    call.event.WaitAsync(
        [](CEvent::TAsyncCbData& data) {
            CEvent::StopAsync(data.handle);
            static_cast<TCall*>(data.userData)->isDone.SetState(true);
        },
        &call);
    CTimer timer(0.001f);
    {
        CEvent never;
        const auto nothing = [](CEvent::TAsyncCbData&) {};
        CEvent::WaitOneAsync(nothing, nullptr, 2, &timer, &never);
        CEvent::StopAsync(CEvent::WaitAllAsync(nothing, nullptr, 2, &timer, &never));
    }
    timer.Start();
    timer.Wait();
    call.event.SetState(true);
    call.isDone.Wait();
}

void UseLocks(TShared& shared) {
    {
        const CReadWriteLockGuard write(shared.lock, LOCK_MODE_WRITE);
        ++shared.left;
        ++shared.right;
    }
    {
        const CReadWriteLockGuard read(shared.lock, LOCK_MODE_READ);
        Expect(shared.left == shared.right, "a lock lets two threads in");
    }
    const CBinaryLockGuard guard(shared.binary);
}

} // namespace

wstring WidePath(const std::filesystem::path& path) {
    const std::u16string units = path.u16string();
    return wstring(units.begin(), units.end());
}

CInputFile::CInputFile() {
    const auto now = std::chrono::system_clock::now().time_since_epoch().count();
    folder_ = std::filesystem::temp_directory_path() / ("vorlund-soak-" + std::to_string(now));
    std::filesystem::create_directories(folder_);
    const test::TBytes bytes = test::PlainWav({}, test::Ramp(kDataBytes));
    const std::filesystem::path file = folder_ / "input.wav";
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    path_ = WidePath(file);
    folderPath_ = WidePath(folder_);
}

CInputFile::~CInputFile() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

void DoPart(TShared& shared, const TCounts& part) {
    for (long long decode = 0; decode < part.decodes; ++decode) {
        Decode(shared);
        if (decode % 8 == 0) UseLocks(shared);
    }
    for (long long device = 0; device < part.devices; ++device) UseDevice();
    for (long long wait = 0; wait < part.waits; ++wait) UseWaits();
    Convert(shared);
    LoadAndSave(shared);
    WriteAndRead();
    Enumerate(shared);
    MakeNoise();
    Fail(shared);
}

} // namespace vorlund::soak
