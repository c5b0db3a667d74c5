// The one place that knows every concrete class.
#include "vorlund/api/BuiltinClasses.h"

#include "vorlund/data/InputStream.h"
#include "vorlund/data/InputStreamFilter.h"
#include "vorlund/data/MediaSample.h"
#include "vorlund/data/OutputStream.h"
#include "vorlund/data/OutputStreamFilter.h"
#include "vorlund/data/SwBufferMediaSample.h"
#include "vorlund/data/file/File.h"
#include "vorlund/data/file/FileInputStream.h"
#include "vorlund/data/file/FileOutputStream.h"
#include "vorlund/data/file/Folder.h"
#include "vorlund/data/filters/WavChunkDecoder.h"
#include "vorlund/data/filters/WavDecoder.h"
#include "vorlund/data/sources/CbVideoSource.h"
#include "vorlund/data/sources/PlasmaVideoGenerator.h"
#include "vorlund/data/sources/RandomGenerator.h"
#include "vorlund/devices/Device.h"
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

/// No class of its own: whatever device is registered for a type, with the failures of its creation.
template <TDeviceType type> IObject* NewDevice() {
    return v.GetDeviceClassStore().CreateDevice(type);
}

/// In the order of registration, which is alphabetical: a new class goes to its place in the alphabet.
constexpr TClassInfo kClasses[] = {
    {classid::CAudioDevice, VRL_L("vorlund::CAudioDevice"), &NewDevice<DEVICE_TYPE_AUDIO>},
    Builtin<CCbVideoSource>(VRL_L("vorlund::CCbVideoSource")),
    Builtin<CDevice>(VRL_L("vorlund::CDevice")),
    Builtin<CFile>(VRL_L("vorlund::CFile")),
    Builtin<CFileInputStream>(VRL_L("vorlund::CFileInputStream")),
    Builtin<CFileOutputStream>(VRL_L("vorlund::CFileOutputStream")),
    Builtin<CFolder>(VRL_L("vorlund::CFolder")),
    Builtin<CInputStream>(VRL_L("vorlund::CInputStream")),
    Builtin<CInputStreamFilter>(VRL_L("vorlund::CInputStreamFilter")),
    Builtin<CMediaSample>(VRL_L("vorlund::CMediaSample")),
    Builtin<CObject>(VRL_L("vorlund::CObject")),
    Builtin<CObjectEnumerator>(VRL_L("vorlund::CObjectEnumerator")),
    Builtin<CObjectList>(VRL_L("vorlund::CObjectList")),
    Builtin<CObjectListener>(VRL_L("vorlund::CObjectListener")),
    Builtin<COutputStream>(VRL_L("vorlund::COutputStream")),
    Builtin<COutputStreamFilter>(VRL_L("vorlund::COutputStreamFilter")),
    Builtin<CPlasmaVideoGenerator>(VRL_L("vorlund::CPlasmaVideoGenerator")),
    Builtin<CPtrObject>(VRL_L("vorlund::CPtrObject")),
    Builtin<CPushObjectEnumerator>(VRL_L("vorlund::CPushObjectEnumerator")),
    Builtin<CRandomGenerator>(VRL_L("vorlund::CRandomGenerator")),
    Builtin<CStringObject>(VRL_L("vorlund::CStringObject")),
    Builtin<CSwBufferMediaSample>(VRL_L("vorlund::CSwBufferMediaSample")),
    {classid::CVideoDevice, VRL_L("vorlund::CVideoDevice"), &NewDevice<DEVICE_TYPE_VIDEO>},
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
