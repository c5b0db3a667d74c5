// A program that is linked with the library and does nothing, and the same without it.
#ifdef VORLUND_BENCH_LOADS
#include <vorlund/Version.h>
#endif

int main() {
#ifdef VORLUND_BENCH_LOADS
    // A use, or the linker leaves the library out.
    return vorlund::GetVersion().number < 0 ? 1 : 0;
#else
    return 0;
#endif
}
