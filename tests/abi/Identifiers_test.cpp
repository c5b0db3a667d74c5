// The identifiers of interfaces and data formats, and that no two things share one.
#include <vorlund/AudioClip.h>
#include <vorlund/AudioPcmConverters.h>
#include <vorlund/AudioPictures.h>
#include <vorlund/Bitmap.h>
#include <vorlund/CbVideoSource.h>
#include <vorlund/ClassIds.h>
#include <vorlund/CodecClassStore.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Device.h>
#include <vorlund/File.h>
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
#include <vorlund/VideoClip.h>
#include <vorlund/VideoOutput.h>
#include <vorlund/VideoWindow.h>
#include <vorlund/WavDecoder.h>
#include <vorlund/WindowedOutput.h>

#include "support/Text.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <type_traits>

namespace vorlund::test {
namespace {

struct TIdRow {
    const char* name;
    CId actual;
    CId expected;
};

const TIdRow kIds[] = {
    {"IObject", IObject::InterfaceId, {0x021E95ED, 0x173F45B5, 0xA6C3EC3F, 0xB12B6A49}},
    {"IObjectListener", IObjectListener::InterfaceId, {0x2B84F858, 0x35FB4394, 0xB429968B, 0x2708B7F9}},
    {"IObjectList", IObjectList::InterfaceId, {0xD1768FC0, 0x42BB48E7, 0x87E11D7D, 0x6AFB9D1E}},
    {"IObjectEnumerator", IObjectEnumerator::InterfaceId, {0x8C793E9B, 0xBC8745E2, 0x849BEBD0, 0x8EB98E6D}},
    {"IPushObjectEnumerator",
     IPushObjectEnumerator::InterfaceId,
     {0x1894F586, 0x380E4502, 0xBDDD06EC, 0xDD4E382C}},
    {"IPtrObject", IPtrObject::InterfaceId, {0x145C5C82, 0x7D5D4D37, 0x988D01D0, 0xDAA08333}},
    {"IStringObject", IStringObject::InterfaceId, {0xE32A1605, 0xA9BD4213, 0xA3EA2131, 0x1D76690C}},
    {"IStream", IStream::InterfaceId, {0x22C30DFF, 0xBD4042C7, 0xAAC861B7, 0xBEB00D39}},
    {"IInputStream", IInputStream::InterfaceId, {0xE3105CB8, 0xCEBD4B10, 0x829C75B7, 0x76ACBBB3}},
    {"IOutputStream", IOutputStream::InterfaceId, {0x52EA12BA, 0x7E5D408D, 0x8E0B8BF7, 0x6DA4B54A}},
    {"IMediaSample", IMediaSample::InterfaceId, {0x2DA6B640, 0x211E4513, 0xA04CAAF0, 0x831601D2}},
    {"ISwBufferMediaSample",
     ISwBufferMediaSample::InterfaceId,
     {0xDD26FE1D, 0x4A1C43D6, 0xB9CB618F, 0xC1057F72}},
    {"IInputStreamFilter", IInputStreamFilter::InterfaceId, {0x60A36D1A, 0x010B4DAA, 0x840BBFB2, 0xEAE35868}},
    {"IOutputStreamFilter",
     IOutputStreamFilter::InterfaceId,
     {0xF707CD17, 0x548A42AA, 0xAAE8930B, 0x9F2F32E3}},
    {"IFileInputStream", IFileInputStream::InterfaceId, {0x1B25AD54, 0xCF004351, 0x88BE2EA8, 0x6F49482D}},
    {"IFileOutputStream", IFileOutputStream::InterfaceId, {0xB321E4B6, 0x6CD84F8B, 0x94D6DC1A, 0x14946231}},
    {"IFile", IFile::InterfaceId, {0xB3CD9843, 0x21DE668F, 0x6DED4892, 0xDE64E408}},
    {"IFolder", IFolder::InterfaceId, {0x073F714C, 0xD5A53317, 0x083B96CF, 0xEDA16CC5}},
    {"IVideoOutput", IVideoOutput::InterfaceId, {0x4F714F40, 0x9133B93F, 0x5F77CBB2, 0x7827E4EA}},
    {"IWindowedOutput", IWindowedOutput::InterfaceId, {0x68E3AF03, 0x1DA96B64, 0x54901BD2, 0xFAAB479A}},
    {"IVideoWindow", IVideoWindow::InterfaceId, {0x9F88DC9D, 0xCC694367, 0xBDB4BFA5, 0x202F2DDE}},
    {"IDevice", IDevice::InterfaceId, {0x24F097B7, 0x4DFD4301, 0xA1E71E1B, 0xA6328858}},
    {"IWavChunkDecoder", IWavChunkDecoder::InterfaceId, {0x3C718E0B, 0xF5A5403B, 0xBCE6CE73, 0x8A5092CC}},
    {"IWavDecoder", IWavDecoder::InterfaceId, {0xC4B0F257, 0xA5504AA6, 0x917BB449, 0x30680C16}},
    {"ICbVideoSource", ICbVideoSource::InterfaceId, {0x7D2ACBA0, 0x2A1B4C5E, 0x9B07DBB6, 0x7A03AE9C}},
    {"IPlasmaVideoGenerator",
     IPlasmaVideoGenerator::InterfaceId,
     {0xC97694A7, 0xC0546B18, 0x3442881F, 0x792662C1}},
    {"IRandomGenerator", IRandomGenerator::InterfaceId, {0x83A81FE3, 0x415C7433, 0xD766C583, 0x78CE7B6C}},
    {"ISetFormatIsf", ISetFormatIsf::InterfaceId, {0x198AC22C, 0x4F6A4652, 0x97D12DBC, 0x2B68391F}},
    {"IAudioPictures", IAudioPictures::InterfaceId, {0xD8015334, 0x8A057E02, 0xB589F2EE, 0xC730C937}},
    {"IResampler", IResampler::InterfaceId, {0x2B75D9E0, 0x46C18A3F, 0x9E04B7D2, 0x58F1C36A}},
    {"IAudioPcmSampleFormatConverter",
     IAudioPcmSampleFormatConverter::InterfaceId,
     {0xAC5A56E3, 0x8AF34504, 0xA83BB959, 0xAE09FCC9}},
    {"IAudioPcmChannelNumberConverter",
     IAudioPcmChannelNumberConverter::InterfaceId,
     {0x17887FAA, 0xA4B4425B, 0x93A9364C, 0x34D35B81}},
    {"IResource", IResource::InterfaceId, {0x2D087DA3, 0x67F84135, 0xB0560213, 0x09558126}},
    {"IResourceIs", IResourceIs::InterfaceId, {0xCAD2D74A, 0x49D68166, 0x1A1AF214, 0x8C09F304}},
    {"IResourceOs", IResourceOs::InterfaceId, {0x60835710, 0x8B48D505, 0x73546CD5, 0x0894B3EE}},
    {"IAppendingRos", IAppendingRos::InterfaceId, {0xBF13277B, 0xC978146C, 0x5655EB5C, 0x244CDD04}},
    {"IAudioClip", IAudioClip::InterfaceId, {0x478EAC60, 0x844E84AE, 0x1DA1DE3F, 0x1DA5759F}},
    {"IVideoClip", IVideoClip::InterfaceId, {0x7C5FD705, 0x3DD86D87, 0x870814AF, 0xE9EC320D}},
    {"IBitmap", IBitmap::InterfaceId, {0x43536106, 0xF5130314, 0xA3A60A45, 0x1B4DFE2C}},
    {"IMediaControl", IMediaControl::InterfaceId, {0x9EB958F3, 0xBD18CDC2, 0x07FF3DD4, 0xA5F78189}},
    {"IPropertyPage", IPropertyPage::InterfaceId, {0x82AAEB0C, 0xD16E6674, 0xBE9C503F, 0xAB88093D}},
    {"TDataFormat_AudioPcm",
     TDataFormat_AudioPcm::FormatId,
     {0x47A8ECCB, 0x40364B9F, 0xA014B125, 0x721626DF}},
    {"TDataFormat_ImageRgb",
     TDataFormat_ImageRgb::FormatId,
     {0xA50703CF, 0x72074A9B, 0x88FADF0C, 0xCCB1EEA5}},
    {"TDataFormat_VideoRgb",
     TDataFormat_VideoRgb::FormatId,
     {0x1EF1EB17, 0xD158429A, 0x862DA3D5, 0x897BF1D1}},
    {"OtherMediaFormat", OTHER_MEDIA_FORMAT_ID, {0x21089FFF, 0x06984E6C, 0x975010E2, 0x0E01371C}},
    {"CAppendingRos", classid::CAppendingRos, {0xA6EE19E9, 0xF32146E2, 0xAFA21EFF, 0xA0930554}},
    {"CAudioClip", classid::CAudioClip, {0xC3AE26D0, 0xD9184CA0, 0xADDBAFA6, 0xF6EBBFF7}},
    {"CAudioDevice", classid::CAudioDevice, {0x9DF8979E, 0x14424383, 0xA3164F6A, 0xD110B15C}},
    {"CAudioPcmChannelNumberConverter",
     classid::CAudioPcmChannelNumberConverter,
     {0xA95E1C18, 0xDE2A4C17, 0xBE5566E2, 0x1DED4C07}},
    {"CAudioPcmSampleFormatConverter",
     classid::CAudioPcmSampleFormatConverter,
     {0xC78D926E, 0x26B94789, 0x86D3132C, 0xEC7ED1FF}},
    {"CBitmap", classid::CBitmap, {0x6921B3C6, 0x45054D41, 0x90271F9C, 0x039F8768}},
    {"CCbVideoSource", classid::CCbVideoSource, {0xA85B8713, 0xF0CF421C, 0xB374BA80, 0x329D801D}},
    {"CDevice", classid::CDevice, {0x89473E57, 0xFE5D4DBA, 0xA79AB5E1, 0x098F2C75}},
    {"CFile", classid::CFile, {0x918E84D7, 0x03CA40C4, 0xA1A93E28, 0xB0827B88}},
    {"CFileInputStream", classid::CFileInputStream, {0x998C022A, 0xA4F74171, 0xB92B4A73, 0x71BD8306}},
    {"CFileOutputStream", classid::CFileOutputStream, {0x039A99B9, 0x85864E63, 0xA613F839, 0xF0D8B4AD}},
    {"CFolder", classid::CFolder, {0x60E82CA0, 0x89794B06, 0x90E37D7E, 0x529AB2EB}},
    {"CInputStream", classid::CInputStream, {0x0B43B630, 0xECE04EAE, 0x86EACA3C, 0xC4FEB484}},
    {"CInputStreamFilter", classid::CInputStreamFilter, {0x8F2C8042, 0x1CB24F9B, 0x9E975CA4, 0xC36D6AFA}},
    {"CMediaControl", classid::CMediaControl, {0x7F82DC9F, 0x9AF44946, 0x96F486E1, 0xB76D06AC}},
    {"CMediaSample", classid::CMediaSample, {0xDFAB86E9, 0x794A4EAE, 0x9FE1B079, 0x0B782B82}},
    {"CObject", classid::CObject, {0x90832171, 0xF23F4997, 0xBC71E87A, 0x6E3A3063}},
    {"CObjectEnumerator", classid::CObjectEnumerator, {0x4FA2C23A, 0xCE0A41A5, 0x9AE0AA31, 0x2855BE59}},
    {"CObjectList", classid::CObjectList, {0x60250972, 0x26DD46ED, 0x84B198C5, 0x0E29EEE3}},
    {"CObjectListener", classid::CObjectListener, {0x8E81F646, 0xB7F84058, 0x921DC7DD, 0xB602DD7D}},
    {"COutputStream", classid::COutputStream, {0x0FE0B4F4, 0x071C48C9, 0xA85231DC, 0x6B8A101A}},
    {"COutputStreamFilter", classid::COutputStreamFilter, {0x9AAE6F8D, 0xB1E64389, 0xB02314BC, 0x015038DC}},
    {"CPlasmaVideoGenerator",
     classid::CPlasmaVideoGenerator,
     {0x7C9D79C6, 0x9C43493B, 0xA216D830, 0x03F13ADF}},
    {"CPropertyPage", classid::CPropertyPage, {0xF8D1B152, 0x0DB64B2D, 0x8AFDCAF4, 0x027A31F5}},
    {"CPtrObject", classid::CPtrObject, {0x40EC1DA0, 0x5CD84282, 0x991AA699, 0x0DC62B23}},
    {"CPushObjectEnumerator",
     classid::CPushObjectEnumerator,
     {0x766D7166, 0xF2084704, 0x9CCF634A, 0xDDBF1B96}},
    {"CRandomGenerator", classid::CRandomGenerator, {0xA4116099, 0xFB8F43FD, 0xBF9EAA47, 0xF23C09F6}},
    {"CResource", classid::CResource, {0x325FFD4D, 0x37294B87, 0x8AEFAC12, 0xC9276B34}},
    {"CResourceIs", classid::CResourceIs, {0xB229402C, 0xFDC14470, 0x90860D53, 0x765A0AB2}},
    {"CResourceOs", classid::CResourceOs, {0xB030E31E, 0x1FD74762, 0x87A083E7, 0x2D03271B}},
    {"CSetFormatIsf", classid::CSetFormatIsf, {0x14A97652, 0xF7A748C9, 0x966907FC, 0xE273A999}},
    {"CStringObject", classid::CStringObject, {0xAEA98BB2, 0x6A014A57, 0xB1543E5D, 0x9FFAC41A}},
    {"CSwBufferMediaSample", classid::CSwBufferMediaSample, {0xA5D82DFB, 0x331F4063, 0x83FDCE8D, 0xFF73544F}},
    {"CVideoClip", classid::CVideoClip, {0x6E90B6D4, 0xBA60479E, 0x908CDF74, 0xEBA32064}},
    {"CVideoDevice", classid::CVideoDevice, {0xF81C0DB0, 0x960349F4, 0x8C229044, 0xA67DD19C}},
    {"CVideoWindow", classid::CVideoWindow, {0xDF555AEF, 0xC1714B6D, 0x855F4D5A, 0x280502C3}},
    {"CWavChunkDecoder", classid::CWavChunkDecoder, {0x9196075E, 0x9CA345E2, 0x824A41F7, 0x414D7EE9}},
    {"CWavDecoder", classid::CWavDecoder, {0x521C3225, 0x5C8F4D10, 0xBE3A0AB0, 0x62E4711B}},
};

class Identifiers : public testing::TestWithParam<TIdRow> {};

TEST_P(Identifiers, Words) {
    EXPECT_EQ(Narrow(GetParam().actual.ToString()), Narrow(GetParam().expected.ToString()));
}

INSTANTIATE_TEST_SUITE_P(Rows, Identifiers, testing::ValuesIn(kIds),
                         [](const auto& row) { return row.param.name; });

TEST(Identifiers, NoTwoAreEqualAndNoneIsNull) {
    std::map<CId, std::string> names;
    for (const TIdRow& row : kIds) {
        EXPECT_NE(row.actual, CId::Null()) << row.name;
        const auto [entry, isNew] = names.emplace(row.actual, row.name);
        EXPECT_TRUE(isNew) << row.name << " has the identifier of " << entry->second;
    }
}

// The chain of bases that queries walk.
template <class TInterface, class TBase>
constexpr bool kExtends =
    std::is_same_v<typename TInterface::TBase, TBase>&& std::is_base_of_v<TBase, TInterface>;
static_assert(std::is_void_v<IObject::TBase>);
static_assert(kExtends<IObjectListener, IObject> && kExtends<IObjectEnumerator, IObject> &&
              kExtends<IPushObjectEnumerator, IObjectEnumerator> && kExtends<IObjectList, IObject> &&
              kExtends<IPtrObject, IObject> && kExtends<IStringObject, IObject>);
static_assert(kExtends<IStream, IObject> && kExtends<IInputStream, IStream> &&
              kExtends<IOutputStream, IStream> && kExtends<IMediaSample, IObject> &&
              kExtends<ISwBufferMediaSample, IMediaSample> && kExtends<IInputStreamFilter, IInputStream> &&
              kExtends<IOutputStreamFilter, IOutputStream>);
static_assert(kExtends<IDevice, IObject>);
static_assert(kExtends<IVideoOutput, IDevice> && kExtends<IWindowedOutput, IVideoOutput>);
static_assert(kExtends<IVideoWindow, IObject>);
static_assert(kExtends<IFileInputStream, IInputStream> && kExtends<IFileOutputStream, IOutputStream> &&
              kExtends<IFile, IObject> && kExtends<IFolder, IObject> &&
              kExtends<IWavChunkDecoder, IInputStreamFilter> && kExtends<IWavDecoder, IInputStreamFilter> &&
              kExtends<ISetFormatIsf, IInputStreamFilter> &&
              kExtends<IAudioPcmSampleFormatConverter, IInputStreamFilter> &&
              kExtends<IResampler, IInputStreamFilter> && kExtends<IAudioPictures, IInputStreamFilter> &&
              kExtends<IAudioPcmChannelNumberConverter, IInputStreamFilter>);
static_assert(kExtends<ICbVideoSource, IInputStream> && kExtends<IPlasmaVideoGenerator, IInputStream> &&
              kExtends<IRandomGenerator, IInputStream>);
static_assert(kExtends<IResource, IObject> && kExtends<IResourceIs, IInputStream> &&
              kExtends<IResourceOs, IOutputStream> && kExtends<IAppendingRos, IResourceOs>);
static_assert(kExtends<IAudioClip, IResource> && kExtends<IVideoClip, IResource> &&
              kExtends<IBitmap, IResource> && kExtends<IMediaControl, IObject> &&
              kExtends<IPropertyPage, IObject>);

} // namespace
} // namespace vorlund::test
