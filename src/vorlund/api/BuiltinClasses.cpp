// The one place that knows every concrete class.
#include "vorlund/api/BuiltinClasses.h"

#include "vorlund/data/base/InputStream.h"
#include "vorlund/data/base/InputStreamFilter.h"
#include "vorlund/data/base/MediaSample.h"
#include "vorlund/data/base/OutputStream.h"
#include "vorlund/data/base/OutputStreamFilter.h"
#include "vorlund/data/file/File.h"
#include "vorlund/data/file/FileInputStream.h"
#include "vorlund/data/file/FileOutputStream.h"
#include "vorlund/data/file/Folder.h"
#include "vorlund/data/filters/AudioPcmChannelNumberConverter.h"
#include "vorlund/data/filters/AudioPcmSampleFormatConverter.h"
#include "vorlund/data/filters/SetFormatIsf.h"
#include "vorlund/data/filters/WavChunkDecoder.h"
#include "vorlund/data/filters/WavDecoder.h"
#include "vorlund/data/resource/AppendingRos.h"
#include "vorlund/data/resource/Resource.h"
#include "vorlund/data/resource/ResourceIs.h"
#include "vorlund/data/resource/ResourceOs.h"
#include "vorlund/data/resource/SwBufferMediaSample.h"
#include "vorlund/data/sources/CbVideoSource.h"
#include "vorlund/data/sources/PlasmaVideoGenerator.h"
#include "vorlund/data/sources/RandomGenerator.h"
#include "vorlund/devices/AudioClip.h"
#include "vorlund/devices/Bitmap.h"
#include "vorlund/devices/Device.h"
#include "vorlund/devices/MediaControl.h"
#include "vorlund/devices/PropertyPage.h"
#include "vorlund/devices/VideoClip.h"
#include "vorlund/devices/VideoWindow.h"
#include "vorlund/util/Object.h"
#include "vorlund/util/ObjectEnumerator.h"
#include "vorlund/util/ObjectList.h"
#include "vorlund/util/ObjectListener.h"
#include "vorlund/util/PtrObject.h"
#include "vorlund/util/PushObjectEnumerator.h"
#include "vorlund/util/StringObject.h"

#include <vorlund/ClassStore.h>
#include <vorlund/CodecClassStore.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Vorlund.h>

namespace vorlund {
namespace {

/// A class under its own identifier, made by its own factory.
template <class TClass> constexpr TClassInfo Builtin(const wchar* name) {
    return {TClass::ClassId, name, &NewObject<TClass>};
}

/// The factory of an identifier without a class of its own: creates whatever device is registered for a type,
/// with the failures of `CreateDevice`.
template <TDeviceType type> IObject* NewDevice() {
    return v.GetDeviceClassStore().CreateDevice(type);
}

/// In the order of registration, which is alphabetical: a new class goes to its place in the alphabet.
constexpr TClassInfo kClasses[] = {
    Builtin<CAppendingRos>(VRL_L("vorlund::CAppendingRos")),
    Builtin<CAudioClip>(VRL_L("vorlund::CAudioClip")),
    {classid::CAudioDevice, VRL_L("vorlund::CAudioDevice"), &NewDevice<DEVICE_TYPE_AUDIO>},
    Builtin<CAudioPcmChannelNumberConverter>(VRL_L("vorlund::CAudioPcmChannelNumberConverter")),
    Builtin<CAudioPcmSampleFormatConverter>(VRL_L("vorlund::CAudioPcmSampleFormatConverter")),
    Builtin<CBitmap>(VRL_L("vorlund::CBitmap")),
    Builtin<CCbVideoSource>(VRL_L("vorlund::CCbVideoSource")),
    Builtin<CDevice>(VRL_L("vorlund::CDevice")),
    Builtin<CFile>(VRL_L("vorlund::CFile")),
    Builtin<CFileInputStream>(VRL_L("vorlund::CFileInputStream")),
    Builtin<CFileOutputStream>(VRL_L("vorlund::CFileOutputStream")),
    Builtin<CFolder>(VRL_L("vorlund::CFolder")),
    Builtin<CInputStream>(VRL_L("vorlund::CInputStream")),
    Builtin<CInputStreamFilter>(VRL_L("vorlund::CInputStreamFilter")),
    Builtin<CMediaControl>(VRL_L("vorlund::CMediaControl")),
    Builtin<CMediaSample>(VRL_L("vorlund::CMediaSample")),
    Builtin<CObject>(VRL_L("vorlund::CObject")),
    Builtin<CObjectEnumerator>(VRL_L("vorlund::CObjectEnumerator")),
    Builtin<CObjectList>(VRL_L("vorlund::CObjectList")),
    Builtin<CObjectListener>(VRL_L("vorlund::CObjectListener")),
    Builtin<COutputStream>(VRL_L("vorlund::COutputStream")),
    Builtin<COutputStreamFilter>(VRL_L("vorlund::COutputStreamFilter")),
    Builtin<CPlasmaVideoGenerator>(VRL_L("vorlund::CPlasmaVideoGenerator")),
    Builtin<CPropertyPage>(VRL_L("vorlund::CPropertyPage")),
    Builtin<CPtrObject>(VRL_L("vorlund::CPtrObject")),
    Builtin<CPushObjectEnumerator>(VRL_L("vorlund::CPushObjectEnumerator")),
    Builtin<CRandomGenerator>(VRL_L("vorlund::CRandomGenerator")),
    Builtin<CResource>(VRL_L("vorlund::CResource")),
    Builtin<CResourceIs>(VRL_L("vorlund::CResourceIs")),
    Builtin<CResourceOs>(VRL_L("vorlund::CResourceOs")),
    Builtin<CSetFormatIsf>(VRL_L("vorlund::CSetFormatIsf")),
    Builtin<CStringObject>(VRL_L("vorlund::CStringObject")),
    Builtin<CSwBufferMediaSample>(VRL_L("vorlund::CSwBufferMediaSample")),
    Builtin<CVideoClip>(VRL_L("vorlund::CVideoClip")),
    {classid::CVideoDevice, VRL_L("vorlund::CVideoDevice"), &NewDevice<DEVICE_TYPE_VIDEO>},
    Builtin<CVideoWindow>(VRL_L("vorlund::CVideoWindow")),
    Builtin<CWavChunkDecoder>(VRL_L("vorlund::CWavChunkDecoder")),
    Builtin<CWavDecoder>(VRL_L("vorlund::CWavDecoder")),
};

/// The WAV decoder accepts any input: it looks at the bytes.
constexpr TDecoderClassInfo kDecoders[] = {
    {CWavDecoder::ClassId, CId::Null(), TDataFormat_AudioPcm::FormatId},
};

} // namespace

void RegisterBuiltinClasses(CClassStore& store) {
    for (const TClassInfo& info : kClasses) store.RegisterClassVrl(info);
}

void RegisterBuiltinDecoders(CCodecClassStore& store) {
    for (const TDecoderClassInfo& info : kDecoders) store.RegisterDecoder(info);
}

} // namespace vorlund
