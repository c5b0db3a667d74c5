// Folders, lists and stores.
#include "faults/Scenario.h"

#include <vorlund/ClassIds.h>
#include <vorlund/File.h>
#include <vorlund/Matrix.h>
#include <vorlund/ObjectList.h>
#include <vorlund/PtrObject.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StringObject.h>
#include <vorlund/Vorlund.h>

namespace vorlund::faults {
namespace {

int CountAll(CRefPtr<IObjectEnumerator> enumerator) {
    int count = 0;
    for (; enumerator->HasNext(); ++count) CRefPtr<IObject>::Adopt(enumerator->GetNext());
    return count;
}

} // namespace

void RunEnumerate(CResult& result) {
    const auto folder = CreateAs<IFolder>(classid::CFolder);
    folder->Initialize(files.folderPath.c_str());
    const auto found = CRefPtr<IObjectList>::Adopt(folder->EnumerateFiles());
    unsigned int bytes = 0;
    for (unsigned int i = 0; i < found->GetObjectCount(); ++i) {
        const auto file = CRefPtr<IObject>::Adopt(found->GetObject(i)).Query<IFile>();
        bytes += file->GetName().Length() + file->GetTitle().Length() + file->GetExtension().Length();
        const auto parent = CRefPtr<IFolder>::Adopt(file->GetFolder());
        const auto stream = CRefPtr<IFileInputStream>::Adopt(file->OpenInputStream());
        bytes += static_cast<unsigned int>(stream->GetLength());
    }
    const auto folders = CRefPtr<IObjectList>::Adopt(folder->EnumerateFolders());
    result.Add("%u files, %u, %u folders", found->GetObjectCount(), bytes, folders->GetObjectCount());
}

void RunObjects(CResult& result) {
    const auto list = CreateAs<IObjectList>(classid::CObjectList);
    for (int i = 0; i < 40; ++i) {
        const auto object = CreateAs<IPtrObject>(classid::CPtrObject);
        list->AddObject(object.Get());
    }
    list->RemoveObject(3u);
    result.Add("%d in order, ", CountAll(CRefPtr<IObjectEnumerator>::Adopt(list->EnumerateObjects())));
    result.Add("%d with pointers, ",
               CountAll(CRefPtr<IObjectEnumerator>::Adopt(list->EnumerateObjects(IPtrObject::InterfaceId))));
    const auto pushed = CreateAs<IPushObjectEnumerator>(classid::CPushObjectEnumerator);
    pushed->Reserve(4);
    for (int i = 0; i < 9; ++i) pushed->Push(CRefPtr<IObject>::Adopt(list->GetObject(0)).Get());
    list->RemoveAllObjects();

    result.Add("%d classes, ",
               CountAll(CRefPtr<IObjectEnumerator>::Adopt(v.GetClassStore().EnumerateClasses())));
    const CCodecClassStore& codecs = v.GetCodecClassStore();
    result.Add("%d decoders, ", CountAll(CRefPtr<IObjectEnumerator>::Adopt(codecs.EnumerateDecoders())));
    CDeviceClassStore& devices = v.GetDeviceClassStore();
    devices.RegisterDevice({classid::CDevice, DEVICE_TYPE_AUDIO});
    const auto registered = CRefPtr<IObjectList>::Adopt(devices.EnumerateDevices());
    result.Add("%u devices, ", registered->GetObjectCount());
    result.Add(
        "%g", static_cast<double>((CMatrix::Scale(2, 2, 2) * CMatrix::Translation(0, 1, 10)).Determinant(4)));
}

} // namespace vorlund::faults
