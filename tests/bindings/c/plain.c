/* The same suites in a program of C alone, for compilers that build no GoogleTest. */
#include "Suite.h"

#include <stdlib.h>

static unsigned int failures;
static char temporary_file[512];

void c_fail(const char* file, int line, const char* what) {
    ++failures;
    printf("%s:%d: %s\n", file, line, what);
}

const char* c_temporary_file(void) {
    const char* folder = getenv("TMPDIR");
    snprintf(temporary_file, sizeof(temporary_file), "%s/vorlund_c_plain.tmp", folder ? folder : "/tmp");
    return temporary_file;
}

int main(void) {
    unsigned int cases = 0;
    unsigned int i;
    unsigned int j;
    for (i = 0; i < c_suite_count; ++i) {
        for (j = 0; j < c_suites[i]->count; ++j) {
            const unsigned int before = failures;
            c_suites[i]->cases[j].run();
            while (vorlund_close() == VORLUND_OK) {}
            if (failures != before) printf("FAILED %s.%s\n", c_suites[i]->name, c_suites[i]->cases[j].name);
            ++cases;
        }
    }
    remove(c_temporary_file());
    printf("%u cases, %u failed checks\n", cases, failures);
    return failures == 0 ? 0 : 1;
}
