// The functions of libsoxr.
#pragma once

#include <soxr.h>

struct TSoxrLibrary {
    decltype(&soxr_create) create;
    decltype(&soxr_delete) destroy;
    decltype(&soxr_process) process;
    decltype(&soxr_quality_spec) qualitySpec;
    decltype(&soxr_runtime_spec) runtimeSpec;
};

/// Loads libsoxr when it is asked for first; null without it. Any thread.
const TSoxrLibrary* FindSoxrLibrary();
