/**
 * \file
 * Resources, which are bytes in memory that streams read and write, and typed values in streams.
 *
 * \code{.c}
 * vorlund_sink sink;
 * vorlund_resource resource;
 * vorlund_stream stream;
 * int32_t number = 0;
 * if (vorlund_resource_create(&resource) != VORLUND_OK) return;
 * if (vorlund_resource_get_sink(resource, &sink) == VORLUND_OK) {
 *     vorlund_write_int32(sink, 7);
 *     vorlund_release(sink);
 * }
 * if (vorlund_resource_get_stream(resource, &stream) == VORLUND_OK) {
 *     vorlund_read_int32(stream, &number);
 *     vorlund_release(stream);
 * }
 * printf("%d\n", (int)number); // prints 7
 * vorlund_release(resource);
 * \endcode
 */
#ifndef VORLUND_C_RESOURCE_H
#define VORLUND_C_RESOURCE_H

#include "sink.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Bytes in memory. One operation at a time, as with streams. */
typedef struct vorlund_resource_object* vorlund_resource;

/** An empty one. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_resource_create(vorlund_resource* resource);
/** Its size in bytes. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_resource_size(vorlund_resource resource, uint64_t* size);
/** Copies bytes out, from `position` on, and tells how many there were; and in, in place of all that it has.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_resource_get(vorlund_resource resource, uint64_t position,
                                                        void* buffer, uint32_t room, uint32_t* count);
VORLUND_C_API int32_t VORLUND_CALL vorlund_resource_get_ptr(vorlund_resource resource,
                                                            const uint64_t* position, void* buffer,
                                                            uint32_t room, uint32_t* count);
VORLUND_C_API int32_t VORLUND_CALL vorlund_resource_set(vorlund_resource resource, const void* bytes,
                                                        uint32_t count);
/** Fills it with a whole stream, and writes it into a sink. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_resource_load(vorlund_resource resource, vorlund_stream stream);
VORLUND_C_API int32_t VORLUND_CALL vorlund_resource_save(vorlund_resource resource, vorlund_sink sink);
/** Streams over the resource, each with a position of its own. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_resource_get_stream(vorlund_resource resource,
                                                               vorlund_stream* stream);
VORLUND_C_API int32_t VORLUND_CALL vorlund_resource_get_sink(vorlund_resource resource, vorlund_sink* sink);

/**
 * \name Typed values
 * Bare images of values, low byte first, without tags: what is written is read by the same types in the same
 * order. Texts are a 32-bit count and UTF-16 units. At the end of the data VORLUND_ERROR_IO.
 * @{
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_write_bool(vorlund_sink sink, int32_t value);
VORLUND_C_API int32_t VORLUND_CALL vorlund_write_int32(vorlund_sink sink, int32_t value);
VORLUND_C_API int32_t VORLUND_CALL vorlund_write_int64(vorlund_sink sink, int64_t value);
VORLUND_C_API int32_t VORLUND_CALL vorlund_write_int64_ptr(vorlund_sink sink, const int64_t* value);
VORLUND_C_API int32_t VORLUND_CALL vorlund_write_float(vorlund_sink sink, float value);
VORLUND_C_API int32_t VORLUND_CALL vorlund_write_double(vorlund_sink sink, double value);
VORLUND_C_API int32_t VORLUND_CALL vorlund_write_text(vorlund_sink sink, const char* text);
VORLUND_C_API int32_t VORLUND_CALL vorlund_write_text16(vorlund_sink sink, const uint16_t* text);
VORLUND_C_API int32_t VORLUND_CALL vorlund_read_bool(vorlund_stream stream, int32_t* value);
VORLUND_C_API int32_t VORLUND_CALL vorlund_read_int32(vorlund_stream stream, int32_t* value);
VORLUND_C_API int32_t VORLUND_CALL vorlund_read_int64(vorlund_stream stream, int64_t* value);
VORLUND_C_API int32_t VORLUND_CALL vorlund_read_float(vorlund_stream stream, float* value);
VORLUND_C_API int32_t VORLUND_CALL vorlund_read_double(vorlund_stream stream, double* value);
/** A text that does not fit is read all the same: the next value follows. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_read_text(vorlund_stream stream, char* text, uint32_t room,
                                                     uint32_t* length);
VORLUND_C_API int32_t VORLUND_CALL vorlund_read_text16(vorlund_stream stream, uint16_t* text, uint32_t room,
                                                       uint32_t* length);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
