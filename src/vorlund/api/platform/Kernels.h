/// \file
/// Inner loops in several forms. A kernel set is a table of routines made for one kind of processor; all sets
/// of a kind give the same results. The plain one is the reference: it is complete, runs everywhere, and
/// comes first in the list of sets; the fastest one comes last.
///
/// A set lives in a file that ends in its name (`_scalar`, `_sse2`, `_avx2`), and the list in the file
/// without an ending, which makes the choice: when the routine is looked up, when the library is loaded, or,
/// where the compiler's target alone decides, when the library is compiled. Tests and benchmarks go through
/// the list.
///
/// Files for AVX2 are compiled for that processor as a whole. They share no function with other files,
/// because the linker could take their copy for all of them: what is in a header is a declaration,
/// `VRL_INLINE`, or local to each file.
#pragma once

#include <span>

/// Inlined even where the compiler would not do it.
#define VRL_INLINE [[gnu::always_inline]] inline

/// The arguments in builds for x86, where SSE2 is always there, and nothing elsewhere: for the lists of sets.
#if defined(__SSE2__)
#define VRL_X86_SETS(...) __VA_ARGS__
#else
#define VRL_X86_SETS(...)
#endif

namespace vorlund {

template <class TRoutines> struct TKernelSet {
    const char* name;
    bool (*isSupported)();
    /// A routine is null where the set before this one is not beaten.
    TRoutines routines;
};

/// All sets of a kind in this build.
template <class TSet> using TKernelSets = std::span<const TSet* const>;

/// The last supported set.
template <class TSet> constexpr const TSet& FindFastestSet(TKernelSets<TSet> sets) {
    const TSet* fastest = sets.front();
    for (const TSet* set : sets)
        if (set->isSupported()) fastest = set;
    return *fastest;
}

/// The routine that `pick` takes from the last supported set that has one; null when no set has.
template <class TSet, class TPick> auto FindFastestRoutine(TKernelSets<TSet> sets, TPick pick) {
    auto fastest = pick(*sets.front());
    for (const TSet* set : sets) {
        const auto own = pick(*set);
        if (own && set->isSupported()) fastest = own;
    }
    return fastest;
}

#if defined(__SSE2__)
/// Whether the processor has AVX2 and fused multiply-add, and the system keeps their registers.
VRL_INLINE bool HasAvx2() {
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
}
#endif

} // namespace vorlund
