// What SDL 2.26 leaks itself: of each event of a PulseAudio server that it hears, what it asks the server
// then; and what libdbus keeps, which libpulse and SDL ask, and through which the sanitizer follows no
// caller.
#include <dlfcn.h>

extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() {
    return "leak:libpulse.so\nleak:libdbus-1.so\n";
}

namespace {

/// Functions are known by their names as long as their library is there, also when nobody uses it.
[[maybe_unused]] void* const library = dlopen("libpulse.so.0", RTLD_NOW | RTLD_NODELETE);

} // namespace
