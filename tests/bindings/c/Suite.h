/* What the suites in C share: checks that count their failures, and lists of cases. */
#pragma once

#include <vorlund_c.h>

#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

struct c_case {
    const char* name;
    void (*run)(void);
};

struct c_suite {
    const char* name;
    const struct c_case* cases;
    unsigned int count;
};

/* Every suite. */
extern const struct c_suite* const c_suites[];
extern const unsigned int c_suite_count;

/* Told of a failed check; each program has one of its own. Any thread. */
void c_fail(const char* file, int line, const char* what);

/* A file that is written and read by one case at a time: a name in the folder for temporary files. */
const char* c_temporary_file(void);

/* The recording that the suites read, and what is in it. */
#define C_RECORDING "examples/data/strings.wav"
#define C_RECORDING_FRAMES 101430

#ifdef __cplusplus
}
#endif

#define C_CHECK(condition)                                                                                   \
    do {                                                                                                     \
        if (!(condition)) c_fail(__FILE__, __LINE__, #condition);                                            \
    } while (0)

/* A call that must end with a code. */
#define C_CODE(expected, call)                                                                               \
    do {                                                                                                     \
        const int32_t c_code = (call);                                                                       \
        if (c_code != (expected)) {                                                                          \
            char c_text[256];                                                                                \
            vorlund_error c_error;                                                                           \
            c_error.size = sizeof(c_error);                                                                  \
            vorlund_last_error(&c_error);                                                                    \
            snprintf(c_text, sizeof(c_text), "%.100s: %d (%.80s)", #call, (int)c_code, c_error.reason);      \
            c_fail(__FILE__, __LINE__, c_text);                                                              \
        }                                                                                                    \
    } while (0)

#define C_OK(call) C_CODE(VORLUND_OK, call)

#define C_SUITE(suite, cases) const struct c_suite suite = {#suite, cases, sizeof(cases) / sizeof((cases)[0])}
