// The child program of the plug-in tests: a host whose plug-in folders nobody else has. Its arguments are a
// mode and a folder with plug-ins.
#include "support/ChildReports.h"

#include <vorlund/ClassIds.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectEnumerator.h>
#include <vorlund/ObjectList.h>
#include <vorlund/Path.h>
#include <vorlund/RefPtr.h>
#include <vorlund/Session.h>
#include <vorlund/StringObject.h>
#include <vorlund/Vorlund.h>

#include <cstdlib>
#include <string>
#include <string_view>

namespace vorlund::test {
namespace {

/// Tells whether `act` raises.
template <class TAct> void Try(const char* name, TAct act) {
    try {
        act();
        WriteLine(name, "done");
    } catch (const CException&) {
        WriteLine(name, "raised");
    }
}

void TellFirstNumber() {
    const int number = CreateAs<IObject>(classid::CObject)->GetObjectNumber();
    WriteLine("first number", number == 1 ? "1" : "another");
}

void TellLoadedPlugins() {
    const auto names = CRefPtr<IObjectEnumerator>::Adopt(v.GetPluginStore().EnumerateLoadedPlugins());
    while (names->HasNext()) {
        const auto name = CRefPtr<IObject>::Adopt(names->GetNext()).Query<IStringObject>();
        WriteLine("loaded", PathToUtf8(name->GetString().GetBuffer()).c_str());
    }
}

/// Closes what is open, in the order of v.Close(), as a host does after a failure.
void CloseOneByOne() {
    v.GetObjectCounter().Close();
    v.GetPluginStore().Close();
    v.GetDeviceClassStore().Close();
    v.GetCodecClassStore().Close();
    v.GetClassStore().Close();
}

int Run(std::string_view mode, const char* folder) {
    SendReportsToParent();
    if (folder) v.GetPluginStore().AddPluginPath(PathFromUtf8(folder).c_str());
    if (mode == "twice") {
        for (int life = 0; life < 2; ++life) {
            Try("init", [] { v.Init(); });
            Try("close", [] { v.Close(); });
        }
        v.Init();
        v.Close();
        return 0;
    }
    if (mode == "names" || mode == "scan") {
        if (mode == "scan") v.GetPluginStore().SetScanMode(PLUGIN_SCAN_CHILD);
        v.Init();
        v.GetPluginStore().Dump();
        v.Close();
        return 0;
    }
    if (mode == "installed") {
        for (int i = 0; i < 2; ++i) WriteLine("installed", AddInstalledPlugins() ? "found" : "none");
        v.Init();
        TellLoadedPlugins();
        v.Close();
        return 0;
    }
    if (mode == "raising") {
        Try("init", [] { v.Init(); });
        Try("close", [] { v.Close(); });
        // The stores are open, with the library's own classes.
        Try("find", [] { v.GetClassStore().GetClassInfo(classid::CObject); });
        TellFirstNumber();
        Try("recovery", &CloseOneByOne);
        Try("find", [] { v.GetClassStore().GetClassInfo(classid::CObject); });
        return 0;
    }
    if (mode == "session") {
        Try("session", [] { const CSession session(false); });
        v.GetPluginStore().ClearPluginPaths();
        Try("session", [] {
            const CSession session(false);
            TellFirstNumber();
        });
        return 0;
    }
    if (mode == "late") {
        Try("init", [] { v.Init(); });
        Try("close", [] { v.Close(); });
        Try("close", [] { v.Close(); });
        Try("recovery", &CloseOneByOne);
        return 0;
    }
    return 64;
}

} // namespace
} // namespace vorlund::test

int main(int argc, char** argv) {
    return argc == 2 || argc == 3 ? vorlund::test::Run(argv[1], argc == 3 ? argv[2] : nullptr) : 64;
}
