/* What the files of the native part share. */
#ifndef VORLUND_PYTHON_ENGINE_H
#define VORLUND_PYTHON_ENGINE_H

#include <vorlund_c.h>

#include "declarations.h"

/* In Python: streams and sinks over objects with read or write. cffi takes the lock of the interpreter around
 * them. */
extern int32_t python_read(void* object, void* buffer, uint32_t size, uint32_t* count);
extern int32_t python_seek(void* object, const int64_t* position);
extern int32_t python_length(void* object, int64_t* length);
extern int32_t python_write(void* object, const void* bytes, uint32_t count);
extern int32_t python_flush(void* object);
extern void python_release(void* object);

/* The bytes of a source as a stream; not for paths. */
int32_t engine_bytes(const engine_source* source, vorlund_stream* stream);

/* Returns a code that is not 0. */
#define ENGINE_TRY(call)                                                                                     \
    do {                                                                                                     \
        const int32_t engine_code = (call);                                                                  \
        if (engine_code != VORLUND_OK) return engine_code;                                                   \
    } while (0)

#endif
