/**
 * \file
 * What everything in C has in common.
 *
 * Results. Every function returns a code: VORLUND_OK, which is 0, or one of the VORLUND_ERROR_ constants, and
 * gives its results through pointers. What went wrong is told by vorlund_last_error, for each thread apart.
 * A function that fails leaves its results as they were, unless it says otherwise. Functions never end the
 * program, and let no exception out.
 *
 * Handles. Streams, reports, devices and so on are handles. A handle is freed once, by vorlund_release; what
 * was made from it (a decoder of a stream) stays whole. A handle that was freed, or is of another kind, gives
 * VORLUND_ERROR_HANDLE. Handles are numbers, not addresses.
 *
 * Threads. Any thread may call any function. One operation at a time happens on a stream and on everything
 * that was made from it; a second one, of another thread or from inside a callback, gives VORLUND_ERROR_BUSY
 * and changes nothing. Events, timers, and audio outputs and inputs are for several threads at once.
 *
 * Texts are UTF-8 and end with a zero. Functions whose names end in 16 take and give UTF-16 instead. A text
 * that is given comes into a buffer of the caller: `room` counts its units with the zero, and `length`, which
 * may be null, gets the units of the whole text without it. What does not fit gives VORLUND_ERROR_BUFFER,
 * with the beginning of the text in the buffer; with a room of 0 nothing is written and that is no failure.
 *
 * Records begin with their size in bytes, which the caller sets. A newer library goes on taking the records
 * of older programs. Identifiers are arrays of four 32-bit words.
 *
 * 64-bit numbers that a function takes have a second form, whose name ends in _ptr and which takes the number
 * through a pointer.
 *
 * On 32-bit Windows functions and callbacks are __stdcall; names are exported without decoration.
 *
 * \code{.c}
 * vorlund_stream file;
 * vorlund_error error = {sizeof error};
 * if (vorlund_stream_open_file("missing.wav", &file) != VORLUND_OK) {
 *     vorlund_last_error(&error);
 *     printf("%s: %s\n", error.type, error.cause);
 * }
 * // prints CFileAccessException: there is no such file
 * \endcode
 *
 * Since version 0.1 unless a declaration says otherwise.
 */
#ifndef VORLUND_C_BASE_H
#define VORLUND_C_BASE_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32) && !defined(_WIN64)
/** How functions and callbacks are called. */
#define VORLUND_CALL __stdcall
#else
#define VORLUND_CALL
#endif

#if defined(VORLUND_C_BUILDING) && !defined(_WIN32)
#define VORLUND_C_API __attribute__((visibility("default")))
#else
/** Marks the functions of the library. */
#define VORLUND_C_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** The version of this interface, which is the number in the library's name. It only grows. */
#define VORLUND_C_VERSION 1

/** Codes. Those from 1 to 99 are exceptions of the library: the type of exception and 1. */
enum {
    VORLUND_OK = 0,
    VORLUND_ERROR_GENERIC = 1,
    VORLUND_ERROR_CLASS_NOT_FOUND = 2,
    VORLUND_ERROR_OUT_OF_MEMORY = 3,
    VORLUND_ERROR_FILE_ACCESS = 4,
    VORLUND_ERROR_DATA_FORMAT = 5,
    VORLUND_ERROR_INVALID_STATE = 6,
    VORLUND_ERROR_INVALID_PARAMETER = 7,
    VORLUND_ERROR_OBJECT_NOT_FOUND = 8,
    VORLUND_ERROR_DEVICE_FAILED = 9,
    VORLUND_ERROR_NOT_SUPPORTED = 10,
    VORLUND_ERROR_BUG = 11,
    VORLUND_ERROR_IO = 12,
    VORLUND_ERROR_BAD_INDEX = 13,
    VORLUND_ERROR_NULL_POINTER = 14,
    VORLUND_ERROR_FAILED = 15,
    VORLUND_ERROR_TIMEOUT = 16,
    VORLUND_ERROR_DATA_NOT_SUPPORTED = 17,
    /** The handle is null, was freed, or is of another kind. */
    VORLUND_ERROR_HANDLE = 101,
    /** The object is inside another operation, or calls are under way that must end before. */
    VORLUND_ERROR_BUSY = 102,
    /** A pointer is null or a number is out of its range. */
    VORLUND_ERROR_ARGUMENT = 103,
    /** The size of a record is too small. */
    VORLUND_ERROR_RECORD = 104,
    /** The buffer is too small for the text. */
    VORLUND_ERROR_BUFFER = 105,
    /** The library is not open: vorlund_open. */
    VORLUND_ERROR_NOT_OPEN = 106,
    /** An exception of the C++ standard library; the reason is its text. */
    VORLUND_ERROR_STANDARD = 107,
    /** Another exception. */
    VORLUND_ERROR_UNKNOWN = 108
};

/** What is known of a failure. */
typedef struct vorlund_error {
    uint32_t size; /**< of the record, in bytes; set by the caller */
    int32_t code;  /**< VORLUND_OK when no function has failed in this thread */
    /** The number of the exception's type, 0 to 16; -1 when it was none of the library's. */
    int32_t exception_type;
    /** The line that belongs to `file`. */
    int32_t line;
    /** The system's number, errno or GetLastError; 0 when the system had no part in it. */
    uint32_t system_code;
    /** What the last callback of this thread returned that failed inside the function; else 0. */
    int32_t callback_code;
    /** The five texts in UTF-8, never null. They stay until the next failure in this thread. */
    const char* type;   /**< "CFileAccessException" */
    const char* method; /**< "vorlund::CFileInputStream::Open", or the function of this interface */
    const char* file;   /**< "src/vorlund/data/file/FileInputStream_win32" */
    const char* reason; /**< "Cannot open 'a.wav' for reading" */
    const char* cause;  /**< the system's cause in a few words, "there is no such file"; may be empty */
    const char* reserved;
} vorlund_error;

/** The texts of a failure, for vorlund_error_text. */
enum {
    VORLUND_ERROR_TEXT_TYPE = 0,
    VORLUND_ERROR_TEXT_METHOD = 1,
    VORLUND_ERROR_TEXT_FILE = 2,
    VORLUND_ERROR_TEXT_REASON = 3,
    VORLUND_ERROR_TEXT_CAUSE = 4
};

/**
 * The last failure of the calling thread. A function that succeeds leaves it as it is, and so do this one and
 * the next three, which fail without noting it.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_last_error(vorlund_error* record);
/** One text of it, `field` being one of VORLUND_ERROR_TEXT_. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_error_text(int32_t field, char* text, uint32_t room,
                                                      uint32_t* length);
VORLUND_C_API int32_t VORLUND_CALL vorlund_error_text16(int32_t field, uint16_t* text, uint32_t room,
                                                        uint32_t* length);
/** Forgets it. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_clear_error(void);

/**
 * The version of the library as major x 1,000,000 + minor x 1,000 + patch, and that of this interface, as the
 * library was built. Either may be null. Works also before vorlund_open.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_version(int32_t* library, int32_t* c_interface);

/**
 * Frees a handle of any kind. Null is allowed and does nothing. From inside a callback of the object, or
 * while another thread uses it, the handle is gone at once and the object when that operation ends. Also
 * while the library is closed, where every handle gives VORLUND_ERROR_HANDLE.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_release(void* handle);

/** How many handles there are, to find those that a program forgets. Also while the library is closed. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_handle_count(uint32_t* count);

/**
 * Texts from one form to the other. What is no character becomes U+FFFD. `length` and `room` as above. Also
 * while the library is closed.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_utf8_to_utf16(const char* utf8, uint16_t* text, uint32_t room,
                                                         uint32_t* length);
VORLUND_C_API int32_t VORLUND_CALL vorlund_utf16_to_utf8(const uint16_t* utf16, char* text, uint32_t room,
                                                         uint32_t* length);

#ifdef __cplusplus
}
#endif

#endif
