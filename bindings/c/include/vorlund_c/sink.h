/**
 * \file
 * Streams that are written: files, memory, and the program's own.
 *
 * \code{.c}
 * vorlund_sink sink;
 * const void* bytes = NULL;
 * uint64_t count = 0;
 * if (vorlund_sink_open_memory(&sink) != VORLUND_OK) return;
 * vorlund_sink_write(sink, "hello", 5);
 * vorlund_sink_get_memory(sink, &bytes, &count);
 * printf("%.*s\n", (int)count, (const char*)bytes); // prints hello
 * vorlund_release(sink);
 * \endcode
 */
#ifndef VORLUND_C_SINK_H
#define VORLUND_C_SINK_H

#include "stream.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A stream that is written. */
typedef struct vorlund_sink_object* vorlund_sink;

/** Opens a file for writing, and empties it. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_sink_open_file(const char* path, vorlund_sink* sink);
VORLUND_C_API int32_t VORLUND_CALL vorlund_sink_open_file16(const uint16_t* path, vorlund_sink* sink);
/** Keeps what is written in memory. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_sink_open_memory(vorlund_sink* sink);
/**
 * What is in memory, valid until the next operation on the sink. VORLUND_ERROR_NOT_SUPPORTED for other sinks.
 * Either may be null.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_sink_get_memory(vorlund_sink sink, const void** bytes,
                                                           uint64_t* count);

VORLUND_C_API int32_t VORLUND_CALL vorlund_sink_write(vorlund_sink sink, const void* bytes, uint32_t count);
VORLUND_C_API int32_t VORLUND_CALL vorlund_sink_seek(vorlund_sink sink, int64_t position);
VORLUND_C_API int32_t VORLUND_CALL vorlund_sink_seek_ptr(vorlund_sink sink, const int64_t* position);
VORLUND_C_API int32_t VORLUND_CALL vorlund_sink_tell(vorlund_sink sink, int64_t* position);
VORLUND_C_API int32_t VORLUND_CALL vorlund_sink_length(vorlund_sink sink, int64_t* length);
/** Hands everything to the system. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_sink_flush(vorlund_sink sink);
/**
 * Closes the file below. When it succeeds, all that was written has reached the system; freeing the handle
 * closes as well, and tells nothing. VORLUND_ERROR_IO also for a write that has failed before.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_sink_close(vorlund_sink sink);

/** Writes all `count` bytes. What callbacks return, and may do, is as with those of vorlund_stream_create. */
typedef int32_t(VORLUND_CALL* vorlund_write_callback)(void* user, const void* bytes, uint32_t count);
/** Hands everything on. */
typedef int32_t(VORLUND_CALL* vorlund_flush_callback)(void* user);

/** The functions of a sink of the program. */
typedef struct vorlund_sink_callbacks {
    uint32_t size; /**< of the record, in bytes */
    uint32_t reserved;
    vorlund_write_callback write;
    /** Null for a sink without positions. */
    vorlund_seek_callback seek;
    /** May be null, and so may the next one. */
    vorlund_flush_callback flush;
    vorlund_release_callback release;
} vorlund_sink_callbacks;

/** A sink of the program. The record is copied. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_sink_create(const vorlund_sink_callbacks* callbacks, void* user,
                                                       vorlund_sink* sink);

#ifdef __cplusplus
}
#endif

#endif
