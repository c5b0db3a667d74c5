// The classes and decoders that every initialised library has.
#include <vorlund/AudioClip.h>
#include <vorlund/AudioPcmConverters.h>
#include <vorlund/Bitmap.h>
#include <vorlund/CbVideoSource.h>
#include <vorlund/CodecClassStore.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Device.h>
#include <vorlund/Exception.h>
#include <vorlund/File.h>
#include <vorlund/MediaControl.h>
#include <vorlund/MediaSample.h>
#include <vorlund/ObjectList.h>
#include <vorlund/PlasmaVideoGenerator.h>
#include <vorlund/PropertyPage.h>
#include <vorlund/RandomGenerator.h>
#include <vorlund/Resource.h>
#include <vorlund/SetFormatIsf.h>
#include <vorlund/StreamFilter.h>
#include <vorlund/VideoClip.h>
#include <vorlund/VideoOutput.h>
#include <vorlund/VideoWindow.h>
#include <vorlund/Vorlund.h>
#include <vorlund/WavDecoder.h>

#include "support/Failures.h"
#include "support/KnownFailures.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

struct TClassRow {
    const char* name;
    CId id;
    /// Every interface that the class answers for. None: the name of a class that is created elsewhere.
    std::vector<CId> interfaces;

    bool IsAlias() const { return interfaces.empty(); }
};

template <class... TInterfaces> std::vector<CId> Ids() {
    return {TInterfaces::InterfaceId...};
}

/// In the order of registration.
const std::vector<TClassRow> kRows = {
    {"CAppendingRos",
     {0xA6EE19E9, 0xF32146E2, 0xAFA21EFF, 0xA0930554},
     Ids<IAppendingRos, IResourceOs, IOutputStream, IStream, IObject>()},
    {"CAudioClip", {0xC3AE26D0, 0xD9184CA0, 0xADDBAFA6, 0xF6EBBFF7}, Ids<IAudioClip, IResource, IObject>()},
    {"CAudioDevice", {0x9DF8979E, 0x14424383, 0xA3164F6A, 0xD110B15C}, {}},
    {"CAudioPcmChannelNumberConverter",
     {0xA95E1C18, 0xDE2A4C17, 0xBE5566E2, 0x1DED4C07},
     Ids<IAudioPcmChannelNumberConverter, IInputStreamFilter, IInputStream, IStream, IObject>()},
    {"CAudioPcmSampleFormatConverter",
     {0xC78D926E, 0x26B94789, 0x86D3132C, 0xEC7ED1FF},
     Ids<IAudioPcmSampleFormatConverter, IInputStreamFilter, IInputStream, IStream, IObject>()},
    {"CBitmap", {0x6921B3C6, 0x45054D41, 0x90271F9C, 0x039F8768}, Ids<IBitmap, IResource, IObject>()},
    {"CCbVideoSource",
     {0xA85B8713, 0xF0CF421C, 0xB374BA80, 0x329D801D},
     Ids<ICbVideoSource, IInputStream, IStream, IObject>()},
    {"CDevice", {0x89473E57, 0xFE5D4DBA, 0xA79AB5E1, 0x098F2C75}, Ids<IDevice, IObject>()},
    {"CFile", {0x918E84D7, 0x03CA40C4, 0xA1A93E28, 0xB0827B88}, Ids<IFile, IObject>()},
    {"CFileInputStream",
     {0x998C022A, 0xA4F74171, 0xB92B4A73, 0x71BD8306},
     Ids<IFileInputStream, IInputStream, IStream, IObject>()},
    {"CFileOutputStream",
     {0x039A99B9, 0x85864E63, 0xA613F839, 0xF0D8B4AD},
     Ids<IFileOutputStream, IOutputStream, IStream, IObject>()},
    {"CFolder", {0x60E82CA0, 0x89794B06, 0x90E37D7E, 0x529AB2EB}, Ids<IFolder, IObject>()},
    {"CInputStream", {0x0B43B630, 0xECE04EAE, 0x86EACA3C, 0xC4FEB484}, Ids<IInputStream, IStream, IObject>()},
    {"CInputStreamFilter",
     {0x8F2C8042, 0x1CB24F9B, 0x9E975CA4, 0xC36D6AFA},
     Ids<IInputStreamFilter, IInputStream, IStream, IObject>()},
    {"CMediaControl", {0x7F82DC9F, 0x9AF44946, 0x96F486E1, 0xB76D06AC}, Ids<IMediaControl, IObject>()},
    {"CMediaSample", {0xDFAB86E9, 0x794A4EAE, 0x9FE1B079, 0x0B782B82}, Ids<IMediaSample, IObject>()},
    {"CObject", {0x90832171, 0xF23F4997, 0xBC71E87A, 0x6E3A3063}, Ids<IObject>()},
    {"CObjectEnumerator",
     {0x4FA2C23A, 0xCE0A41A5, 0x9AE0AA31, 0x2855BE59},
     Ids<IObjectEnumerator, IObject>()},
    {"CObjectList", {0x60250972, 0x26DD46ED, 0x84B198C5, 0x0E29EEE3}, Ids<IObjectList, IObject>()},
    {"CObjectListener", {0x8E81F646, 0xB7F84058, 0x921DC7DD, 0xB602DD7D}, Ids<IObjectListener, IObject>()},
    {"COutputStream",
     {0x0FE0B4F4, 0x071C48C9, 0xA85231DC, 0x6B8A101A},
     Ids<IOutputStream, IStream, IObject>()},
    {"COutputStreamFilter",
     {0x9AAE6F8D, 0xB1E64389, 0xB02314BC, 0x015038DC},
     Ids<IOutputStreamFilter, IOutputStream, IStream, IObject>()},
    {"CPlasmaVideoGenerator",
     {0x7C9D79C6, 0x9C43493B, 0xA216D830, 0x03F13ADF},
     Ids<IPlasmaVideoGenerator, IInputStream, IStream, IObject>()},
    {"CPropertyPage", {0xF8D1B152, 0x0DB64B2D, 0x8AFDCAF4, 0x027A31F5}, Ids<IPropertyPage, IObject>()},
    {"CPtrObject", {0x40EC1DA0, 0x5CD84282, 0x991AA699, 0x0DC62B23}, Ids<IPtrObject, IObject>()},
    {"CPushObjectEnumerator",
     {0x766D7166, 0xF2084704, 0x9CCF634A, 0xDDBF1B96},
     Ids<IPushObjectEnumerator, IObjectEnumerator, IObject>()},
    {"CRandomGenerator",
     {0xA4116099, 0xFB8F43FD, 0xBF9EAA47, 0xF23C09F6},
     Ids<IRandomGenerator, IInputStream, IStream, IObject>()},
    {"CResource", {0x325FFD4D, 0x37294B87, 0x8AEFAC12, 0xC9276B34}, Ids<IResource, IObject>()},
    {"CResourceIs",
     {0xB229402C, 0xFDC14470, 0x90860D53, 0x765A0AB2},
     Ids<IResourceIs, IInputStream, IStream, IObject>()},
    {"CResourceOs",
     {0xB030E31E, 0x1FD74762, 0x87A083E7, 0x2D03271B},
     Ids<IResourceOs, IOutputStream, IStream, IObject>()},
    {"CSetFormatIsf",
     {0x14A97652, 0xF7A748C9, 0x966907FC, 0xE273A999},
     Ids<ISetFormatIsf, IInputStreamFilter, IInputStream, IStream, IObject>()},
    {"CStringObject", {0xAEA98BB2, 0x6A014A57, 0xB1543E5D, 0x9FFAC41A}, Ids<IStringObject, IObject>()},
    {"CSwBufferMediaSample",
     {0xA5D82DFB, 0x331F4063, 0x83FDCE8D, 0xFF73544F},
     Ids<ISwBufferMediaSample, IMediaSample, IObject>()},
    {"CVideoClip", {0x6E90B6D4, 0xBA60479E, 0x908CDF74, 0xEBA32064}, Ids<IVideoClip, IResource, IObject>()},
    {"CVideoDevice", {0xF81C0DB0, 0x960349F4, 0x8C229044, 0xA67DD19C}, {}},
    {"CVideoWindow", {0xDF555AEF, 0xC1714B6D, 0x855F4D5A, 0x280502C3}, Ids<IVideoWindow, IObject>()},
    {"CWavChunkDecoder",
     {0x9196075E, 0x9CA345E2, 0x824A41F7, 0x414D7EE9},
     Ids<IWavChunkDecoder, IInputStreamFilter, IInputStream, IStream, IObject>()},
    {"CWavDecoder",
     {0x521C3225, 0x5C8F4D10, 0xBE3A0AB0, 0x62E4711B},
     Ids<IWavDecoder, IInputStreamFilter, IInputStream, IStream, IObject>()},
};

/// Every interface of the library, to ask for those that a class must not have.
const std::vector<CId> kInterfaces =
    Ids<IObject, IObjectListener, IObjectList, IObjectEnumerator, IPushObjectEnumerator, IPtrObject,
        IStringObject, IStream, IInputStream, IOutputStream, IMediaSample, ISwBufferMediaSample,
        IInputStreamFilter, IOutputStreamFilter, IFileInputStream, IFileOutputStream, IFile, IFolder,
        IWavChunkDecoder, IWavDecoder, ICbVideoSource, IPlasmaVideoGenerator, IRandomGenerator, ISetFormatIsf,
        IAudioPcmSampleFormatConverter, IAudioPcmChannelNumberConverter, IResource, IResourceIs, IResourceOs,
        IAppendingRos, IAudioClip, IVideoClip, IBitmap, IMediaControl, IPropertyPage, IDevice, IVideoOutput,
        IVideoWindow>();

wstring RegisteredName(const TClassRow& row) {
    wstring name = VRL_L("vorlund::");
    for (const char* at = row.name; *at; ++at) name += static_cast<wchar>(*at);
    return name;
}

std::vector<TClassRow> RowsOfClasses() {
    std::vector<TClassRow> rows = kRows;
    std::erase_if(rows, [](const TClassRow& row) { return row.IsAlias(); });
    return rows;
}

/// What holds for every row, whatever is created under its name.
class BuiltinClassesRows : public testing::TestWithParam<TClassRow> {};

TEST_P(BuiltinClassesRows, IsRegistered) {
    const CLibraryScope library;
    const CClassStore& store = v.GetClassStore();
    const TClassInfo* const info = store.GetClassInfo(GetParam().id);
    EXPECT_EQ(Narrow(info->id.ToString()), Narrow(GetParam().id.ToString()));
    EXPECT_EQ(Narrow(info->name), std::string("vorlund::") + GetParam().name);
    EXPECT_EQ(store.GetClassInfo(RegisteredName(GetParam()).c_str()), info);
}

INSTANTIATE_TEST_SUITE_P(Rows, BuiltinClassesRows, testing::ValuesIn(kRows),
                         [](const auto& row) { return row.param.name; });

class BuiltinClasses : public testing::TestWithParam<TClassRow> {
protected:
    static void ExpectNew(IObject* object) {
        ASSERT_NE(object, nullptr);
        EXPECT_EQ(object->GetClassId(), GetParam().id);
        EXPECT_EQ(ReferencesOf(object), 1);
        EXPECT_EQ(object->Release(), 0);
    }

    CLibraryScope library_;
    CClassStore& store_ = v.GetClassStore();
};

TEST_P(BuiltinClasses, IsCreatedByIdentifier) {
    ExpectNew(store_.CreateObject(GetParam().id));
}

TEST_P(BuiltinClasses, IsCreatedByName) {
    ExpectNew(store_.CreateObject(RegisteredName(GetParam()).c_str()));
}

TEST_P(BuiltinClasses, IsCreatedByItsFactory) {
    ExpectNew(store_.GetClassInfo(GetParam().id)->factory());
}

TEST_P(BuiltinClasses, TakesOneNumber) {
    for (int number = 1; number <= 3; ++number) {
        const auto object = CRefPtr<IObject>::Adopt(store_.CreateObject(GetParam().id));
        EXPECT_EQ(object->GetObjectNumber(), number);
    }
}

TEST_P(BuiltinClasses, AnswersForItsInterfacesOnly) {
    const auto object = CRefPtr<IObject>::Adopt(store_.CreateObject(GetParam().id));
    const auto& own = GetParam().interfaces;
    for (const CId& id : own) {
        IObject* const answer = object->QueryInterface(id);
        EXPECT_EQ(answer, object.Get()) << Narrow(id.ToString());
        EXPECT_EQ(ReferencesOf(object.Get()), 2) << Narrow(id.ToString());
        if (answer) answer->Release();
    }
    std::vector<CId> others = kInterfaces;
    others.insert(others.end(), {CId::Null(), GetParam().id, CId(1, 2, 3, 4)});
    for (const CId& id : others) {
        if (std::find(own.begin(), own.end(), id) != own.end()) continue;
        EXPECT_EQ(object->QueryInterface(id), nullptr) << Narrow(id.ToString());
        EXPECT_EQ(ReferencesOf(object.Get()), 1) << Narrow(id.ToString());
    }
}

TEST_P(BuiltinClasses, TellsItsListenersWhileItIsWhole) {
    IObject* const object = store_.CreateObject(GetParam().id);
    CTestListener listener([&](IObject* dying) {
        EXPECT_EQ(dying, object);
        EXPECT_EQ(dying->GetClassId(), GetParam().id);
        for (const CId& id : GetParam().interfaces) {
            EXPECT_EQ(dying->QueryInterface(id), dying);
            dying->Release();
        }
    });
    object->AddListener(&listener);
    EXPECT_EQ(object->Release(), 0);
    EXPECT_EQ(listener.GetCalls(), 1);
}

TEST_P(BuiltinClasses, DestructionAfterCloseRaises) {
    IObject* const object = store_.CreateObject(GetParam().id);
    v.Close();
    ExpectRaises<CBugException>(counterfailures::kDestroyClosed, [&] { object->Release(); });
}

INSTANTIATE_TEST_SUITE_P(Rows, BuiltinClasses, testing::ValuesIn(RowsOfClasses()),
                         [](const auto& row) { return row.param.name; });

TEST(BuiltinClassesTable, IsRegisteredInOrderAndNothingElse) {
    const CLibraryScope library;
    const auto classes = CRefPtr<IObjectEnumerator>::Adopt(v.GetClassStore().EnumerateClasses());
    for (const TClassRow& row : kRows) {
        ASSERT_TRUE(classes->HasNext()) << row.name;
        const auto item = CRefPtr<IObject>::Adopt(classes->GetNext()).Query<IPtrObject>();
        const auto* const info = static_cast<const TClassInfo*>(item->GetPtr());
        EXPECT_EQ(Narrow(info->name), std::string("vorlund::") + row.name);
        EXPECT_EQ(info->id, row.id);
    }
    EXPECT_FALSE(classes->HasNext());
}

// Codecs.

std::vector<const void*> Pointers(IObjectEnumerator* enumerator) {
    std::vector<const void*> pointers;
    const auto owner = CRefPtr<IObjectEnumerator>::Adopt(enumerator);
    while (owner->HasNext())
        pointers.push_back(CRefPtr<IObject>::Adopt(owner->GetNext()).Query<IPtrObject>()->GetPtr());
    return pointers;
}

TEST(BuiltinClassesCodecs, OneDecoderAndNoEncoder) {
    const CLibraryScope library;
    CCodecClassStore& store = v.GetCodecClassStore();
    const auto decoders = Pointers(store.EnumerateDecoders());
    ASSERT_EQ(decoders.size(), 1u);
    const auto& decoder = *static_cast<const TDecoderClassInfo*>(decoders[0]);
    EXPECT_EQ(decoder.classId, CId(0x521C3225, 0x5C8F4D10, 0xBE3A0AB0, 0x62E4711B));
    EXPECT_EQ(decoder.inputFormatId, CId::Null());
    EXPECT_EQ(decoder.outputFormatId, CId(0x47A8ECCB, 0x40364B9F, 0xA014B125, 0x721626DF));
    EXPECT_EQ(store.GetDecoderClassInfo(CId::Null(), TDataFormat_AudioPcm::FormatId), &decoder);
    EXPECT_TRUE(Pointers(store.EnumerateEncoders()).empty());
}

TEST(BuiltinClassesCodecs, DecoderIsTheWavDecoder) {
    const CLibraryScope library;
    const auto decoder = CRefPtr<IObject>::Adopt(
        v.GetCodecClassStore().CreateDecoder(CId::Null(), TDataFormat_AudioPcm::FormatId));
    ASSERT_TRUE(decoder);
    EXPECT_TRUE(decoder.Query<IWavDecoder>());
}

TEST(BuiltinClassesDevices, NoDevice) {
    const CLibraryScope library;
    const auto devices = CRefPtr<IObjectList>::Adopt(v.GetDeviceClassStore().EnumerateDevices());
    EXPECT_EQ(devices->GetObjectCount(), 0u);
}

} // namespace
} // namespace vorlund::test
