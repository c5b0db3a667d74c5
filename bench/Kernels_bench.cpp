// The kernel sets of matrices, texts and random bytes: every set that this processor supports, beside the
// functions of the library that choose one. Those of the PCM converters have programs of their own. Run them
// interleaved and compare medians:
//   bench_kernels --benchmark_repetitions=11 --benchmark_enable_random_interleaving=true
//                 --benchmark_min_time=0.01 --benchmark_report_aggregates_only=true
#include "vorlund/api/text/TextKernels.h"
#include "vorlund/data/sources/RandomBytes.h"
#include "vorlund/math/MatrixKernels.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

using namespace vorlund;

namespace {

/// Runs `call()`, which gives a result, once per iteration.
template <class TCall> void Register(const std::string& name, TCall call) {
    benchmark::RegisterBenchmark(name.c_str(), [call](benchmark::State& state) {
        for (auto _ : state) benchmark::DoNotOptimize(call());
    });
}

/// Calls `add` with the name and the routines of every supported set.
template <class TSet, class TAdd> void ForEachSet(TKernelSets<TSet> sets, TAdd add) {
    for (const TSet* set : sets)
        if (set->isSupported()) add(set->name, set->routines);
}

// ---- matrices

void RegisterMatrices() {
    static CMatrix left = CMatrix::Rotation(1, 2, 3), right = CMatrix::Translation(1, 2, 3);
    Register("matrix/multiply/vorlund", [] { return left * right; });
    Register("matrix/determinant/vorlund", [] { return left.Determinant(4); });
    Register("matrix/invert/vorlund", [] { return left.Inverse(); });
    ForEachSet(GetMatrixSets(), [](const std::string& name, const TMatrixRoutines& set) {
        Register("matrix/multiply/" + name, [&set] { return set.multiply(left, right); });
        Register("matrix/determinant/" + name, [&set] { return set.determinant(left); });
        Register("matrix/invert/" + name, [&set] { return set.invert(left); });
    });
}

// ---- texts

/// A text without what is looked for, a copy of it, room for another, and one to widen.
struct TTexts {
    explicit TTexts(std::size_t length) : left(length, 'a'), right(left), room(left), narrow(length, 'a') {
        for (std::size_t i = 1; i < length; i += 2) left[i] = right[i] = static_cast<wchar>('b' + i % 7);
    }
    wstring left;
    wstring right;
    wstring room;
    std::string narrow;
};

constexpr const wchar* kNeedle = VRL_L("abax");

void RegisterTexts(std::size_t length) {
    auto* const texts = new TTexts(length);
    const auto name = [&](const char* routine, const char* set) {
        return std::string("text/") + routine + "/" + std::to_string(length) + "/" + set;
    };
    const wchar* const left = texts->left.c_str();
    Register(name("length", "vorlund"), [=] { return TextLength(left); });
    Register(name("compare", "vorlund"), [=] { return CompareText(left, texts->right.c_str()); });
    Register(name("unit", "vorlund"), [=] { return FindFirstUnit(left, length, 'x'); });
    Register(name("last unit", "vorlund"), [=] { return FindLastUnit(left, length, 'x'); });
    Register(name("text", "vorlund"), [=] { return FindFirstText(left, length, kNeedle, 4); });
    Register(name("last text", "vorlund"), [=] { return FindLastText(left, length, kNeedle, 4); });
    Register(name("widen", "vorlund"), [=] {
        WidenText(texts->room.data(), texts->narrow.data(), length);
        return texts->room.front();
    });
    ForEachSet(GetTextSets(), [&](const char* set, const TTextRoutines& routines) {
        Register(name("length", set), [=, &routines] { return routines.length(left); });
        Register(name("compare", set),
                 [=, &routines] { return routines.compare(left, texts->right.c_str()); });
        Register(name("unit", set), [=, &routines] { return routines.findFirstUnit(left, length, 'x'); });
        Register(name("last unit", set), [=, &routines] { return routines.findLastUnit(left, length, 'x'); });
        Register(name("text", set),
                 [=, &routines] { return routines.findFirstText(left, length, kNeedle, 4); });
        Register(name("last text", set),
                 [=, &routines] { return routines.findLastText(left, length, kNeedle, 4); });
        Register(name("widen", set), [=, &routines] {
            routines.widen(texts->room.data(), texts->narrow.data(), length);
            return texts->room.front();
        });
    });
}

// ---- random bytes

void RegisterRandomBytes(std::size_t count) {
    auto* const bytes = new std::vector<std::uint8_t>(count);
    const std::string name = "random/" + std::to_string(count) + "/";
    Register(name + "vorlund", [=] { return WriteRandomBytes(1, bytes->data(), count); });
    ForEachSet(GetRandomSets(), [&](const char* set, const auto& routine) {
        Register(name + set, [=, &routine] { return routine(1, bytes->data(), count); });
    });
}

} // namespace

int main(int argc, char** argv) {
    RegisterMatrices();
    for (const std::size_t length : {8, 40, 1000}) RegisterTexts(length);
    for (const std::size_t count : {16, 4096}) RegisterRandomBytes(count);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
