// Libpulse is not built for the thread sanitizer, which therefore does not see the atomic numbers by which
// its connections hand each other freed memory.
extern "C" const char* __tsan_default_suppressions();

extern "C" const char* __tsan_default_suppressions() {
    return "race:libpulse.so\nrace:libpulsecommon-\n";
}
