// The order of the virtual tables. Plug-ins and applications are compiled against it, so it never changes.
#include <vorlund/AudioClip.h>
#include <vorlund/AudioPcmConverters.h>
#include <vorlund/AudioPictures.h>
#include <vorlund/BinaryLock.h>
#include <vorlund/Bitmap.h>
#include <vorlund/CbVideoSource.h>
#include <vorlund/Device.h>
#include <vorlund/Exception.h>
#include <vorlund/File.h>
#include <vorlund/LineReader.h>
#include <vorlund/MediaControl.h>
#include <vorlund/MediaSample.h>
#include <vorlund/ObjectList.h>
#include <vorlund/PlasmaVideoGenerator.h>
#include <vorlund/PropertyPage.h>
#include <vorlund/RandomGenerator.h>
#include <vorlund/Resampler.h>
#include <vorlund/Resource.h>
#include <vorlund/SetFormatIsf.h>
#include <vorlund/StreamFilter.h>
#include <vorlund/TextReader.h>
#include <vorlund/TextWriter.h>
#include <vorlund/Timer.h>
#include <vorlund/VarReader.h>
#include <vorlund/VarWriter.h>
#include <vorlund/VideoClip.h>
#include <vorlund/VideoOutput.h>
#include <vorlund/VideoWindow.h>
#include <vorlund/WavDecoder.h>
#include <vorlund/WindowedOutput.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

/// The place of a virtual operation in its table. Itanium C++ ABI, 2.3 "Member Function Pointers": the first
/// word is 1 plus the offset in the table in bytes, the second one the adjustment of the object's address. On
/// ARM the addresses of functions may be odd, so there the 1 is in the second word, and the rest of it is
/// doubled.
template <class TMember> int SlotOf(TMember member) {
    struct {
        std::intptr_t function;
        std::intptr_t adjustment;
    } raw;
    static_assert(sizeof(raw) == sizeof(member));
    std::memcpy(&raw, &member, sizeof(raw));
#if defined(__aarch64__)
    constexpr std::intptr_t kMark = 0;
    constexpr std::intptr_t kUnmoved = 1;
#else
    constexpr std::intptr_t kMark = 1;
    constexpr std::intptr_t kUnmoved = 0;
#endif
    if ((raw.function & 1) != kMark || raw.adjustment != kUnmoved) return -1;
    return static_cast<int>((raw.function - kMark) / static_cast<std::intptr_t>(sizeof(void*)));
}

/// A class with one more operation: its slot is the number of those before it.
template <class TBase> class CNext : public TBase {
public:
    using TBase::operator=;
    virtual void Next() = 0;
};

/// The number of slots of a class, those of a virtual destructor (two) included.
template <class TClass> int SlotCount() {
    return SlotOf(&CNext<TClass>::Next);
}

struct TSlotRow {
    std::string operation;
    int actual;
    int expected;
};

/// Rows of consecutive operations.
struct TOperation {
    const char* name;
    int slot;
};
void AddRows(std::vector<TSlotRow>& rows, const std::string& name, int first,
             const std::vector<TOperation>& operations, int count) {
    int expected = first;
    for (const TOperation& operation : operations)
        rows.push_back({name + "_" + operation.name, operation.slot, expected++});
    rows.push_back({name + "_End", count, expected});
}

// Overloads are told apart by what they take.
using TRemoveAt = void (IObjectList::*)(unsigned int);
using TRemove = void (IObjectList::*)(IObject*);
using TEnumerate = IObjectEnumerator* (IObjectList::*)();
using TEnumerateSome = IObjectEnumerator* (IObjectList::*)(CId);
using TReadSample = void (IInputStream::*)(IMediaSample*);
using TRead = std::uint64_t (IInputStream::*)(void*, std::uint64_t);
using TAssign = CWriter& (CWriter::*)(const CWriter&);
using TReadLine = CString (CTextReader::*)();

/// Opens the protected operations of buffered readers.
class COpenBufferedReader : public CBufferedReader {
public:
    using CBufferedReader::FillBuffer;
    using CBufferedReader::RemoveBufferedData;
};

std::vector<TSlotRow> MakeRows() {
    std::vector<TSlotRow> rows;
    AddRows(rows, "IObject", 0,
            {{"AddRef", SlotOf(&IObject::AddRef)},
             {"Release", SlotOf(&IObject::Release)},
             {"QueryInterface", SlotOf(&IObject::QueryInterface)},
             {"AddListener", SlotOf(&IObject::AddListener)},
             {"RemoveListener", SlotOf(&IObject::RemoveListener)},
             {"GetObjectNumber", SlotOf(&IObject::GetObjectNumber)},
             {"GetClassId", SlotOf(&IObject::GetClassId)}},
            SlotCount<IObject>());
    AddRows(rows, "IObjectListener", 7, {{"OnObjectDestroyed", SlotOf(&IObjectListener::OnObjectDestroyed)}},
            SlotCount<IObjectListener>());
    AddRows(
        rows, "IObjectEnumerator", 7,
        {{"HasNext", SlotOf(&IObjectEnumerator::HasNext)}, {"GetNext", SlotOf(&IObjectEnumerator::GetNext)}},
        SlotCount<IObjectEnumerator>());
    AddRows(rows, "IPushObjectEnumerator", 9,
            {{"Push", SlotOf(&IPushObjectEnumerator::Push)},
             {"Reserve", SlotOf(&IPushObjectEnumerator::Reserve)}},
            SlotCount<IPushObjectEnumerator>());
    AddRows(rows, "IObjectList", 7,
            {{"AddObject", SlotOf(&IObjectList::AddObject)},
             {"RemoveObjectAt", SlotOf(static_cast<TRemoveAt>(&IObjectList::RemoveObject))},
             {"RemoveObject", SlotOf(static_cast<TRemove>(&IObjectList::RemoveObject))},
             {"RemoveAllObjects", SlotOf(&IObjectList::RemoveAllObjects)},
             {"EnumerateObjects", SlotOf(static_cast<TEnumerate>(&IObjectList::EnumerateObjects))},
             {"EnumerateObjectsOf", SlotOf(static_cast<TEnumerateSome>(&IObjectList::EnumerateObjects))},
             {"GetObjectCount", SlotOf(&IObjectList::GetObjectCount)},
             {"GetObject", SlotOf(&IObjectList::GetObject)},
             {"FindObject", SlotOf(&IObjectList::FindObject)}},
            SlotCount<IObjectList>());
    AddRows(rows, "IPtrObject", 7,
            {{"GetPtr", SlotOf(&IPtrObject::GetPtr)}, {"SetPtr", SlotOf(&IPtrObject::SetPtr)}},
            SlotCount<IPtrObject>());
    AddRows(
        rows, "IStringObject", 7,
        {{"GetString", SlotOf(&IStringObject::GetString)}, {"SetString", SlotOf(&IStringObject::SetString)}},
        SlotCount<IStringObject>());
    AddRows(rows, "IStream", 7,
            {{"Close", SlotOf(&IStream::Close)},
             {"GetCapabilities", SlotOf(&IStream::GetCapabilities)},
             {"GetLength", SlotOf(&IStream::GetLength)},
             {"Flush", SlotOf(&IStream::Flush)},
             {"Seek", SlotOf(&IStream::Seek)},
             {"Tell", SlotOf(&IStream::Tell)}},
            SlotCount<IStream>());
    AddRows(rows, "IInputStream", 13,
            {{"Eof", SlotOf(&IInputStream::Eof)},
             {"GetFormat", SlotOf(&IInputStream::GetFormat)},
             {"ReadSample", SlotOf(static_cast<TReadSample>(&IInputStream::Read))},
             {"Read", SlotOf(static_cast<TRead>(&IInputStream::Read))},
             {"SupportsMediaSamples", SlotOf(&IInputStream::SupportsMediaSamples)},
             {"Skip", SlotOf(&IInputStream::Skip)}},
            SlotCount<IInputStream>());
    AddRows(rows, "IOutputStream", 13,
            {{"SetFormat", SlotOf(&IOutputStream::SetFormat)}, {"Write", SlotOf(&IOutputStream::Write)}},
            SlotCount<IOutputStream>());
    AddRows(rows, "IMediaSample", 7,
            {{"Clone", SlotOf(&IMediaSample::Clone)},
             {"GetSampleFlags", SlotOf(&IMediaSample::GetSampleFlags)},
             {"ReadFrom", SlotOf(&IMediaSample::ReadFrom)},
             {"WriteTo", SlotOf(&IMediaSample::WriteTo)}},
            SlotCount<IMediaSample>());
    AddRows(rows, "ISwBufferMediaSample", 11,
            {{"GetBuffer", SlotOf(&ISwBufferMediaSample::GetBuffer)},
             {"GetBufferSize", SlotOf(&ISwBufferMediaSample::GetBufferSize)},
             {"GetDataSize", SlotOf(&ISwBufferMediaSample::GetDataSize)},
             {"SetDataSize", SlotOf(&ISwBufferMediaSample::SetDataSize)},
             {"SetFormat", SlotOf(&ISwBufferMediaSample::SetFormat)},
             {"SetBufferSize", SlotOf(&ISwBufferMediaSample::SetBufferSize)},
             {"GetFormat", SlotOf(&ISwBufferMediaSample::GetFormat)}},
            SlotCount<ISwBufferMediaSample>());
    AddRows(rows, "IInputStreamFilter", 19,
            {{"Connect", SlotOf(&IInputStreamFilter::Connect)},
             {"Disconnect", SlotOf(&IInputStreamFilter::Disconnect)},
             {"GetInputStream", SlotOf(&IInputStreamFilter::GetInputStream)}},
            SlotCount<IInputStreamFilter>());
    AddRows(rows, "IOutputStreamFilter", 15,
            {{"Connect", SlotOf(&IOutputStreamFilter::Connect)},
             {"Disconnect", SlotOf(&IOutputStreamFilter::Disconnect)},
             {"GetOutputStream", SlotOf(&IOutputStreamFilter::GetOutputStream)}},
            SlotCount<IOutputStreamFilter>());
    AddRows(rows, "IFileInputStream", 19, {{"Open", SlotOf(&IFileInputStream::Open)}},
            SlotCount<IFileInputStream>());
    AddRows(rows, "IFileOutputStream", 15, {{"Open", SlotOf(&IFileOutputStream::Open)}},
            SlotCount<IFileOutputStream>());
    AddRows(rows, "IFile", 7,
            {{"GetTitle", SlotOf(&IFile::GetTitle)},
             {"GetFolderPath", SlotOf(&IFile::GetFolderPath)},
             {"GetExtension", SlotOf(&IFile::GetExtension)},
             {"GetFolder", SlotOf(&IFile::GetFolder)},
             {"GetName", SlotOf(&IFile::GetName)},
             {"GetPath", SlotOf(&IFile::GetPath)},
             {"Initialize", SlotOf(&IFile::Initialize)},
             {"OpenInputStream", SlotOf(&IFile::OpenInputStream)},
             {"OpenOutputStream", SlotOf(&IFile::OpenOutputStream)}},
            SlotCount<IFile>());
    AddRows(rows, "IFolder", 7,
            {{"EnumerateFiles", SlotOf(&IFolder::EnumerateFiles)},
             {"EnumerateFolders", SlotOf(&IFolder::EnumerateFolders)},
             {"GetName", SlotOf(&IFolder::GetName)},
             {"GetPath", SlotOf(&IFolder::GetPath)},
             {"Initialize", SlotOf(&IFolder::Initialize)}},
            SlotCount<IFolder>());
    AddRows(rows, "IDevice", 7, {{"Open", SlotOf(&IDevice::Open)}, {"Close", SlotOf(&IDevice::Close)}},
            SlotCount<IDevice>());
    AddRows(rows, "IVideoOutput", 9,
            {{"Open",
              SlotOf<bool (IVideoOutput::*)(const TDataFormat_VideoRgb&, const wchar*)>(&IVideoOutput::Open)},
             {"Present", SlotOf(&IVideoOutput::Present)}},
            SlotCount<IVideoOutput>());
    AddRows(rows, "IWindowedOutput", 11, {{"SetHandler", SlotOf(&IWindowedOutput::SetHandler)}},
            SlotCount<IWindowedOutput>());
    AddRows(rows, "IVideoWindow", 7,
            {{"Open", SlotOf(&IVideoWindow::Open)},
             {"Close", SlotOf(&IVideoWindow::Close)},
             {"GetHandle", SlotOf(&IVideoWindow::GetHandle)},
             {"SetClientSize", SlotOf(&IVideoWindow::SetClientSize)},
             {"SetWindowSize", SlotOf(&IVideoWindow::SetWindowSize)},
             {"SetTitle", SlotOf(&IVideoWindow::SetTitle)}},
            SlotCount<IVideoWindow>());
    AddRows(rows, "IWavChunkDecoder", 22,
            {{"EnumerateChunks", SlotOf(&IWavChunkDecoder::EnumerateChunks)},
             {"GetChunkSize", SlotOf(&IWavChunkDecoder::GetChunkSize)},
             {"GetChunkOffset", SlotOf(&IWavChunkDecoder::GetChunkOffset)},
             {"SelectChunk", SlotOf(&IWavChunkDecoder::SelectChunk)}},
            SlotCount<IWavChunkDecoder>());
    AddRows(rows, "IWavDecoder", 22, {}, SlotCount<IWavDecoder>());
    AddRows(rows, "ICbVideoSource", 19,
            {{"SetFormat", SlotOf(&ICbVideoSource::SetFormat)},
             {"SetCallback", SlotOf(&ICbVideoSource::SetCallback)}},
            SlotCount<ICbVideoSource>());
    AddRows(rows, "IPlasmaVideoGenerator", 19, {{"SetFormat", SlotOf(&IPlasmaVideoGenerator::SetFormat)}},
            SlotCount<IPlasmaVideoGenerator>());
    AddRows(rows, "IRandomGenerator", 19,
            {{"SetFormat", SlotOf(&IRandomGenerator::SetFormat)},
             {"SetSeed", SlotOf(&IRandomGenerator::SetSeed)},
             {"SetRepeatCount", SlotOf(&IRandomGenerator::SetRepeatCount)}},
            SlotCount<IRandomGenerator>());
    AddRows(rows, "ISetFormatIsf", 22, {{"SetFormat", SlotOf(&ISetFormatIsf::SetFormat)}},
            SlotCount<ISetFormatIsf>());
    AddRows(rows, "IAudioPcmSampleFormatConverter", 22,
            {{"SetSampleFormat", SlotOf(&IAudioPcmSampleFormatConverter::SetSampleFormat)}},
            SlotCount<IAudioPcmSampleFormatConverter>());
    AddRows(rows, "IResampler", 22,
            {{"SetTarget", SlotOf(&IResampler::SetTarget)}, {"Resample", SlotOf(&IResampler::Resample)}},
            SlotCount<IResampler>());
    AddRows(rows, "IAudioPictures", 22,
            {{"SetSettings", SlotOf(&IAudioPictures::SetSettings)},
             {"GetSettings", SlotOf(&IAudioPictures::GetSettings)},
             {"Start", SlotOf(&IAudioPictures::Start)},
             {"Write", SlotOf(&IAudioPictures::Write)},
             {"Draw", SlotOf(&IAudioPictures::Draw)}},
            SlotCount<IAudioPictures>());
    AddRows(rows, "IAudioPcmChannelNumberConverter", 22,
            {{"SetNumChannels", SlotOf(&IAudioPcmChannelNumberConverter::SetNumChannels)}},
            SlotCount<IAudioPcmChannelNumberConverter>());
    AddRows(rows, "IResource", 7,
            {{"ApplyFilter", SlotOf(&IResource::ApplyFilter)},
             {"GetModificationCount", SlotOf(&IResource::GetModificationCount)},
             {"GetFormat", SlotOf(&IResource::GetFormat)},
             {"GetSize", SlotOf(&IResource::GetSize)},
             {"LoadDecoded", SlotOf(&IResource::LoadDecoded)},
             {"Load", SlotOf(&IResource::Load)},
             {"Lock", SlotOf(&IResource::Lock)},
             {"LockFormat", SlotOf(&IResource::LockFormat)},
             {"Save", SlotOf(&IResource::Save)},
             {"SetFormat", SlotOf(&IResource::SetFormat)},
             {"SetSize", SlotOf(&IResource::SetSize)},
             {"Unlock", SlotOf(&IResource::Unlock)}},
            SlotCount<IResource>());
    AddRows(rows, "IResourceIs", 19, {{"SetResource", SlotOf(&IResourceIs::SetResource)}},
            SlotCount<IResourceIs>());
    AddRows(rows, "IResourceOs", 15, {{"SetResource", SlotOf(&IResourceOs::SetResource)}},
            SlotCount<IResourceOs>());
    AddRows(rows, "IAppendingRos", 16, {}, SlotCount<IAppendingRos>());
    AddRows(rows, "IAudioClip", 19, {}, SlotCount<IAudioClip>());
    AddRows(rows, "IVideoClip", 19, {}, SlotCount<IVideoClip>());
    AddRows(rows, "IBitmap", 19, {{"GetImageFormat", SlotOf(&IBitmap::GetImageFormat)}},
            SlotCount<IBitmap>());
    AddRows(rows, "IMediaControl", 7,
            {{"SetRate", SlotOf(&IMediaControl::SetRate)},
             {"Rewind", SlotOf(&IMediaControl::Rewind)},
             {"GetCapabilities", SlotOf(&IMediaControl::GetCapabilities)},
             {"GetDuration", SlotOf(&IMediaControl::GetDuration)},
             {"IsPlaying", SlotOf(&IMediaControl::IsPlaying)},
             {"Pause", SlotOf(&IMediaControl::Pause)},
             {"Play", SlotOf(&IMediaControl::Play)},
             {"Seek", SlotOf(&IMediaControl::Seek)},
             {"SetRange", SlotOf(&IMediaControl::SetRange)},
             {"Stop", SlotOf(&IMediaControl::Stop)},
             {"GetTime", SlotOf(&IMediaControl::GetTime)}},
            SlotCount<IMediaControl>());
    AddRows(rows, "IPropertyPage", 7,
            {{"Open", SlotOf(&IPropertyPage::Open)},
             {"Apply", SlotOf(&IPropertyPage::Apply)},
             {"Reset", SlotOf(&IPropertyPage::Reset)},
             {"Close", SlotOf(&IPropertyPage::Close)},
             {"Show", SlotOf(&IPropertyPage::Show)}},
            SlotCount<IPropertyPage>());

    // The destructor takes two slots.
    AddRows(rows, "CWriter", 2,
            {{"Assign", SlotOf(static_cast<TAssign>(&CWriter::operator=))},
             {"Seek", SlotOf(&CWriter::Seek)},
             {"Tell", SlotOf(&CWriter::Tell)}},
            SlotCount<CWriter>());
    AddRows(rows, "CVarWriter", 5, {}, SlotCount<CVarWriter>());
    AddRows(rows, "CTextWriter", 5,
            {{"Write", SlotOf<void (CTextWriter::*)(const wchar*, ...)>(&CTextWriter::Write)}},
            SlotCount<CTextWriter>());
    AddRows(
        rows, "CReader", 2,
        {{"Eof", SlotOf(&CReader::Eof)}, {"Seek", SlotOf(&CReader::Seek)}, {"Tell", SlotOf(&CReader::Tell)}},
        SlotCount<CReader>());
    AddRows(rows, "CVarReader", 5, {}, SlotCount<CVarReader>());
    AddRows(rows, "CBufferedReader", 2,
            {{"Eof", SlotOf(&CBufferedReader::Eof)},
             {"Seek", SlotOf(&CBufferedReader::Seek)},
             {"Tell", SlotOf(&CBufferedReader::Tell)},
             {"FillBuffer", SlotOf(&COpenBufferedReader::FillBuffer)},
             {"RemoveBufferedData", SlotOf(&COpenBufferedReader::RemoveBufferedData)},
             {"Flush", SlotOf(&CBufferedReader::Flush)}},
            SlotCount<CBufferedReader>());
    AddRows(rows, "CTextReader", 8, {{"ReadLine", SlotOf(static_cast<TReadLine>(&CTextReader::ReadLine))}},
            SlotCount<CTextReader>());
    AddRows(rows, "CLineReader", 5, {}, SlotCount<CLineReader>());

    // Classes whose one virtual operation is the destructor.
    AddRows(rows, "CClassObject", 2, {}, SlotCount<CClassObject>());
    AddRows(rows, "CBinaryLock", 2, {}, SlotCount<CBinaryLock>());
    AddRows(rows, "CEvent", 2, {}, SlotCount<CEvent>());
    AddRows(rows, "CTimer", 2, {}, SlotCount<CTimer>());
    AddRows(rows, "CException", 2, {}, SlotCount<CException>());
#define VRL_SLOT_ROW(value, className, enumerator) AddRows(rows, #className, 2, {}, SlotCount<className>());
    VRL_EXCEPTION_SUBCLASSES(VRL_SLOT_ROW)
#undef VRL_SLOT_ROW
    return rows;
}

class Slots : public testing::TestWithParam<TSlotRow> {};

TEST_P(Slots, InOrder) {
    EXPECT_EQ(GetParam().actual, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, Slots, testing::ValuesIn(MakeRows()),
                         [](const auto& row) { return row.param.operation; });

// One table pointer and nothing else: an interface pointer is the object's address under every interface.
template <class TInterface>
constexpr bool kIsPlain = sizeof(TInterface) == sizeof(void*) && std::is_abstract_v<TInterface> &&
                          !std::has_virtual_destructor_v<TInterface>;
static_assert(kIsPlain<IObject> && kIsPlain<IObjectListener> && kIsPlain<IObjectEnumerator> &&
              kIsPlain<IPushObjectEnumerator> && kIsPlain<IObjectList> && kIsPlain<IPtrObject> &&
              kIsPlain<IStringObject> && kIsPlain<IStream> && kIsPlain<IInputStream> &&
              kIsPlain<IOutputStream> && kIsPlain<IMediaSample> && kIsPlain<ISwBufferMediaSample> &&
              kIsPlain<IInputStreamFilter> && kIsPlain<IOutputStreamFilter> && kIsPlain<IFileInputStream> &&
              kIsPlain<IFileOutputStream> && kIsPlain<IFile> && kIsPlain<IFolder> &&
              kIsPlain<IWavChunkDecoder> && kIsPlain<IWavDecoder> && kIsPlain<ICbVideoSource> &&
              kIsPlain<IPlasmaVideoGenerator> && kIsPlain<IRandomGenerator> && kIsPlain<ISetFormatIsf> &&
              kIsPlain<IAudioPcmSampleFormatConverter> && kIsPlain<IAudioPcmChannelNumberConverter> &&
              kIsPlain<IResampler> && kIsPlain<IResource> && kIsPlain<IResourceIs> && kIsPlain<IResourceOs> &&
              kIsPlain<IAppendingRos> && kIsPlain<IAudioClip> && kIsPlain<IVideoClip> && kIsPlain<IBitmap> &&
              kIsPlain<IMediaControl> && kIsPlain<IPropertyPage> && kIsPlain<IDevice> &&
              kIsPlain<IVideoOutput> && kIsPlain<IVideoWindow> && kIsPlain<IWindowedOutput> &&
              kIsPlain<IAudioPictures>);

} // namespace
} // namespace vorlund::test
