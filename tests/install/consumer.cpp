#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Stream.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/String.h>
#include <vorlund/Version.h>
#include <vorlund/Vorlund.h>

#include <cstdio>

using namespace vorlund;

namespace {

/// An identifier and a string: plain exported functions.
bool UsesValues() {
    const CId id("{90832171,F23F4997,BC71E87A,6E3A3063}");
    const CString text(VRL_L("consumer"));
    return CId(id.ToString().c_str()) == id && text.Length() == 8 &&
           vorlund::GetVersion().number == VORLUND_VERSION;
}

/// Exceptions of the library are caught by their types here, and by the type of their family.
bool CatchesExceptions() {
    try {
        CreateAs<IObject>(CId(1, 2, 3, 4));
        return false;
    } catch (const CClassNotFoundException&) {
    }
    try {
        CreateAs<IObject>(CId(1, 2, 3, 4));
        return false;
    } catch (const CException&) {
        return true;
    }
}

/// An object of the library, used through its interface, held by the inline helpers of the headers.
bool UsesObjects() {
    const auto list = CreateAs<IObjectList>(classid::CObjectList);
    return list && list.Query<IObject>() && !CRefPtr<IStream>();
}

/// Bytes of PCM in a file.
unsigned long long CountDecodedBytes(const char* path) {
    wstring wide;
    for (; *path; ++path) wide += static_cast<wchar>(*path);
    const CInputStreamSelector source(wide.c_str());
    const auto pcm = CRefPtr<IInputStream>::Adopt(source.DecodeStream(TDataFormat_AudioPcm::FormatId));
    unsigned long long bytes = 0;
    char block[4096];
    while (const auto count = pcm->Read(block, sizeof block)) bytes += count;
    return bytes;
}

} // namespace

/// Uses the installed library as an application does, and decodes the file named; the exit code tells which
/// expectation failed.
int main(int argc, char** argv) {
    if (argc != 2) return 1;
    if (!UsesValues()) return 2;
    v.Init();
    if (!CatchesExceptions()) return 3;
    if (!UsesObjects()) return 4;
    const unsigned long long bytes = CountDecodedBytes(argv[1]);
    v.Close();
    std::printf("consumer: %llu bytes of PCM\n", bytes);
    return bytes > 0 ? 0 : 5;
}
