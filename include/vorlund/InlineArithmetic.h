/// \file
/// The arithmetic that is compiled into applications, and how its results stay the same there. Options such
/// as `-march=native`, `-ffast-math` and `-freciprocal-math`, of a file or by an attribute of one function,
/// let a compiler fuse, rearrange, fold and replace operations. So the operands and the result of each
/// operation here go through an empty piece of assembler, which rounds them to their type and of which the
/// compiler knows nothing; a division is an instruction.
///
/// `VRL_INLINE` declares what is inline where `VRL_IS_EXACT` is 1: on x86 with SSE2, on 64-bit ARM.
/// Elsewhere, as on the x87 unit (on 32-bit x86, compile with `-msse2 -mfpmath=sse` to avoid it),
/// applications call the library. What it does is compiled where `VRL_IS_DEFINED` is 1.
///
/// The bounds of this: rounding direction and treatment of the smallest numbers are those of the thread.
/// Programs that GCC links with `-ffast-math` start with the smallest numbers (below 1.18e-38) taken as 0.
#pragma once

#include <vorlund/Platform.h>

#if defined(__FLT_EVAL_METHOD__) && __FLT_EVAL_METHOD__ == 0 && (defined(__SSE2__) || defined(__aarch64__))
#define VRL_IS_EXACT 1
#else
#define VRL_IS_EXACT 0
#endif

#if defined(VORLUND_DEFINES_VECTORS)
// The library's own file, for those that call.
#define VRL_INLINE VRL_API
#define VRL_IS_DEFINED 1
#elif VRL_IS_EXACT
#define VRL_INLINE [[gnu::always_inline]] inline
#define VRL_IS_DEFINED 1
#else
#define VRL_INLINE VRL_API
#define VRL_IS_DEFINED 0
#endif

// Not on 32-bit x86, where threads may start with a stack that is not aligned for pairs.
#if VRL_IS_EXACT && (defined(__x86_64__) || defined(__aarch64__))
#define VRL_HAS_PAIRS 1
#else
#define VRL_HAS_PAIRS 0
#endif

#if VRL_IS_DEFINED

/// Used by CVector alone: operations with the rounding of their type under any options.
namespace vorlund::exactmath {

/// Hides numbers from the compiler. All at once, because those hidden one by one may still be found equal.
template <class T> [[gnu::always_inline]] inline void Hide([[maybe_unused]] T& a) {
#if VRL_IS_EXACT && defined(__SSE2__)
    asm("" : "+x"(a));
#elif VRL_IS_EXACT
    asm("" : "+w"(a));
#endif
}
template <class T> [[gnu::always_inline]] inline void Hide([[maybe_unused]] T& a, [[maybe_unused]] T& b) {
#if VRL_IS_EXACT && defined(__SSE2__)
    asm("" : "+x"(a), "+x"(b));
#elif VRL_IS_EXACT
    asm("" : "+w"(a), "+w"(b));
#endif
}
template <class T>
[[gnu::always_inline]] inline void Hide([[maybe_unused]] T& a, [[maybe_unused]] T& b, [[maybe_unused]] T& c) {
#if VRL_IS_EXACT && defined(__SSE2__)
    asm("" : "+x"(a), "+x"(b), "+x"(c));
#elif VRL_IS_EXACT
    asm("" : "+w"(a), "+w"(b), "+w"(c));
#endif
}

template <class T> [[gnu::always_inline]] inline T Sum(T a, T b) {
    Hide(a, b);
    T result = a + b;
    Hide(result);
    return result;
}
template <class T> [[gnu::always_inline]] inline T Difference(T a, T b) {
    Hide(a, b);
    T result = a - b;
    Hide(result);
    return result;
}
template <class T> [[gnu::always_inline]] inline T Product(T a, T b) {
    Hide(a, b);
    T result = a * b;
    Hide(result);
    return result;
}
/// a * b + c of widened floats, whose product is exact: fused or not, the result is the same.
template <class T> [[gnu::always_inline]] inline T ExactProductPlus(T a, T b, T c) {
    Hide(a, b, c);
    T result = a * b + c;
    Hide(result);
    return result;
}
/// `x`, `y` and `z` divided by `divisor`, by instructions: options may turn the operator into a
/// multiplication with an estimate.
#if VRL_HAS_PAIRS
[[gnu::always_inline]] inline void Divide(float& x, float& y, float& z, float divisor) {
    using TFour [[gnu::vector_size(16)]] = float;
    TFour numbers{x, y, z, z};
    const TFour divisors{divisor, divisor, divisor, divisor};
#if defined(__AVX__)
    asm("vdivps {%1, %0, %0|%0, %0, %1}" : "+x"(numbers) : "x"(divisors));
#elif defined(__SSE2__)
    asm("divps {%1, %0|%0, %1}" : "+x"(numbers) : "x"(divisors));
#else
    asm("fdiv %0.4s, %0.4s, %1.4s" : "+w"(numbers) : "w"(divisors));
#endif
    x = numbers[0];
    y = numbers[1];
    z = numbers[2];
}
#else
[[gnu::always_inline]] inline void Divide(float& x, float& y, float& z, float divisor) {
    for (float* const number : {&x, &y, &z}) {
#if VRL_IS_EXACT
        asm("divss {%1, %0|%0, %1}" : "+x"(*number) : "x"(divisor));
#else
        *number /= divisor;
#endif
    }
}
#endif
[[gnu::always_inline]] inline double Widen(float a) {
    return static_cast<double>(a);
}
[[gnu::always_inline]] inline float Round(double a) {
    auto result = static_cast<float>(a);
    Hide(result);
    return result;
}

/// The elements of a matrix, of whose values the compiler then knows nothing.
[[gnu::always_inline]] inline const float* HideElements(const float (&elements)[16]) {
    const float* hidden = elements;
#if VRL_IS_EXACT
    asm("" : "+r"(hidden) : "m"(elements));
#endif
    return hidden;
}

#if VRL_HAS_PAIRS
/// Two doubles in one register.
using TPair [[gnu::vector_size(16)]] = double;
[[gnu::always_inline]] inline void Spread(double from, TPair& to) {
    to = TPair{from, from};
}
[[gnu::always_inline]] inline void Load(const float* from, TPair& to) {
    to = TPair{static_cast<double>(from[0]), static_cast<double>(from[1])};
}
#endif
[[gnu::always_inline]] inline void Spread(double from, double& to) {
    to = from;
}
[[gnu::always_inline]] inline void Load(const float* from, double& to) {
    to = static_cast<double>(from[0]);
}

/// The point times the column that begins at `e`, or, for pairs, that column and the next.
template <class T> [[gnu::always_inline]] inline T TimesColumn(const double (&point)[3], const float* e) {
    T factors[3];
    T rows[4];
    for (int i = 0; i < 3; ++i) Spread(point[i], factors[i]);
    for (int i = 0; i < 4; ++i) Load(e + 4 * i, rows[i]);
    T sum = Product(factors[0], rows[0]);
    sum = ExactProductPlus(factors[1], rows[1], sum);
    sum = ExactProductPlus(factors[2], rows[2], sum);
    return Sum(sum, rows[3]);
}

} // namespace vorlund::exactmath

#endif
