/**
 * \file
 * Plug-ins: where they are looked for, which are loaded, and why others are not. On the thread that opens the
 * library. Folders may be set while the library is closed, and count from the next vorlund_open on.
 *
 * \code{.c}
 * uint32_t count = 0, i;
 * vorlund_plugin_report report = {sizeof report};
 * char text[256];
 * vorlund_plugin_report_count(&count);
 * for (i = 0; i < count; ++i) {
 *     vorlund_plugin_get_report(i, &report);
 *     vorlund_plugin_report_text(i, VORLUND_PLUGIN_TEXT_EXPLANATION, text, sizeof text, NULL);
 *     if (report.outcome != VORLUND_PLUGIN_LOADED) printf("%s\n", text);
 * }
 * \endcode
 */
#ifndef VORLUND_C_PLUGIN_H
#define VORLUND_C_PLUGIN_H

#include "base.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Adds a folder that is searched. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_plugin_add_path(const char* path);
VORLUND_C_API int32_t VORLUND_CALL vorlund_plugin_add_path16(const uint16_t* path);
/** Forgets all folders, that of the program too. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_plugin_clear_paths(void);
/** How many folders there are, and one of them. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_plugin_path_count(uint32_t* count);
VORLUND_C_API int32_t VORLUND_CALL vorlund_plugin_path(uint32_t index, char* text, uint32_t room,
                                                       uint32_t* length);
VORLUND_C_API int32_t VORLUND_CALL vorlund_plugin_path16(uint32_t index, uint16_t* text, uint32_t room,
                                                         uint32_t* length);

/**
 * Whether another process tries each plug-in before it is loaded: 1 or 0, at first 0. `helper` is the path of
 * the program vorlund-plugin-scan, null for the installed one.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_plugin_set_scan(int32_t scans, const char* helper);
VORLUND_C_API int32_t VORLUND_CALL vorlund_plugin_set_scan16(int32_t scans, const uint16_t* helper);
/**
 * Whether a plug-in that fails ends vorlund_open, 1, or is left out and reported, 0; at first 1.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_plugin_set_strict(int32_t is_strict);

/** What came of a file. */
enum {
    VORLUND_PLUGIN_BEGUN = 0,
    VORLUND_PLUGIN_LOADED = 1,
    VORLUND_PLUGIN_NO_PLUGIN = 2,
    VORLUND_PLUGIN_NOT_LOADABLE = 3,
    VORLUND_PLUGIN_NO_ENTRY = 4,
    VORLUND_PLUGIN_DECLINED = 5,
    VORLUND_PLUGIN_RAISED = 6,
    VORLUND_PLUGIN_SCAN_NO_HELPER = 7,
    VORLUND_PLUGIN_SCAN_DIED = 8,
    VORLUND_PLUGIN_SCAN_TOO_LATE = 9,
    VORLUND_PLUGIN_SCAN_GARBLED = 10,
    VORLUND_PLUGIN_FOLDER_OPEN = 11,
    VORLUND_PLUGIN_OTHER_MACHINE = 12,
    VORLUND_PLUGIN_CUT = 13,
    VORLUND_PLUGIN_MISSING_LIBRARY = 14,
    VORLUND_PLUGIN_INCOMPATIBLE = 15,
    VORLUND_PLUGIN_BAD_TABLE = 16
};

/** Loads one file, while the library is open; `outcome` gets one of VORLUND_PLUGIN_. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_plugin_load_file(const char* path, int32_t* outcome);
VORLUND_C_API int32_t VORLUND_CALL vorlund_plugin_load_file16(const uint16_t* path, int32_t* outcome);

/** What is known of a file that was looked at. */
typedef struct vorlund_plugin_report {
    uint32_t size;           /**< of the record, in bytes */
    int32_t outcome;         /**< one of VORLUND_PLUGIN_ */
    int32_t code;            /**< the number that belongs to the outcome */
    int32_t exception_type;  /**< of VORLUND_PLUGIN_RAISED */
    int32_t library_version; /**< for which it was built, as in vorlund_version; 0 when it does not say */
    uint32_t items;          /**< how many classes, decoders, encoders and devices it has registered */
    uint32_t loads;          /**< how often it was loaded */
    uint32_t reserved;
} vorlund_plugin_report;

/** Texts of a report. */
enum {
    VORLUND_PLUGIN_TEXT_PATH = 0,
    VORLUND_PLUGIN_TEXT_EXPLANATION = 1, /**< what came of it, in one sentence */
    VORLUND_PLUGIN_TEXT_DETAIL = 2,
    VORLUND_PLUGIN_TEXT_NAME = 3, /**< what the file says of itself, and the next two */
    VORLUND_PLUGIN_TEXT_VERSION = 4,
    VORLUND_PLUGIN_TEXT_LICENCE = 5,
    VORLUND_PLUGIN_TEXT_LIBRARIES = 6, /**< which libraries it uses */
    VORLUND_PLUGIN_TEXT_METHOD = 7     /**< what raised */
};

/** Reports, one for each file with the name of a plug-in. Also while the library is closed. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_plugin_report_count(uint32_t* count);
VORLUND_C_API int32_t VORLUND_CALL vorlund_plugin_get_report(uint32_t index, vorlund_plugin_report* report);
VORLUND_C_API int32_t VORLUND_CALL vorlund_plugin_report_text(uint32_t index, int32_t field, char* text,
                                                              uint32_t room, uint32_t* length);
VORLUND_C_API int32_t VORLUND_CALL vorlund_plugin_report_text16(uint32_t index, int32_t field, uint16_t* text,
                                                                uint32_t room, uint32_t* length);

#ifdef __cplusplus
}
#endif

#endif
