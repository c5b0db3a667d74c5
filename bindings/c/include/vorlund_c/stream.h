/**
 * \file
 * Streams that are read: files, memory, the program's own, and what decoders and converters make of them.
 *
 * \code{.c}
 * vorlund_stream file;
 * char magic[4];
 * uint32_t count;
 * if (vorlund_stream_open_file("strings.wav", &file) != VORLUND_OK) return;
 * if (vorlund_stream_read(file, magic, sizeof magic, &count) == VORLUND_OK)
 *     printf("%.*s\n", (int)count, magic); // prints RIFF
 * vorlund_release(file);
 * \endcode
 */
#ifndef VORLUND_C_STREAM_H
#define VORLUND_C_STREAM_H

#include "base.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A stream that is read. */
typedef struct vorlund_stream_object* vorlund_stream;

/** Sample formats. Integers have the low byte first. */
enum {
    VORLUND_SAMPLE_8BIT = 0,  /**< unsigned, silence is 128 */
    VORLUND_SAMPLE_16BIT = 1, /**< signed */
    VORLUND_SAMPLE_32BIT = 2, /**< signed */
    VORLUND_SAMPLE_FLOAT = 3, /**< single precision, full scale is 1.0 */
    VORLUND_SAMPLE_24BIT = 4  /**< signed, in three bytes; in plain buffers and WAV files only */
};

/** Interleaved linear PCM. */
typedef struct vorlund_audio_format {
    uint32_t size;          /**< of the record, in bytes */
    uint32_t sample_format; /**< one of VORLUND_SAMPLE_ */
    uint32_t channels;      /**< samples of a frame */
    uint32_t rate;          /**< frames of a second */
} vorlund_audio_format;

/** What a stream can do. */
enum { VORLUND_CAN_SEEK = 1, VORLUND_CAN_TELL = 2, VORLUND_CAN_READ = 4, VORLUND_CAN_WRITE = 8 };

/** Opens a file for reading. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_open_file(const char* path, vorlund_stream* stream);
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_open_file16(const uint16_t* path, vorlund_stream* stream);

/** A stream over a copy of `count` bytes, which may be null with a count of 0. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_open_memory(const void* bytes, uint32_t count,
                                                              vorlund_stream* stream);

/**
 * Reads `size` bytes, less only at the end, and tells how many in `count`. A file that cannot be read is no
 * end: what came before is delivered, and the next call gives VORLUND_ERROR_IO with the system's number. When
 * a stream fails in the middle, `count` tells what was read before, and the code is that of the failure.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_read(vorlund_stream stream, void* buffer, uint32_t size,
                                                       uint32_t* count);

/** Goes to a byte. VORLUND_ERROR_NOT_SUPPORTED where the stream has no positions. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_seek(vorlund_stream stream, int64_t position);
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_seek_ptr(vorlund_stream stream, const int64_t* position);
/** The position, and the length, in bytes. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_tell(vorlund_stream stream, int64_t* position);
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_length(vorlund_stream stream, int64_t* length);
/** 1 when no more bytes can be read, else 0. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_eof(vorlund_stream stream, int32_t* is_at_end);
/** VORLUND_CAN_ bits. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_capabilities(vorlund_stream stream, uint32_t* capabilities);
/** Gives back the file below the stream; the handle stays, and is freed as others. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_close(vorlund_stream stream);

/** The identifier of the stream's format, four words; all 0 for raw bytes. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_format_id(vorlund_stream stream, uint32_t* id);
/** The format of PCM; VORLUND_ERROR_DATA_FORMAT when the stream has another one. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_audio_format(vorlund_stream stream,
                                                               vorlund_audio_format* format);

/**
 * Frames of PCM instead of bytes; VORLUND_ERROR_DATA_FORMAT for other streams. The number of all frames,
 * going to one, and the one that comes next.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_frames(vorlund_stream stream, uint64_t* count);
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_seek_frame(vorlund_stream stream, uint64_t frame);
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_seek_frame_ptr(vorlund_stream stream,
                                                                 const uint64_t* frame);
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_tell_frame(vorlund_stream stream, uint64_t* frame);

/**
 * Reads `frames` whole frames, channels interleaved, as samples of one type, at true scale and clipped where
 * they are integers. `count` tells how many frames were read, less only at the end. `sample_format` is one of
 * VORLUND_SAMPLE_; the others have theirs in the name. Failures as with vorlund_stream_read.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_read_frames(vorlund_stream stream, uint32_t sample_format,
                                                              void* samples, uint32_t frames,
                                                              uint32_t* count);
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_read_int16(vorlund_stream stream, int16_t* samples,
                                                             uint32_t frames, uint32_t* count);
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_read_int32(vorlund_stream stream, int32_t* samples,
                                                             uint32_t frames, uint32_t* count);
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_read_float(vorlund_stream stream, float* samples,
                                                             uint32_t frames, uint32_t* count);
/** The same in double precision with full scale at 1.0, which loses nothing. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_read_double(vorlund_stream stream, double* samples,
                                                              uint32_t frames, uint32_t* count);

/**
 * \name Streams of the program
 * Callbacks return VORLUND_OK, or any other number when they fail: the operation that needed them then gives
 * VORLUND_ERROR_IO, and vorlund_error has the number. They come from the thread that uses the stream, which
 * is one of the library's while it is played. From inside, any function may be called with other objects;
 * with this stream, and what was made from it, it gives VORLUND_ERROR_BUSY. The handle may be freed inside.
 * @{
 */

/** Reads at most `size` bytes, and tells how many; 0 at the end. */
typedef int32_t(VORLUND_CALL* vorlund_read_callback)(void* user, void* buffer, uint32_t size,
                                                     uint32_t* count);
/** Goes to a byte. */
typedef int32_t(VORLUND_CALL* vorlund_seek_callback)(void* user, const int64_t* position);
/** Tells the number of all bytes. */
typedef int32_t(VORLUND_CALL* vorlund_length_callback)(void* user, int64_t* length);
/** The stream is gone; no other callback follows. */
typedef void(VORLUND_CALL* vorlund_release_callback)(void* user);

/** The functions of a stream of the program. */
typedef struct vorlund_stream_callbacks {
    uint32_t size; /**< of the record, in bytes */
    uint32_t reserved;
    vorlund_read_callback read;
    /** Null for a stream without positions, which few decoders take. */
    vorlund_seek_callback seek;
    /** Null when the length is not known. */
    vorlund_length_callback length;
    /** May be null. */
    vorlund_release_callback release;
} vorlund_stream_callbacks;

/**
 * A stream of the program. The record is copied.
 *
 * \param callbacks  its functions
 * \param user       what they are called with
 * \param format     what the bytes are; null for raw bytes, which a decoder is sought for
 * \param stream     gets the stream
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_stream_create(const vorlund_stream_callbacks* callbacks,
                                                         void* user, const vorlund_audio_format* format,
                                                         vorlund_stream* stream);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
