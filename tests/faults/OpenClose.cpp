// The library opened and closed, with and without plug-ins.
#include "faults/Scenario.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/ObjectEnumerator.h>
#include <vorlund/PtrObject.h>
#include <vorlund/RefPtr.h>
#include <vorlund/StreamSelector.h>
#include <vorlund/Vorlund.h>

namespace vorlund::faults {
namespace {

void UsePlugins(CPluginStore& store, CResult& result) {
    const auto available = CRefPtr<IObjectEnumerator>::Adopt(store.EnumerateAvailablePlugins());
    int count = 0;
    for (; available->HasNext(); ++count) CRefPtr<IObject>::Adopt(available->GetNext());
    store.LoadAvailablePlugins();
    const auto loaded = CRefPtr<IObjectEnumerator>::Adopt(store.EnumerateLoadedPlugins());
    result.Add("%d available, loaded: %d %d, ", count, loaded->HasNext(),
               store.IsPluginLoaded(VRL_L("vorlund_sample")));
    const CInputStreamSelector source(files.sample.c_str());
    const auto decoded = CRefPtr<IInputStream>::Adopt(source.DecodeStream(TDataFormat_AudioPcm::FormatId));
    unsigned char bytes[2000];
    result.AddBytes(bytes, static_cast<std::size_t>(decoded->Read(bytes, sizeof bytes)));
}

} // namespace

void RunOpenAndClose(CResult& result) {
    for (int i = 0; i < 2; ++i) {
        v.Init();
        result.Add("%d ", CreateAs<IObject>(classid::CObject)->GetObjectNumber());
        v.Close();
    }
}

namespace {

void RunStore(CResult& result, TPluginScanMode mode) {
    // Its own store: what is added to the folders of the library's store stays there.
    CPluginStore store;
    store.SetScanMode(mode);
    store.Init();
    store.AddPluginPath(files.plugins.c_str());
    try {
        UsePlugins(store, result);
    } catch (...) {
        store.Close();
        throw;
    }
    store.Close();
}

} // namespace

void RunPlugins(CResult& result) {
    RunStore(result, PLUGIN_SCAN_NONE);
}

void RunPluginsScanned(CResult& result) {
    RunStore(result, PLUGIN_SCAN_CHILD);
}

} // namespace vorlund::faults
