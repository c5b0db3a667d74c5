#include <vorlund/Id.h>

#include <cstdio>

/// Uses the installed library as an application does; the exit code tells which expectation failed.
int main() {
    const vorlund::CId id("{90832171,F23F4997,BC71E87A,6E3A3063}");
    if (id != vorlund::CId(0x90832171, 0xF23F4997, 0xBC71E87A, 0x6E3A3063)) return 1;
    if (vorlund::CId(id.ToString().c_str()) != id) return 2;
    std::printf("consumer: the installed library answers\n");
    return 0;
}
