// The plug-in that is refused by nobody and ends its process: in its init entry, in its close entry, while it
// is unloaded, or by a proper end of the program, by the macro that it is compiled with.
#include <vorlund/Plugin.h>

#include <cstdlib>

namespace {

[[maybe_unused]] void Crash() {
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
}

#ifdef VORLUND_TEST_CRASH_UNLOAD
struct TCrashAtUnload {
    ~TCrashAtUnload() { Crash(); }
} crashAtUnload;
#endif

} // namespace

bool VrlInitPlugin() {
#ifdef VORLUND_TEST_CRASH_INIT
    Crash();
#endif
#ifdef VORLUND_TEST_EXIT_INIT
    std::_Exit(0);
#endif
    return true;
}

void VrlClosePlugin() {
#ifdef VORLUND_TEST_CRASH_CLOSE
    Crash();
#endif
}
