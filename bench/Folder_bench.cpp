// The entries of a folder and their paths. Peer: std::filesystem, which keeps paths of its own.
#include "BenchSupport.h"

#include <vorlund/ClassIds.h>
#include <vorlund/File.h>
#include <vorlund/ObjectList.h>
#include <vorlund/Path.h>
#include <vorlund/RefPtr.h>

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <dirent.h>

using namespace vorlund;
namespace fs = std::filesystem;

namespace {

class CFiles {
public:
    explicit CFiles(std::int64_t count) : path_(fs::temp_directory_path() / "vorlund-bench-folder") {
        fs::create_directories(path_);
        for (std::int64_t i = 0; i < count; ++i)
            std::ofstream(path_ / ("file " + std::to_string(i) + ".wav"));
    }
    CFiles(const CFiles&) = delete;
    CFiles& operator=(const CFiles&) = delete;
    ~CFiles() { fs::remove_all(path_); }

    const fs::path& GetPath() const { return path_; }

private:
    fs::path path_;
};

void NoteEntries(benchmark::State& state, std::size_t seen) {
    if (seen != static_cast<std::size_t>(state.iterations() * state.range(0)))
        state.SkipWithError("entries are missing");
    state.SetItemsProcessed(static_cast<std::int64_t>(seen));
}

void ListFiles(benchmark::State& state) {
    const CFiles files(state.range(0));
    const bench::CLibrary library;
    const auto folder = CreateAs<IFolder>(classid::CFolder);
    folder->Initialize(PathFromUtf8(files.GetPath().string().c_str()).c_str());
    std::size_t seen = 0;
    for (auto _ : state) {
        const auto list = CRefPtr<IObjectList>::Adopt(folder->EnumerateFiles());
        const auto entries = CRefPtr<IObjectEnumerator>::Adopt(list->EnumerateObjects());
        while (entries->HasNext()) {
            const auto file = CRefPtr<IObject>::Adopt(entries->GetNext()).Query<IFile>();
            benchmark::DoNotOptimize(file->GetPath());
            ++seen;
        }
    }
    NoteEntries(state, seen);
}

void ListFilesystem(benchmark::State& state) {
    const CFiles files(state.range(0));
    std::size_t seen = 0;
    for (auto _ : state) {
        std::vector<fs::directory_entry> entries;
        for (const fs::directory_entry& entry : fs::directory_iterator(files.GetPath()))
            if (entry.is_regular_file()) entries.push_back(entry);
        for (const fs::directory_entry& entry : entries) {
            benchmark::DoNotOptimize(entry.path().string());
            ++seen;
        }
    }
    NoteEntries(state, seen);
}

/// The names alone, as the system gives them.
void ListSystem(benchmark::State& state) {
    const CFiles files(state.range(0));
    const std::string path = files.GetPath().string();
    std::size_t seen = 0;
    for (auto _ : state) {
        DIR* const folder = opendir(path.c_str());
        while (const dirent* const entry = readdir(folder))
            if (entry->d_name[0] != '.') ++seen;
        closedir(folder);
    }
    NoteEntries(state, seen);
}

BENCHMARK(ListFiles)
    ->Name("entries and their paths/vorlund")
    ->Arg(10)
    ->Arg(1000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(ListFilesystem)
    ->Name("entries and their paths/std::filesystem")
    ->Arg(10)
    ->Arg(1000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(ListSystem)
    ->Name("entries and their paths/limit system calls")
    ->Arg(10)
    ->Arg(1000)
    ->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
