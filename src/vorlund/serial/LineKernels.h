/// \file
/// The loops over the units of a long line. The fastest set is chosen when the library is loaded: a call
/// through a pointer, which is nothing beside a long line. Short ones take the text kernels directly.
#pragma once

#include "vorlund/api/text/TextKernels.h"

#include <cstddef>
#include <cstdint>

namespace vorlund {

/// From so many units on; no routine is called for fewer.
constexpr std::size_t kLongLine = 256;

/// As the functions of the same names of TextKernels.h.
struct TLineRoutines {
    /// The first place among `length` units, or `kTextNotFound`.
    std::size_t (*findFirstUnit)(const wchar* text, std::size_t length, wchar unit);
    bool (*copyTextAndLook)(wchar* destination, const wchar* source, std::size_t length, wchar unit);
    /// `unit` is below 256.
    bool (*widenBytesAndLook)(wchar* destination, const std::uint8_t* source, std::size_t length, wchar unit);
};

using TLineSet = TKernelSet<TLineRoutines>;

TKernelSets<TLineSet> GetLineSets();

/// Only in builds for x86.
extern const TLineSet kAvx2Lines;

/// The set in use.
extern const TLineSet* lineKernels;

} // namespace vorlund
