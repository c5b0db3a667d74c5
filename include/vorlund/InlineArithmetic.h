/// \file
/// Which arithmetic is inline. An application may be compiled with options that change results; where they
/// would, it calls the library, and everywhere else the compiler sees the arithmetic.
///
/// `VRL_DOUBLES` declares a function that computes in double precision from floats: products are exact then,
/// so that a compiler that fuses multiplications with additions changes nothing. Registers with more digits
/// (the x87 unit: on 32-bit x86, compile with `-msse2 -mfpmath=sse` to avoid it) and rearranged sums
/// (`-ffast-math`) would. `VRL_FLOATS` declares one that computes in single precision, where fusing would,
/// too.
///
/// What a function does is compiled where `VRL_DOUBLES_ARE_HERE` or `VRL_FLOATS_ARE_HERE` is 1.
#pragma once

#include <vorlund/Platform.h>

#if defined(__FLT_EVAL_METHOD__) && __FLT_EVAL_METHOD__ == 0 && !defined(__FAST_MATH__) &&                   \
    !defined(__ASSOCIATIVE_MATH__)
#define VRL_KEEPS_DOUBLES 1
#else
#define VRL_KEEPS_DOUBLES 0
#endif

#if defined(VORLUND_DEFINES_VECTORS)
// The library's own file, for those that call.
#define VRL_DOUBLES VRL_API
#define VRL_DOUBLES_ARE_HERE 1
#elif VRL_KEEPS_DOUBLES
#define VRL_DOUBLES [[gnu::always_inline]] inline
#define VRL_DOUBLES_ARE_HERE 1
#else
#define VRL_DOUBLES VRL_API
#define VRL_DOUBLES_ARE_HERE 0
#endif

#if VRL_KEEPS_DOUBLES && !defined(__FMA__) && !defined(__FP_FAST_FMAF)
#define VRL_FLOATS VRL_DOUBLES
#define VRL_FLOATS_ARE_HERE 1
#elif defined(VORLUND_DEFINES_VECTORS)
#define VRL_FLOATS VRL_API
#define VRL_FLOATS_ARE_HERE 1
#else
#define VRL_FLOATS VRL_API
#define VRL_FLOATS_ARE_HERE 0
#endif
