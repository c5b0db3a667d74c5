// The DLL beside the plug-in.
#include "SoxrLibrary.h"

const TSoxrLibrary* FindSoxrLibrary() {
    static const TSoxrLibrary library{&soxr_create, &soxr_delete, &soxr_process, &soxr_quality_spec,
                                      &soxr_runtime_spec};
    return &library;
}
