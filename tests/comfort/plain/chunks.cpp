// The chunks of a WAV file, as examples/06-chunks lists them, without the headers of comfort.
#include <cstdio>
#include <cstdlib>
#include <vorlund/ClassIds.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectEnumerator.h>
#include <vorlund/ObjectList.h>
#include <vorlund/Path.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/StringObject.h>
#include <vorlund/Vorlund.h>
#include <vorlund/WavDecoder.h>
using namespace vorlund;

void PrintChunks(const wchar* path) {
    const CInputStreamSelector file(path);
    IObject* const created = v.GetClassStore().CreateObject(classid::CWavChunkDecoder);
    auto* const chunks =
        static_cast<IWavChunkDecoder*>(created->QueryInterface(IWavChunkDecoder::InterfaceId));
    created->Release();
    IObjectList* list = nullptr;
    IObjectEnumerator* enumerator = nullptr;
    try {
        chunks->Connect(file.GetInputStreamTmp());
        list = chunks->EnumerateChunks();
        enumerator = list->EnumerateObjects();
        while (IObject* const member = enumerator->GetNext()) {
            auto* const text =
                static_cast<IStringObject*>(member->QueryInterface(IStringObject::InterfaceId));
            const CString id = text->GetString();
            text->Release();
            member->Release();
            chunks->SelectChunk(id);
            char name[16];
            id.ToChar(name, sizeof name);
            std::printf("%-4s at %6lld, %6llu bytes\n", name,
                        static_cast<long long>(chunks->GetChunkOffset()),
                        static_cast<unsigned long long>(chunks->GetChunkSize()));
        }
    } catch (...) {
        if (enumerator) enumerator->Release();
        if (list) list->Release();
        chunks->Release();
        throw;
    }
    enumerator->Release();
    list->Release();
    chunks->Release();
}

int main(int argc, char** argv) {
    try {
        v.Init();
        PrintChunks(PathFromUtf8(argc > 1 ? argv[1] : "strings.wav").c_str());
        v.Close();
        return 0;
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        v.Close();
        return 1;
    }
}
