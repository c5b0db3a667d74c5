/// \file
/// What this build or system takes more, in time and in memory: sanitizers check every access and keep what
/// is freed, and Wine's processes and exceptions cost more. For an emulator see support/Emulated.h.
#pragma once

namespace vorlund::test {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr unsigned long long kTimeFactor = 20;
inline constexpr unsigned long long kMemoryFactor = 16;
#elif defined(__MINGW32__)
inline constexpr unsigned long long kTimeFactor = 5;
inline constexpr unsigned long long kMemoryFactor = 2;
#else
inline constexpr unsigned long long kTimeFactor = 1;
inline constexpr unsigned long long kMemoryFactor = 1;
#endif

} // namespace vorlund::test
