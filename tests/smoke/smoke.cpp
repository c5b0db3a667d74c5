#include <vorlund/Id.h>

#include <cstdio>

int main() {
    const vorlund::CId id("{90832171,F23F4997,BC71E87A,6E3A3063}");
    if (id != vorlund::CId(0x90832171, 0xF23F4997, 0xBC71E87A, 0x6E3A3063)) return 1;
    if (vorlund::CId(id.ToString().c_str()) != id) return 2;
    std::printf("smoke: %zu-bit library answers\n", sizeof(void*) * 8);
    return 0;
}
