// CMatrix and CVector against glm and Eigen, in single precision and in double, plain and with SIMD. Names
// are operation/who; each iteration works through 64 matrices and counts them as items, "chain" feeds each
// result into the next.
#include "BenchSupport.h"
#ifdef VORLUND_BENCH_PLAIN_LOOPS
#include "vorlund/math/MatrixKernels.h"
#endif

#include <vorlund/Matrix.h>

#include <benchmark/benchmark.h>

#ifdef VORLUND_BENCH_GLM
#define GLM_ENABLE_EXPERIMENTAL
#include <glm/glm.hpp>
#include <glm/gtx/euler_angles.hpp>
#endif
#ifdef VORLUND_BENCH_EIGEN
#include <Eigen/Dense>
#endif

#include <array>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kCount = 64;
using TElements = std::array<float, 16>;

/// Matrices that are far from singular.
std::vector<TElements> Inputs(unsigned int seed) {
    std::mt19937 random(seed);
    std::vector<TElements> inputs(kCount);
    for (TElements& m : inputs) {
        for (float& element : m) element = static_cast<float>(random() % 20001) / 10000 - 1;
        for (std::size_t i = 0; i < 16; i += 5) m[i] += 3;
    }
    return inputs;
}

struct TVorlund {
    using TMatrix = vorlund::CMatrix;
    using TVector = vorlund::CVector;
    using TNumber = float;

    static TMatrix Matrix(const TElements& e) {
        TMatrix m;
        for (int i = 0; i < 16; ++i) m[i] = e[static_cast<std::size_t>(i)];
        return m;
    }
    static TVector Vector(const TElements& e) { return {e[0], e[1], e[2]}; }
    static TMatrix Product(const TMatrix& a, const TMatrix& b) { return a * b; }
    static TVector Transform(const TVector& p, const TMatrix& m) { return p * m; }
    static TMatrix Inverse(const TMatrix& m) { return m.Inverse(); }
    static TNumber Determinant(const TMatrix& m) { return m.Determinant(4); }
    static TMatrix Rotation(TNumber x, TNumber y, TNumber z) { return TMatrix::Rotation(x, y, z); }
};

#ifdef VORLUND_BENCH_PLAIN_LOOPS
/// Our rules as plain loops.
struct TPlainLoops : TVorlund {
    static TMatrix Product(const TMatrix& a, const TMatrix& b) { return routines.multiply(a, b); }
    static TMatrix Inverse(const TMatrix& m) { return routines.invert(m); }
    static TNumber Determinant(const TMatrix& m) { return routines.determinant(m); }

private:
    static constexpr const vorlund::TMatrixRoutines& routines = vorlund::kScalarMatrices.routines;
};
#endif

#ifdef VORLUND_BENCH_GLM
template <class T> struct TGlm {
    using TMatrix = glm::mat<4, 4, T>;
    using TVector = glm::vec<3, T>;
    using TNumber = T;

    // Row by row, which is the transpose for glm: all the products below are the mirrored ones.
    static TMatrix Matrix(const TElements& e) {
        TMatrix m;
        for (int i = 0; i < 16; ++i) m[i / 4][i % 4] = e[static_cast<std::size_t>(i)];
        return m;
    }
    static TVector Vector(const TElements& e) { return {e[0], e[1], e[2]}; }
    static TMatrix Product(const TMatrix& a, const TMatrix& b) { return b * a; }
    static TVector Transform(const TVector& p, const TMatrix& m) {
        return TVector(m * glm::vec<4, T>(p, T(1)));
    }
    static TMatrix Inverse(const TMatrix& m) { return glm::inverse(m); }
    static TNumber Determinant(const TMatrix& m) { return glm::determinant(m); }
    static TMatrix Rotation(TNumber x, TNumber y, TNumber z) { return glm::eulerAngleXYZ(x, y, z); }
};
#endif

#ifdef VORLUND_BENCH_EIGEN
template <class T> struct TEigen {
    using TMatrix = Eigen::Matrix<T, 4, 4, Eigen::RowMajor>;
    using TVector = Eigen::Matrix<T, 1, 3>;
    using TNumber = T;

    static TMatrix Matrix(const TElements& e) {
        TMatrix m;
        for (int i = 0; i < 16; ++i) m(i / 4, i % 4) = e[static_cast<std::size_t>(i)];
        return m;
    }
    static TVector Vector(const TElements& e) { return {e[0], e[1], e[2]}; }
    static TMatrix Product(const TMatrix& a, const TMatrix& b) { return a * b; }
    static TVector Transform(const TVector& p, const TMatrix& m) {
        return p * m.template topLeftCorner<3, 3>() + m.template block<1, 3>(3, 0);
    }
    static TMatrix Inverse(const TMatrix& m) { return m.inverse(); }
    static TNumber Determinant(const TMatrix& m) { return m.determinant(); }
    static TMatrix Rotation(TNumber x, TNumber y, TNumber z) {
        using TAngle = Eigen::AngleAxis<T>;
        using TUnit = Eigen::Matrix<T, 3, 1>;
        TMatrix m = TMatrix::Identity();
        m.template topLeftCorner<3, 3>() =
            (TAngle(x, TUnit::UnitX()) * TAngle(y, TUnit::UnitY()) * TAngle(z, TUnit::UnitZ()))
                .toRotationMatrix();
        return m;
    }
};
#endif

template <class T> struct TData {
    TData() {
        for (const TElements& e : Inputs(1)) {
            a.push_back(T::Matrix(e));
            points.push_back(T::Vector(e));
        }
        for (const TElements& e : Inputs(2)) b.push_back(T::Matrix(e));
    }
    std::vector<typename T::TMatrix> a, b;
    std::vector<typename T::TVector> points;
};

/// Stores what `operate(data, i)` gives, for each place of the data.
template <class T, class TOperate> void Run(benchmark::State& state, const TOperate& operate) {
    const TData<T> data;
    std::vector<decltype(operate(data, std::size_t{}))> results(kCount);
    for (auto _ : state) {
        for (std::size_t i = 0; i < kCount; ++i) results[i] = operate(data, i);
        benchmark::DoNotOptimize(results.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kCount));
}

template <class T> void Chain(benchmark::State& state) {
    const TData<T> data;
    const auto turn =
        T::Rotation(typename T::TNumber(0.1f), typename T::TNumber(0.2f), typename T::TNumber(0.3f));
    for (auto _ : state) {
        auto m = turn;
        for (std::size_t i = 0; i < kCount; ++i) m = T::Product(m, turn);
        benchmark::DoNotOptimize(m);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kCount));
}

template <class T, class TOperate>
void RegisterRow(const char* operation, const std::string& who, TOperate operate) {
    benchmark::RegisterBenchmark((operation + who).c_str(),
                                 [operate](benchmark::State& state) { Run<T>(state, operate); });
}

/// What works with matrices alone.
template <class T> void RegisterMatrices(const std::string& who) {
    using D = TData<T>;
    const auto add = [&](const char* operation, auto operate) { RegisterRow<T>(operation, who, operate); };
    add("product/", [](const D& d, std::size_t i) { return T::Product(d.a[i], d.b[i]); });
    benchmark::RegisterBenchmark(("chain/" + who).c_str(), Chain<T>);
    // Many matrices by one.
    add("products/", [](const D& d, std::size_t i) { return T::Product(d.a[i], d.b[0]); });
    add("inverse/", [](const D& d, std::size_t i) { return T::Inverse(d.a[i]); });
    add("determinant/", [](const D& d, std::size_t i) { return T::Determinant(d.a[i]); });
}

template <class T> void RegisterFor(const std::string& who) {
    using D = TData<T>;
    const auto add = [&](const char* operation, auto operate) { RegisterRow<T>(operation, who, operate); };
    RegisterMatrices<T>(who);
    add("transform/", [](const D& d, std::size_t i) { return T::Transform(d.points[i], d.b[i]); });
    // Many points by one matrix.
    add("points/", [](const D& d, std::size_t i) { return T::Transform(d.points[i], d.b[0]); });
    add("rotation/", [](const D& d, std::size_t i) {
        return T::Rotation(d.points[i][0], d.points[i][1], d.points[i][2]);
    });
}

/// The rows "points" and "products" by one call for all.
template <class TOperate> void RegisterArray(const char* name, TOperate operate) {
    benchmark::RegisterBenchmark(name, [operate](benchmark::State& state) {
        const TData<TVorlund> data;
        for (auto _ : state) {
            operate(data);
            benchmark::ClobberMemory();
        }
        state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kCount));
    });
}

[[maybe_unused]] void RegisterArrays() {
    using D = TData<TVorlund>;
    RegisterArray("points/vorlund Transform", [](const D& d) {
        static std::array<TVorlund::TVector, kCount> results;
        d.b[0].Transform(d.points.data(), results.data(), kCount);
        benchmark::DoNotOptimize(results.data());
    });
    RegisterArray("products/vorlund Multiply", [](const D& d) {
        static std::array<TVorlund::TMatrix, kCount> results;
        d.b[0].Multiply(d.a.data(), results.data(), kCount);
        benchmark::DoNotOptimize(results.data());
    });
}

/// The peers as they were compiled here.
void RegisterPeers(const std::string& how) {
#ifdef VORLUND_BENCH_GLM
    RegisterFor<TGlm<float>>("glm float" + how);
    RegisterFor<TGlm<double>>("glm double" + how);
#endif
#ifdef VORLUND_BENCH_EIGEN
    RegisterFor<TEigen<float>>("Eigen float" + how);
    RegisterFor<TEigen<double>>("Eigen double" + how);
#endif
    static_cast<void>(how);
}

} // namespace

// This file is compiled twice: for plain code of the peers, with ours and `main`, and into a library whose
// symbols are its own, for the peers with all that this processor has.
extern "C" void RegisterSimdPeers();

#ifdef VORLUND_BENCH_IS_SIMD
__attribute__((visibility("default"))) void RegisterSimdPeers() {
    RegisterPeers(" SIMD");
}
#else
int main(int argc, char** argv) {
    RegisterFor<TVorlund>("vorlund");
    RegisterArrays();
#ifdef VORLUND_BENCH_PLAIN_LOOPS
    RegisterMatrices<TPlainLoops>("plain loop");
#endif
    RegisterPeers("");
#ifdef VORLUND_BENCH_HAS_SIMD
    RegisterSimdPeers();
#endif
    return vorlund::bench::RunRows(argc, argv);
}
#endif
