#include "Suite.h"

extern const struct c_suite CErrors;
extern const struct c_suite CStreams;
extern const struct c_suite CCallbacks;
extern const struct c_suite CWriting;
extern const struct c_suite CDevices;
extern const struct c_suite CLayouts;
extern const struct c_suite CLibrary;

const struct c_suite* const c_suites[] = {&CErrors, &CStreams, &CCallbacks, &CWriting, &CDevices, &CLayouts, &CLibrary};
const unsigned int c_suite_count = sizeof(c_suites) / sizeof(c_suites[0]);
