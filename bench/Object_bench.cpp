// Creating objects through the class store, against GObject and plain new and delete.
#include "BenchSupport.h"

#include <vorlund/ClassIds.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/Vorlund.h>

#include <benchmark/benchmark.h>

#ifdef VORLUND_BENCH_GLIB
#include <glib-object.h>
#endif

#include <array>
#include <string>

using namespace vorlund;

namespace {

constexpr int kClasses = 64;

/// The plainest class, so that the cost is the store's.
class CPlain : public CObjectImpl<IObject> {
public:
    static constexpr CId ClassId{0xBE7C0000, 1, 2, 3};
};

CId IdOf(int index) {
    return {0xBE7C1000u + static_cast<unsigned int>(index) * 0x01010101u, 7, 7, 7};
}

/// A store with 64 classes of its own, beside the library's.
class CStore {
public:
    CStore() {
        store_.Init();
        for (int i = 0; i < kClasses; ++i) {
            const std::string name = "bench::Class" + std::to_string(i);
            names_[i].assign(name.begin(), name.end());
            store_.RegisterClassVrl({IdOf(i), names_[i].c_str(), &NewObject<CPlain>});
        }
    }
    ~CStore() { store_.Close(); }

    CClassStore& Get() { return store_; }
    const wchar* NameOf(int index) const { return names_[index].c_str(); }

private:
    bench::CLibrary library_;
    CClassStore store_;
    std::array<wstring, kClasses> names_;
};

void CreateById(benchmark::State& state, int index) {
    CStore store;
    const CId id = IdOf(index);
    for (auto _ : state) store.Get().CreateObject(id)->Release();
}

void CreateByName(benchmark::State& state, int index) {
    CStore store;
    const wchar* const name = store.NameOf(index);
    for (auto _ : state) store.Get().CreateObject(name)->Release();
}

void CreateQueryRelease(benchmark::State& state) {
    CStore store;
    const CId id = IdOf(kClasses / 2);
    for (auto _ : state) {
        IObject* const object = store.Get().CreateObject(id);
        IObject* const same = object->QueryInterface(IObject::InterfaceId);
        object->Release();
        same->Release();
    }
}

void NewDelete(benchmark::State& state) {
    struct TPlain {
        virtual ~TPlain() = default;
        int data[8] = {};
    };
    for (auto _ : state) {
        TPlain* object = new TPlain;
        benchmark::DoNotOptimize(object);
        delete object;
    }
}

BENCHMARK_CAPTURE(CreateById, First, 0)->Name("create by identifier/vorlund");
BENCHMARK_CAPTURE(CreateById, Last, kClasses - 1)->Name("create by identifier/vorlund, the last class");
BENCHMARK_CAPTURE(CreateByName, First, 0)->Name("create by name/vorlund");
BENCHMARK_CAPTURE(CreateByName, Last, kClasses - 1)->Name("create by name/vorlund, the last class");
BENCHMARK(CreateQueryRelease)->Name("create, query, release/vorlund");
BENCHMARK(NewDelete)->Name("create by identifier/limit new and delete");
BENCHMARK(NewDelete)->Name("create by name/limit new and delete");
BENCHMARK(NewDelete)->Name("create, query, release/limit new and delete");

#ifdef VORLUND_BENCH_GLIB

struct TGPlain {
    GObject parent;
};
struct TGPlainClass {
    GObjectClass parent;
};
G_DEFINE_TYPE(TGPlain, g_plain, G_TYPE_OBJECT)
void g_plain_class_init(TGPlainClass*) {}
void g_plain_init(TGPlain*) {}

void GObjectByType(benchmark::State& state) {
    const GType type = g_plain_get_type();
    for (auto _ : state) g_object_unref(g_object_new(type, nullptr));
}

void GObjectByName(benchmark::State& state) {
    g_plain_get_type();
    for (auto _ : state) g_object_unref(g_object_new(g_type_from_name("TGPlain"), nullptr));
}

void GObjectQuery(benchmark::State& state) {
    const GType type = g_plain_get_type();
    for (auto _ : state) {
        gpointer object = g_object_new(type, nullptr);
        benchmark::DoNotOptimize(G_TYPE_CHECK_INSTANCE_TYPE(object, type));
        g_object_ref(object);
        g_object_unref(object);
        g_object_unref(object);
    }
}

BENCHMARK(GObjectByType)->Name("create by identifier/GObject");
BENCHMARK(GObjectByName)->Name("create by name/GObject");
BENCHMARK(GObjectQuery)->Name("create, query, release/GObject");

#endif

} // namespace

BENCHMARK_MAIN();
