// Opening and closing the library with plug-ins, against the loader alone.
#include "BenchSupport.h"

#include <vorlund/Path.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#ifdef VORLUND_BENCH_DLFCN
#include <dlfcn.h>
#endif

using namespace vorlund;
namespace fs = std::filesystem;

namespace {

const fs::path kPlugin = VORLUND_BENCH_PLUGIN;

/// A folder with copies of the plug-in that does nothing.
class CFolder {
public:
    explicit CFolder(int count) : path_(fs::temp_directory_path() / "vorlund-bench-plugins") {
        fs::remove_all(path_);
        fs::create_directories(path_);
        for (int i = 0; i < count; ++i) fs::copy_file(kPlugin, At(i));
    }
    CFolder(const CFolder&) = delete;
    CFolder& operator=(const CFolder&) = delete;
    ~CFolder() { fs::remove_all(path_); }

    fs::path At(int index) const {
        return path_ / ("plugin" + std::to_string(index) + kPlugin.extension().string());
    }
    wstring GetPath() const { return PathFromUtf8(path_.string().c_str()); }

private:
    fs::path path_;
};

void InitAndClose(benchmark::State& state) {
    const CFolder folder(static_cast<int>(state.range(0)));
    // `v` keeps its folders for good, so the object measured is another one; its plug-ins use `v`'s stores.
    const bench::CLibrary library;
    CVorlund own;
    own.GetPluginStore().AddPluginPath(folder.GetPath().c_str());
    for (auto _ : state) {
        own.Init();
        own.Close();
    }
}

BENCHMARK(InitAndClose)->Name("Init and Close, plug-ins/vorlund")->Arg(0)->Arg(1)->Arg(50);

#ifdef VORLUND_BENCH_PROGRAM

/// The whole program: its start, the looks at the files, their loading, the table, its end.
void ListPlugins(benchmark::State& state) {
    const CFolder folder(static_cast<int>(state.range(0)));
    const std::string output = (fs::temp_directory_path() / "vorlund-bench-plugins.txt").string();
    const std::string command = VORLUND_BENCH_PROGRAM " --no-plugins --plugin-path " +
                                PathToUtf8(folder.GetPath().c_str()) + " plugins >" + output;
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) state.SkipWithError("the program fails");
    }
    fs::remove(output);
}

BENCHMARK(ListPlugins)
    ->Name("the program lists plug-ins/vorlund")
    ->Arg(0)
    ->Arg(50)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

#endif

#ifdef VORLUND_BENCH_DLFCN

void LoaderAlone(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const CFolder folder(count);
    std::vector<void*> modules(static_cast<std::size_t>(count));
    for (auto _ : state) {
        for (int i = 0; i < count; ++i) modules[i] = dlopen(folder.At(i).c_str(), RTLD_NOW | RTLD_LOCAL);
        for (void* const module : modules) dlclose(module);
    }
}

BENCHMARK(LoaderAlone)->Name("Init and Close, plug-ins/dlopen and dlclose")->Arg(1)->Arg(50);

#endif

} // namespace

BENCHMARK_MAIN();
